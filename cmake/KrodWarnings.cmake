# Warnings for our own targets; errors only with KROD_WARNINGS_AS_ERRORS, so that a new compiler stops nobody who
# just builds: developers set it by their presets, continuous integration by `scripts/test --strict`.
option(KROD_WARNINGS_AS_ERRORS "Treat warnings as errors" OFF)

# g++ 12 reports memory that overlaps within std::string at -O3 where none does (GCC bug 105651).
add_library(krod_warnings INTERFACE)
target_compile_options(krod_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wformat=2 $<$<BOOL:${KROD_WARNINGS_AS_ERRORS}>:-Werror=format-security>
  -Wnon-virtual-dtor -Woverloaded-virtual
  $<$<CXX_COMPILER_ID:GNU>:-Wshadow=local>
  $<$<CXX_COMPILER_ID:Clang>:-Wshadow>
  $<$<AND:$<CXX_COMPILER_ID:GNU>,$<VERSION_LESS:$<CXX_COMPILER_VERSION>,13>>:-Wno-restrict>
  $<$<BOOL:${KROD_WARNINGS_AS_ERRORS}>:-Werror>)
