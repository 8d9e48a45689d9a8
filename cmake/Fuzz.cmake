# The fuzz targets under libFuzzer, which clang alone has: see scripts/fuzz.sh. All code is
# instrumented for coverage; the runtimes lie in the program, so that the shared objects
# of such a build have undefined symbols of theirs.
option(TAVRINE_FUZZ "Link the fuzz targets with libFuzzer" OFF)
if(TAVRINE_FUZZ)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "TAVRINE_FUZZ needs clang")
  endif()
  add_compile_options(-fsanitize=fuzzer-no-link,address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
