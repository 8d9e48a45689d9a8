# Run after PROGRAM was built: writes what ctest includes, one test for each suite of PROGRAM. A suite runs in one
# process, and what it prints when it fails names the case.
execute_process(COMMAND ${PROGRAM} --gtest_list_tests OUTPUT_VARIABLE listed RESULT_VARIABLE result TIMEOUT 60)
if(NOT result EQUAL 0)
  message(FATAL_ERROR "${PROGRAM} does not list its tests: ${result}\n${listed}")
endif()
string(REGEX MATCHALL "(^|\n)[^ \n]+\\." suites "${listed}")
set(script "")
foreach(suite IN LISTS suites)
  string(REGEX REPLACE "^\n|\\.$" "" suite "${suite}")
  string(APPEND script "add_test([==[${suite}]==] [==[${PROGRAM}]==] [==[--gtest_filter=${suite}.*]==])\n"
    "set_tests_properties([==[${suite}]==] PROPERTIES ENVIRONMENT [==[${RANDOM}]==])\n")
endforeach()
if(NOT suites)
  message(FATAL_ERROR "${PROGRAM} has no tests")
endif()
file(WRITE ${SCRIPT} "${script}")
