# VELOMIND_SANITIZE names the sanitizers of this build ("address,undefined" or "thread").
set(VELOMIND_SANITIZE "" CACHE STRING "Sanitizers to build with, as gcc's -fsanitize takes them")
if(VELOMIND_SANITIZE)
  target_compile_options(velomind_flags INTERFACE
    -fsanitize=${VELOMIND_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all -O1
    -Wno-maybe-uninitialized)
  target_link_options(velomind_flags INTERFACE -fsanitize=${VELOMIND_SANITIZE})
endif()
