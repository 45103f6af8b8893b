# SPDX-License-Identifier: Apache-2.0
# The standard headers are most of the work on a source of ours, so all of them share these compiled.
# Presets without precompiled headers show what a source forgets to include.
file(CONFIGURE OUTPUT "${PROJECT_BINARY_DIR}/standard_header.cpp" CONTENT "")
add_library(voxtrel_standard_header OBJECT EXCLUDE_FROM_ALL
  "${PROJECT_BINARY_DIR}/standard_header.cpp")
target_link_libraries(voxtrel_standard_header PRIVATE voxtrel_warnings)
# A header out of ccache is older than its source, which clang would refuse.
target_compile_options(voxtrel_standard_header PRIVATE
  "$<$<CXX_COMPILER_ID:Clang>:SHELL:-Xclang -fno-pch-timestamp>")
target_precompile_headers(voxtrel_standard_header PRIVATE
  <algorithm> <chrono> <condition_variable> <fstream> <functional> <map> <memory> <mutex> <optional>
  <string> <string_view> <system_error> <thread> <unordered_map> <vector>)

# voxtrel_room(NAME SOURCES file... [DEPENDS target...])
#
# One folder of the library as an object library `voxtrel_NAME`. Its include path holds a single
# door, a link to the folder itself, so that a folder can include only what its DEPENDS open to it:
# an include that the design does not allow does not compile.
function(voxtrel_room name)
  cmake_parse_arguments(ROOM "" "" "SOURCES;DEPENDS" ${ARGN})
  set(door "${PROJECT_BINARY_DIR}/doors/${name}")
  file(MAKE_DIRECTORY "${door}")
  file(CREATE_LINK "${PROJECT_SOURCE_DIR}/${name}" "${door}/${name}" SYMBOLIC)

  add_library(voxtrel_${name} OBJECT ${ROOM_SOURCES})
  target_include_directories(voxtrel_${name} PUBLIC "${door}")
  target_link_libraries(voxtrel_${name} PUBLIC ${ROOM_DEPENDS} PRIVATE voxtrel_warnings)
  target_precompile_headers(voxtrel_${name} REUSE_FROM voxtrel_standard_header)
endfunction()

# voxtrel_build_for_size(OBJECTS...)
#
# Object libraries that mostly wait: what they take of the memory of each process counts more than how
# fast they compute. The linker, which knows what is exported, optimises once more and drops the rest.
# Nobody replaces single functions of theirs. (A precompiled header serves one way of optimising.)
include(CheckIPOSupported)
function(voxtrel_build_for_size)
  if(NOT CMAKE_BUILD_TYPE MATCHES "^(Release|RelWithDebInfo|MinSizeRel)$")
    return()
  endif()
  check_ipo_supported(RESULT can_optimise_at_link LANGUAGES CXX OUTPUT ignored)
  foreach(objects IN LISTS ARGN)
    target_compile_options(${objects} PRIVATE
      -Os -ffunction-sections -fdata-sections -fno-semantic-interposition)
    set_target_properties(${objects} PROPERTIES
      DISABLE_PRECOMPILE_HEADERS ON INTERPROCEDURAL_OPTIMIZATION ${can_optimise_at_link})
  endforeach()
endfunction()

# voxtrel_describe_types(OBJECTS...)
#
# Object libraries whose interface abi/ describes: their debug builds have all that the compiler knows of
# types, and not only what a backtrace needs.
function(voxtrel_describe_types)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND NOT VOXTREL_SANITIZE AND NOT VOXTREL_COVERAGE)
    foreach(objects IN LISTS ARGN)
      target_compile_options(${objects} PRIVATE "$<$<CONFIG:Debug>:-g>")
    endforeach()
  endif()
endfunction()
