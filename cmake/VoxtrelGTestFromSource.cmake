# SPDX-License-Identifier: Apache-2.0
# Debian ships GoogleTest built for the PC and its own standard library only, but with its sources: a
# build for another one compiles them.
add_library(gtest STATIC "${VOXTREL_GTEST_SOURCE_DIR}/src/gtest-all.cc")
target_include_directories(gtest SYSTEM PUBLIC "${VOXTREL_GTEST_SOURCE_DIR}/include"
                           PRIVATE "${VOXTREL_GTEST_SOURCE_DIR}")
target_link_libraries(gtest PUBLIC Threads::Threads)
add_library(gtest_main STATIC "${VOXTREL_GTEST_SOURCE_DIR}/src/gtest_main.cc")
target_link_libraries(gtest_main PUBLIC gtest)
add_library(GTest::gtest ALIAS gtest)
add_library(GTest::gtest_main ALIAS gtest_main)
