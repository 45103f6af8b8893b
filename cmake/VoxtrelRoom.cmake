# voxtrel_room(NAME SOURCES file... [DEPENDS target...])
#
# One folder of the library as an object library `voxtrel_NAME`. Its include path holds a single
# door, a link to the folder itself, so that a folder can include only what its DEPENDS open to it:
# an include that the design does not allow does not compile.
function(voxtrel_room name)
  cmake_parse_arguments(ROOM "" "" "SOURCES;DEPENDS" ${ARGN})
  set(door "${CMAKE_BINARY_DIR}/doors/${name}")
  file(MAKE_DIRECTORY "${door}")
  file(CREATE_LINK "${CMAKE_SOURCE_DIR}/${name}" "${door}/${name}" SYMBOLIC)

  add_library(voxtrel_${name} OBJECT ${ROOM_SOURCES})
  target_include_directories(voxtrel_${name} PUBLIC "${door}")
  target_link_libraries(voxtrel_${name} PUBLIC ${ROOM_DEPENDS} PRIVATE voxtrel_warnings)
endfunction()
