# The four rooms as the one shared object that applications and the service link.
add_library(voxtrel-client SHARED)
foreach(room IN LISTS VOXTREL_ROOMS)
  target_link_libraries(voxtrel-client PRIVATE voxtrel_${room})
  target_include_directories(voxtrel-client INTERFACE
                             "$<BUILD_INTERFACE:${CMAKE_BINARY_DIR}/doors/${room}>")
endforeach()
target_link_libraries(voxtrel-client PUBLIC voxtrel_platform)
set_target_properties(voxtrel-client PROPERTIES
  VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR} LINKER_LANGUAGE CXX)
