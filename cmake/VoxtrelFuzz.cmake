# voxtrel_fuzz(NAME SOURCES file... ROOMS room... [LINK target...] [SEEDS folder])
#
# One libFuzzer target (name it ..._fuzz: `./dev fuzz` runs what is called so). The rooms under test
# are instrumented for it, so that the fuzzer sees which of their branches an input reaches. SEEDS
# are put into the corpus that `./dev fuzz` keeps beside the program.
function(voxtrel_fuzz name)
  cmake_parse_arguments(FUZZ "" "SEEDS" "SOURCES;ROOMS;LINK" ${ARGN})
  add_executable(${name} ${FUZZ_SOURCES})
  add_dependencies(fuzzers ${name})
  target_include_directories(${name} PRIVATE "${PROJECT_SOURCE_DIR}")
  foreach(room IN LISTS FUZZ_ROOMS)
    target_compile_options(voxtrel_${room} PRIVATE -fsanitize=fuzzer-no-link)
    target_link_libraries(${name} PRIVATE voxtrel_${room})
  endforeach()
  target_link_libraries(${name} PRIVATE ${FUZZ_LINK} voxtrel_warnings)
  target_link_options(${name} PRIVATE -fsanitize=fuzzer)
  if(FUZZ_SEEDS)
    add_custom_command(TARGET ${name} POST_BUILD COMMAND "${CMAKE_COMMAND}" -E copy_directory
                       "${CMAKE_CURRENT_SOURCE_DIR}/${FUZZ_SEEDS}" "$<TARGET_FILE:${name}>.corpus")
  endif()
endfunction()
