# SPDX-License-Identifier: Apache-2.0
# GoogleTest's header is half of the work on a test's source, so all programs share it compiled.
function(voxtrel_test_header)
  file(CONFIGURE OUTPUT "${CMAKE_CURRENT_BINARY_DIR}/test_header.cpp" CONTENT "")
  add_executable(test_header EXCLUDE_FROM_ALL "${CMAKE_CURRENT_BINARY_DIR}/test_header.cpp")
  target_link_libraries(test_header PRIVATE voxtrel_warnings GTest::gtest_main)
  # A header out of ccache is older than its source, which clang would refuse.
  target_compile_options(test_header PRIVATE
    "$<$<CXX_COMPILER_ID:Clang>:SHELL:-Xclang -fno-pch-timestamp>")
  target_precompile_headers(test_header PRIVATE <gtest/gtest.h>)
endfunction()

# voxtrel_test_part(NAME)
#
# A static library of test programs and nothing else: compiled as they are, it shares their header.
function(voxtrel_test_part name)
  if(TARGET test_header)
    set_target_properties(${name} PROPERTIES POSITION_INDEPENDENT_CODE OFF)
    target_compile_options(${name} PRIVATE -fPIE)
    target_precompile_headers(${name} REUSE_FROM test_header)
  endif()
endfunction()

# voxtrel_test(NAME SOURCES file... [LINK target...] [LABELS label...] [TIMEOUT seconds]
#              [TOGETHER pattern... [ALONE pattern...]] [EXCLUDE pattern...] [COST number]
#              [BOTH_MANNERS pattern... [DEFAULT_MANNERS pattern...]])
#
# One test program. For ctest, each of its tests is a test of its own, in a process of its own, but
# for the quick ones that leave nothing behind in their process: TOGETHER names those, and ALONE what
# of TOGETHER "*" is not so. They are one entry, NAME:together, and one process; scripts/lib.sh counts
# each of them all the same. EXCLUDE leaves tests out. Patterns are those of --gtest_filter. Tests of
# a higher COST start first, NAME:together among them: one that takes most of a minute, and waits for
# much of it, would be the end of a run, with nothing beside it.
#
# Where VOXTREL_DRIVER_MANNERS is on, the tests that BOTH_MANNERS names run once more in the manners of
# a driver (platform/README.md), as NAME:driver:..., with the label "driver". DEFAULT_MANNERS names
# those of them that do not.
function(voxtrel_test name)
  cmake_parse_arguments(TEST "" "TIMEOUT;COST"
                        "SOURCES;LINK;LABELS;TOGETHER;ALONE;EXCLUDE;BOTH_MANNERS;DEFAULT_MANNERS"
                        ${ARGN})
  if(NOT TEST_TIMEOUT)
    set(TEST_TIMEOUT 120)
  endif()
  if(NOT TEST_COST)
    set(TEST_COST 0)
  endif()
  if(NOT TEST_LABELS)
    set(TEST_LABELS unit)
  endif()
  add_executable(${name} ${TEST_SOURCES})
  target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}")
  target_link_libraries(${name} PRIVATE ${TEST_LINK} voxtrel_warnings GTest::gtest_main)
  target_precompile_headers(${name} REUSE_FROM test_header)
  # Reports go into files: the processes that a test starts report, too, and their exit status may say
  # nothing. A process that ends with threads running waits a moment for what they do meanwhile; a
  # second each would be most of the run. A test forks a process with threads on purpose.
  set(environment "")
  set(reports "log_path=${PROJECT_BINARY_DIR}/sanitizer-reports/report")
  if(VOXTREL_SANITIZE MATCHES "thread")
    set(environment "suppressions=${PROJECT_SOURCE_DIR}/cmake/tsan.supp:${reports}")
    set(environment "TSAN_OPTIONS=${environment}:atexit_sleep_ms=50:die_after_fork=0")
  elseif(VOXTREL_SANITIZE MATCHES "address")
    set(environment "ASAN_OPTIONS=detect_stack_use_after_return=1:${reports}" "UBSAN_OPTIONS=${reports}")
  endif()

  string(JOIN ":" together ${TEST_TOGETHER})
  string(JOIN ":" alone ${TEST_ALONE})
  string(JOIN ":" exclude ${TEST_EXCLUDE})
  if(together)
    set(shared "${together}-${alone}:${exclude}")
    math(EXPR limit "${TEST_TIMEOUT} * 5")
    math(EXPR late "${limit} + 30") # the script stops the program itself and says where it was
    add_test(NAME ${name}:together
      COMMAND "${Python3_EXECUTABLE}" "${PROJECT_SOURCE_DIR}/scripts/grouped_tests.py" run
              "${PROJECT_BINARY_DIR}/grouped-tests/${name}.journal" ${limit} "${shared}"
              ${CMAKE_CROSSCOMPILING_EMULATOR} "$<TARGET_FILE:${name}>")
    set_tests_properties(${name}:together PROPERTIES TIMEOUT ${late} COST 15 LABELS "${TEST_LABELS}"
                         ENVIRONMENT "${environment}")
  endif()
  if(NOT together STREQUAL "*")
    set(alone "*-${together}:${exclude}")
  elseif(alone)
    string(APPEND alone "-${exclude}")
  endif()
  if(alone)
    voxtrel_test_entries(${name} ${name}_tests "${name}:" "${alone}")
  endif()
  if(VOXTREL_DRIVER_MANNERS AND TEST_BOTH_MANNERS)
    string(JOIN ":" both ${TEST_BOTH_MANNERS})
    string(JOIN ":" default_only ${TEST_DEFAULT_MANNERS})
    list(APPEND TEST_LABELS driver)
    list(APPEND environment "VOXTREL_BINDER_MANNERS=driver")
    voxtrel_test_entries(${name} ${name}_driver_tests "${name}:driver:"
                         "${both}-${exclude}:${default_only}")
  endif()
endfunction()

# Of voxtrel_test, whose variables it reads: an entry of ctest, named with `prefix` in front, for each
# test that `filter` selects; the variable `list` names them all.
function(voxtrel_test_entries name list prefix filter)
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
                       TEST_PREFIX "${prefix}" TEST_FILTER "${filter}"
                       TEST_LIST ${list} PROPERTIES TIMEOUT ${TEST_TIMEOUT} COST ${TEST_COST})
  # Not among the properties above, where a value that is a list loses all but its first element.
  set(script "${CMAKE_CURRENT_BINARY_DIR}/${list}_properties.cmake")
  file(CONFIGURE OUTPUT "${script}" @ONLY CONTENT
       [[set_tests_properties(${@list@} PROPERTIES LABELS "@TEST_LABELS@" ENVIRONMENT "@environment@")]])
  set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES "${script}")
endfunction()
