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
