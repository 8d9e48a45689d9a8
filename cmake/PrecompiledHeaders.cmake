# The headers that most sources read, parsed once for all objects and once for all test
# programs, which makes a build with tests more than twice as fast. The release build does
# without, and the thread sanitizer's parses them for test programs alone (TESTS), so that a source of a
# library or program which forgets an include is found.
set(TAVRINE_PRECOMPILE OFF CACHE STRING "Parse common headers once: ON, OFF or TESTS")

set(TAVRINE_COMMON_HEADERS
  <algorithm> <array> <atomic> <chrono> <cstdint> <filesystem> <fstream> <functional> <map> <memory> <mutex> <optional>
  <set> <sstream> <string> <string_view> <thread> <utility> <vector> <boost/json.hpp> <fmt/format.h>)

if(TAVRINE_PRECOMPILE)
  # What was parsed fills the compiler's heap from the start; by its own measure it would tidy up all the time.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    add_compile_options("SHELL:--param ggc-min-heapsize=524288")
  endif()
  # Who reads them must have the same macros and the same kind of warnings as the parse had.
  foreach(library Boost::json Boost::container fmt::fmt)
    get_target_property(definitions ${library} INTERFACE_COMPILE_DEFINITIONS)
    if(definitions)
      add_compile_definitions(${definitions})
    endif()
  endforeach()
  file(WRITE ${CMAKE_BINARY_DIR}/precompiled.cpp "int main() { return 0; }\n")
  if(NOT TAVRINE_PRECOMPILE STREQUAL "TESTS")
    add_library(tavrine_precompiled_objects OBJECT ${CMAKE_BINARY_DIR}/precompiled.cpp)
    target_link_libraries(tavrine_precompiled_objects PRIVATE tavrine_warnings)
    target_precompile_headers(tavrine_precompiled_objects PRIVATE ${TAVRINE_COMMON_HEADERS})
  endif()
  if(TAVRINE_TESTS)
    add_executable(tavrine_precompiled_programs ${CMAKE_BINARY_DIR}/precompiled.cpp)
    find_package(GTest REQUIRED)
    target_link_libraries(tavrine_precompiled_programs PRIVATE tavrine_warnings GTest::gtest GTest::gmock)
    target_precompile_headers(tavrine_precompiled_programs PRIVATE
      ${TAVRINE_COMMON_HEADERS} <gtest/gtest.h> <gmock/gmock.h>)
  endif()
endif()

# tavrine_precompile(TARGET objects|programs|own): TARGET reads the set of its kind, or, where
# its options make the common one unusable, a set of its own for test programs.
function(tavrine_precompile target set)
  if(TAVRINE_PRECOMPILE AND set STREQUAL "own")
    target_precompile_headers(${target} PRIVATE ${TAVRINE_COMMON_HEADERS} <gtest/gtest.h> <gmock/gmock.h>)
  elseif(TARGET tavrine_precompiled_${set})
    target_precompile_headers(${target} REUSE_FROM tavrine_precompiled_${set})
  endif()
endfunction()
