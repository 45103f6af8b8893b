# SPDX-License-Identifier: Apache-2.0
# voxtrel_fuzz(NAME SOURCES file... ROOMS room... [LINK target...] [SEEDS folder] [GOLDEN])
#
# One libFuzzer target of the object libraries voxtrel_ROOM; name it ..._fuzz. SEEDS, what GOLDEN makes
# out of the golden dumps of the wire, and what `./dev fuzz --keep` has kept in fuzz/corpus are put into
# the corpus that `./dev fuzz` has beside the program.
function(voxtrel_fuzz name)
  cmake_parse_arguments(FUZZ "GOLDEN" "SEEDS" "SOURCES;ROOMS;LINK" ${ARGN})
  add_executable(${name} ${FUZZ_SOURCES})
  add_dependencies(fuzzers ${name})
  target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}")
  foreach(room IN LISTS FUZZ_ROOMS)
    target_link_libraries(${name} PRIVATE voxtrel_${room})
  endforeach()
  target_link_libraries(${name} PRIVATE ${FUZZ_LINK} voxtrel_warnings)
  target_link_options(${name} PRIVATE -fsanitize=fuzzer)

  set(corpus "$<TARGET_FILE:${name}>.corpus")
  add_custom_command(TARGET ${name} POST_BUILD
                     COMMAND "${CMAKE_COMMAND}" -E make_directory "${corpus}")
  if(FUZZ_SEEDS)
    add_custom_command(TARGET ${name} POST_BUILD COMMAND "${CMAKE_COMMAND}" -E copy_directory
                       "${CMAKE_CURRENT_SOURCE_DIR}/${FUZZ_SEEDS}" "${corpus}")
  endif()
  if(FUZZ_GOLDEN)
    add_custom_command(TARGET ${name} POST_BUILD COMMAND Python3::Interpreter
                       "${PROJECT_SOURCE_DIR}/scripts/golden_seeds.py" ${name} "${corpus}")
  endif()
  set(kept "${PROJECT_SOURCE_DIR}/fuzz/corpus/${name}.tar.gz")
  if(EXISTS "${kept}")
    set_property(TARGET ${name} APPEND PROPERTY LINK_DEPENDS "${kept}") # a new one is unpacked
    add_custom_command(TARGET ${name} POST_BUILD COMMAND "${CMAKE_COMMAND}" -E chdir "${corpus}"
                       "${CMAKE_COMMAND}" -E tar xzf "${kept}")
  endif()
endfunction()

# voxtrel_fuzzed_part(NAME SOURCE...)
#
# Sources of a room that a fuzzer does not need as a whole; to be named as a room.
function(voxtrel_fuzzed_part name)
  add_library(voxtrel_${name} OBJECT ${ARGN})
  target_include_directories(voxtrel_${name} PUBLIC "${PROJECT_SOURCE_DIR}")
  target_link_libraries(voxtrel_${name} PRIVATE voxtrel_warnings)
  target_precompile_headers(voxtrel_${name} REUSE_FROM voxtrel_standard_header)
endfunction()
