# SPDX-License-Identifier: Apache-2.0
# Whether the tests can be built. A PC has their packages or says what to install; a device's sysroot
# often has none of them, and the library needs none.
set(VOXTREL_GTEST_SOURCE_DIR "/usr/src/googletest/googletest" CACHE PATH
    "GoogleTest's sources, which VOXTREL_GTEST_FROM_SOURCE compiles")
set(gtest_from_source OFF)
if(CMAKE_CROSSCOMPILING)
  set(gtest_from_source ON)
endif()
option(VOXTREL_GTEST_FROM_SOURCE "Compile GoogleTest, as for another machine or standard library"
       ${gtest_from_source})

if(VOXTREL_BUILD_TESTS AND VOXTREL_PLATFORM STREQUAL "system")
  set(missing "")
  find_package(Python3 QUIET COMPONENTS Interpreter)
  if(NOT Python3_FOUND)
    list(APPEND missing Python)
  endif()
  if(VOXTREL_GTEST_FROM_SOURCE)
    if(NOT EXISTS "${VOXTREL_GTEST_SOURCE_DIR}/src/gtest-all.cc")
      list(APPEND missing "GoogleTest (${VOXTREL_GTEST_SOURCE_DIR})")
    endif()
  else()
    find_package(GTest QUIET)
    if(NOT GTest_FOUND)
      list(APPEND missing GoogleTest)
    endif()
  endif()
  if(missing)
    set(VOXTREL_BUILD_TESTS OFF)
    list(JOIN missing ", " missing)
    message(STATUS "VOXTREL_BUILD_TESTS: OFF, since these are not found: ${missing}")
  endif()
endif()
