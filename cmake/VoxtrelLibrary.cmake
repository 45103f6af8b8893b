# SPDX-License-Identifier: Apache-2.0
# The four rooms as the one shared object that applications and the service link.
add_library(voxtrel-client SHARED)
add_library(voxtrel::client ALIAS voxtrel-client)
foreach(room IN LISTS VOXTREL_ROOMS)
  target_link_libraries(voxtrel-client PRIVATE voxtrel_${room})
  target_include_directories(voxtrel-client INTERFACE
                             "$<BUILD_INTERFACE:${PROJECT_BINARY_DIR}/doors/${room}>")
endforeach()
target_include_directories(voxtrel-client INTERFACE
                           "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/voxtrel>")
target_link_libraries(voxtrel-client PUBLIC voxtrel_platform)

list(TRANSFORM VOXTREL_ROOMS PREPEND voxtrel_ OUTPUT_VARIABLE room_objects)
voxtrel_build_for_size(${room_objects})
voxtrel_describe_types(${room_objects})
# But for the stub, which serves each request of each client.
set_source_files_properties("${PROJECT_SOURCE_DIR}/ipc/BnTextToSpeechFestival.cpp"
  TARGET_DIRECTORY voxtrel_ipc
  PROPERTIES COMPILE_OPTIONS "$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-O2>")
# The library calls its own functions without asking the loader; code and constants share pages; what
# nothing refers to is left out.
target_link_options(voxtrel-client PRIVATE
  LINKER:-Bsymbolic-functions LINKER:-z,noseparate-code LINKER:--gc-sections)

set(map "${PROJECT_SOURCE_DIR}/cmake/voxtrel-client.map")
target_link_options(voxtrel-client PRIVATE "LINKER:--version-script=${map}")
if(NOT VOXTREL_SANITIZE) # a sanitizer's runtime is in the program, not in the shared object
  target_link_options(voxtrel-client PRIVATE "LINKER:--no-undefined")
endif()
set_target_properties(voxtrel-client PROPERTIES
  VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR} LINKER_LANGUAGE CXX
  LINK_DEPENDS "${map}" EXPORT_NAME client)
