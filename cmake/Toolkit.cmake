# Two faces of the windowing library: velomind_wx_base has no window in it, velomind_wx_gui has.
find_package(wxWidgets 3.2 REQUIRED COMPONENTS base)
add_library(velomind_wx_base INTERFACE)
target_include_directories(velomind_wx_base SYSTEM INTERFACE ${wxWidgets_INCLUDE_DIRS})
target_compile_definitions(velomind_wx_base INTERFACE ${wxWidgets_DEFINITIONS})
target_link_libraries(velomind_wx_base INTERFACE ${wxWidgets_LIBRARIES})

unset(wxWidgets_LIBRARIES)
find_package(wxWidgets 3.2 REQUIRED COMPONENTS core net base)
add_library(velomind_wx_gui INTERFACE)
target_include_directories(velomind_wx_gui SYSTEM INTERFACE ${wxWidgets_INCLUDE_DIRS})
target_compile_definitions(velomind_wx_gui INTERFACE ${wxWidgets_DEFINITIONS})
target_link_libraries(velomind_wx_gui INTERFACE ${wxWidgets_LIBRARIES})

# The platform's own toolkit, for the one source file that calls it.
find_package(PkgConfig REQUIRED)
pkg_check_modules(GTK3 REQUIRED IMPORTED_TARGET gtk+-3.0)

# Decodes pictures; its loaders for WebP and SVG are packages of their own.
pkg_check_modules(GDK_PIXBUF REQUIRED IMPORTED_TARGET gdk-pixbuf-2.0)

# Plays sounds; its decoders and devices are packages of their own.
pkg_check_modules(GSTREAMER REQUIRED IMPORTED_TARGET gstreamer-1.0)

# The desktop's speech service, for the one source file that talks to it.
pkg_check_modules(SPEECH REQUIRED IMPORTED_TARGET speech-dispatcher)

# What a Wayland desktop is asked without the toolkit: the code that its protocol is made into.
pkg_check_modules(WAYLAND REQUIRED IMPORTED_TARGET wayland-client)
pkg_get_variable(wayland_protocols wayland-protocols pkgdatadir)
find_program(WAYLAND_SCANNER wayland-scanner REQUIRED)
set(activation_xml ${wayland_protocols}/staging/xdg-activation/xdg-activation-v1.xml)
set(activation ${CMAKE_BINARY_DIR}/wayland/xdg-activation-v1)
file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/wayland)
add_custom_command(OUTPUT ${activation}-protocol.c ${activation}-client-protocol.h
  COMMAND ${WAYLAND_SCANNER} private-code ${activation_xml} ${activation}-protocol.c
  COMMAND ${WAYLAND_SCANNER} client-header ${activation_xml} ${activation}-client-protocol.h
  DEPENDS ${activation_xml}
  VERBATIM)
add_library(velomind_wayland STATIC ${activation}-protocol.c ${activation}-client-protocol.h)
target_include_directories(velomind_wayland SYSTEM INTERFACE ${CMAKE_BINARY_DIR}/wayland)
target_link_libraries(velomind_wayland PUBLIC PkgConfig::WAYLAND)
