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

set(map "${PROJECT_SOURCE_DIR}/cmake/voxtrel-client.map")
target_link_options(voxtrel-client PRIVATE "LINKER:--version-script=${map}" "LINKER:--no-undefined")
if(VOXTREL_SANITIZE)
  # A sanitizer's runtime is in the program, not in the shared object.
  set_target_properties(voxtrel-client PROPERTIES LINK_OPTIONS "LINKER:--version-script=${map}")
endif()
set_target_properties(voxtrel-client PROPERTIES
  VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR} LINKER_LANGUAGE CXX
  LINK_DEPENDS "${map}" EXPORT_NAME client)
