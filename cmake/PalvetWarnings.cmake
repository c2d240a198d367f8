# Warning flags shared by the library, its tests, tools and benchmarks.
add_library(palvet_warnings INTERFACE)
target_compile_options(palvet_warnings INTERFACE -Wall -Wextra $<$<BOOL:${PALVET_WERROR}>:-Werror>)
# g++ on 32-bit ARM notes that the passing of some 64-bit arguments changed
# in GCC 7.1; everything here is built by one compiler, so the note says
# nothing.
if(CMAKE_SYSTEM_PROCESSOR MATCHES "^arm" AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  target_compile_options(palvet_warnings INTERFACE -Wno-psabi)
endif()
