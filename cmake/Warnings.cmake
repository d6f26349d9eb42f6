# Usage requirement of every target of ours: strict warnings, all of them errors,
# hardening of the release, and 32-bit float arithmetic that no compiler may fuse.
include(CheckCXXCompilerFlag)
# Not every processor's compiler knows it.
check_cxx_compiler_flag(-fstack-clash-protection VELOMIND_HAS_STACK_CLASH_PROTECTION)

add_library(velomind_flags INTERFACE)
target_compile_options(velomind_flags INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Wold-style-cast
  -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align -Wduplicated-cond -Wlogical-op
  -Wformat=2 -Wundef -Werror
  -ffp-contract=off)
target_compile_options(velomind_flags INTERFACE
  $<$<CONFIG:Release>:-fstack-protector-strong;-fPIE;-D_FORTIFY_SOURCE=2>
  $<$<AND:$<CONFIG:Release>,$<BOOL:${VELOMIND_HAS_STACK_CLASH_PROTECTION}>>:-fstack-clash-protection>)
target_link_options(velomind_flags INTERFACE
  $<$<CONFIG:Release>:-pie;-Wl,-z,relro;-Wl,-z,now>)
