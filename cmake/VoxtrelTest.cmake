# voxtrel_test(NAME SOURCES file... [LINK target...] [LABELS label...] [TIMEOUT seconds]
#              [FILTER gtest-filter])
#
# One test program; each of its tests becomes a test of its own for ctest, in a process of its own.
function(voxtrel_test name)
  cmake_parse_arguments(TEST "" "TIMEOUT;FILTER" "SOURCES;LINK;LABELS" ${ARGN})
  if(NOT TEST_TIMEOUT)
    set(TEST_TIMEOUT 120)
  endif()
  if(NOT TEST_FILTER)
    set(TEST_FILTER "*")
  endif()
  if(NOT TEST_LABELS)
    set(TEST_LABELS unit)
  endif()
  add_executable(${name} ${TEST_SOURCES})
  target_include_directories(${name} PRIVATE "${CMAKE_SOURCE_DIR}")
  target_link_libraries(${name} PRIVATE ${TEST_LINK} voxtrel_warnings GTest::gtest_main)
  # A process that ends with threads running waits a moment for what they do meanwhile; a second each
  # would be most of the run.
  # Into files: the processes that a test starts report, too, and their exit status may say nothing.
  set(environment "")
  set(reports "log_path=${CMAKE_BINARY_DIR}/sanitizer-reports/report")
  if(VOXTREL_SANITIZE MATCHES "thread")
    set(environment ENVIRONMENT
      "TSAN_OPTIONS=suppressions=${CMAKE_SOURCE_DIR}/cmake/tsan.supp:${reports}:atexit_sleep_ms=50")
  elseif(VOXTREL_SANITIZE MATCHES "address")
    set(environment ENVIRONMENT "ASAN_OPTIONS=${reports};UBSAN_OPTIONS=${reports}")
  endif()
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60
                       TEST_PREFIX "${name}:" TEST_FILTER "${TEST_FILTER}"
                       PROPERTIES TIMEOUT ${TEST_TIMEOUT} LABELS "${TEST_LABELS}" ${environment})
endfunction()
