# Writes a file that gives ctest one test for each suite of a test program: a process for a suite and
# not for a test, as most tests take less time than the start of a process. Called behind the
# program's build with PROGRAM, LAUNCHER (may be empty), PROPERTIES and OUT.
execute_process(COMMAND ${LAUNCHER} "${PROGRAM}" --gtest_list_tests
    OUTPUT_VARIABLE listing RESULT_VARIABLE result TIMEOUT 600)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "${PROGRAM} doesn't list its tests: ${result}")
endif()

string(REPLACE ";" "," listing "${listing}")
string(REPLACE "\n" ";" lines "${listing}")
set(tests)
foreach(line IN LISTS lines)
    if(line MATCHES "^([^ ]+[.])([ ]+#.*)?$")
        string(REGEX REPLACE "[.]$" "" suite "${CMAKE_MATCH_1}")
        list(JOIN LAUNCHER "\" \"" launcher)
        if(launcher)
            set(launcher "\"${launcher}\" ")
        endif()
        string(APPEND tests
            "add_test(\"${suite}\" ${launcher}\"${PROGRAM}\" \"--gtest_filter=${suite}.*\")\n"
            "set_tests_properties(\"${suite}\" PROPERTIES ${PROPERTIES})\n")
    endif()
endforeach()
if(NOT tests)
    message(FATAL_ERROR "${PROGRAM} has no tests")
endif()
file(WRITE "${OUT}" "${tests}")
