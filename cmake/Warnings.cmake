# What every target of this project is compiled with; linked privately.
add_library(tavrine_warnings INTERFACE)
target_compile_options(tavrine_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor
  -Wold-style-cast -Woverloaded-virtual -Wnull-dereference
  $<$<BOOL:${TAVRINE_WERROR}>:-Werror>)
