# SPDX-License-Identifier: Apache-2.0
# What a user may switch, and the flags that our own code (and only our own code) is built with.
set(VOXTREL_PLATFORM "host" CACHE STRING
    "host: build the PC stand-in of the platform; system: use the device's own")
set_property(CACHE VOXTREL_PLATFORM PROPERTY STRINGS host system)
if(NOT VOXTREL_PLATFORM MATCHES "^(host|system)$")
  message(FATAL_ERROR "VOXTREL_PLATFORM is '${VOXTREL_PLATFORM}'; it takes 'host' or 'system'.")
endif()

# A project that adds this one as a subdirectory gets the libraries alone, and nothing is installed.
option(VOXTREL_BUILD_TESTS "Build the tests" ${PROJECT_IS_TOP_LEVEL})
option(VOXTREL_BUILD_BENCH "Build the benchmarks" OFF)
option(VOXTREL_BUILD_FUZZERS "Build the libFuzzer targets (clang only)" OFF)
option(VOXTREL_COVERAGE "Instrument the build for gcovr" OFF)
option(VOXTREL_DRIVER_MANNERS
       "Run the tests of several processes once more in the manners of a driver" OFF)
option(VOXTREL_SYSTEMD "Let the programs work with systemd: sockets, readiness (needs libsystemd)" OFF)
set(VOXTREL_VERSION_TEXT "" CACHE STRING "What --version prints; empty: the project's version")
if(NOT VOXTREL_VERSION_TEXT)
  set(VOXTREL_VERSION_TEXT "${PROJECT_VERSION}")
endif()
set(VOXTREL_SANITIZE "" CACHE STRING "Sanitizers for the whole build, e.g. address,undefined")

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

find_program(VOXTREL_CCACHE ccache)
if(VOXTREL_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  # Without this it looks up nothing that uses a precompiled header.
  set(CMAKE_CXX_COMPILER_LAUNCHER
      env CCACHE_SLOPPINESS=pch_defines,time_macros "${VOXTREL_CCACHE}")
endif()

include(GNUInstallDirs)
find_package(Threads REQUIRED)
include(VoxtrelPrograms)
include(VoxtrelTestPackages)

# Instrumentation must cover every object of a program, so it is the one thing set for all targets.
if(VOXTREL_BUILD_FUZZERS)
  # The fuzzer sees which branches an input reaches; everything alike, so that it can share the
  # precompiled headers.
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()
if(VOXTREL_SANITIZE)
  add_compile_options("-fsanitize=${VOXTREL_SANITIZE}" -fno-omit-frame-pointer
                      -fno-sanitize-recover=all)
  add_link_options("-fsanitize=${VOXTREL_SANITIZE}")
endif()
if(VOXTREL_COVERAGE)
  add_compile_options(--coverage -fprofile-update=atomic)
  add_link_options(--coverage)
endif()

add_library(voxtrel_warnings INTERFACE)
target_compile_options(voxtrel_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)

include(VoxtrelHardening)

# For the programs alone: no library of ours depends on libsystemd.
add_library(voxtrel_systemd INTERFACE)
if(VOXTREL_SYSTEMD)
  find_package(PkgConfig REQUIRED)
  pkg_check_modules(systemd REQUIRED IMPORTED_TARGET libsystemd)
  target_link_libraries(voxtrel_systemd INTERFACE PkgConfig::systemd)
  target_compile_definitions(voxtrel_systemd INTERFACE VOXTREL_HAVE_SYSTEMD)
endif()
