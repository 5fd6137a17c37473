# For TEST_FILTER of gtest_discover_tests.
cmake_minimum_required(VERSION 3.22)

include(GoogleTest)

# A test in a process of its own shows how the code does in a fresh one; in a process that tests
# share less of the time goes into its start.
option(PHOTOLIB_EACH_TEST_ALONE "Run each test in a process of its own" OFF)

# add_test_program(TARGET SHARDS count TIME_LIMIT seconds
#     [ONLY pattern] [EXCEPT pattern...] [ALONE pattern...])
#
# Adds the tests of a GoogleTest program that ONLY names, or all, without those that EXCEPT names.
# Those that ALONE names get a process each. The others share SHARDS processes, in an order that
# differs from run to run; a process that fails says which it was. TIME_LIMIT is for a process.
function(add_test_program target)
    cmake_parse_arguments(of "" "SHARDS;TIME_LIMIT;ONLY" "EXCEPT;ALONE" ${ARGN})
    if(NOT of_ONLY)
        set(of_ONLY "*")
    endif()
    list(JOIN of_EXCEPT ":" except)
    if(PHOTOLIB_EACH_TEST_ALONE)
        add_tests_alone(${target} "${of_ONLY}-${except}" ${of_TIME_LIMIT})
        return()
    endif()
    if(of_ALONE)
        list(JOIN of_ALONE ":" alone)
        add_tests_alone(${target} "${alone}-${except}" ${of_TIME_LIMIT})
    endif()
    foreach(shard RANGE 1 ${of_SHARDS})
        math(EXPR index "${shard} - 1")
        add_test(NAME ${target}.${shard}
            COMMAND ${target} --gtest_shuffle "--gtest_filter=${of_ONLY}-${alone}:${except}")
        set_tests_properties(${target}.${shard} PROPERTIES TIMEOUT ${of_TIME_LIMIT}
            ENVIRONMENT "GTEST_TOTAL_SHARDS=${of_SHARDS};GTEST_SHARD_INDEX=${index}")
    endforeach()
endfunction()

function(add_tests_alone target filter time_limit)
    gtest_discover_tests(${target} TEST_FILTER "${filter}" NO_PRETTY_VALUES
        DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT ${time_limit})
endfunction()
