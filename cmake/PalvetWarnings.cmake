# Warning flags shared by the library, its tests, tools and benchmarks.
add_library(palvet_warnings INTERFACE)
target_compile_options(palvet_warnings INTERFACE -Wall -Wextra $<$<BOOL:${PALVET_WERROR}>:-Werror>)
