# What a stranger gets: the shared object, its headers, a CMake package and a pkg-config file; on a PC
# the stand-in of the platform beside them, in folders of its own.
include(CMakePackageConfigHelpers)
set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/voxtrel-client")

install(TARGETS voxtrel-client EXPORT voxtrel-client-targets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime NAMELINK_COMPONENT development)
foreach(room IN LISTS VOXTREL_ROOMS)
  install(DIRECTORY "${CMAKE_SOURCE_DIR}/${room}" COMPONENT development
    DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/voxtrel" FILES_MATCHING PATTERN "*.h"
    REGEX "/client/(CurrentLanguage|DeviceFilter|Log|Operations|Pause|Values)\\.h$" EXCLUDE)
endforeach()

if(VOXTREL_PLATFORM STREQUAL "host")
  target_include_directories(voxtrel_platform INTERFACE
    "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/voxtrel-platform>")
  install(TARGETS voxtrel_platform EXPORT voxtrel-client-targets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime NAMELINK_COMPONENT development)
  foreach(part IN ITEMS utils binder ttscommon)
    install(DIRECTORY "${CMAKE_SOURCE_DIR}/platform/host/${part}" COMPONENT development
      DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/voxtrel-platform" FILES_MATCHING PATTERN "*.h"
      PATTERN "transport" EXCLUDE)
  endforeach()
  set(VOXTREL_PC_PLATFORM_CFLAGS "-I\${includedir}/voxtrel-platform")
  set(VOXTREL_PC_PLATFORM_LIBS "-lvoxtrel-platform -pthread")
else()
  install(TARGETS voxtrel_platform EXPORT voxtrel-client-targets)
  list(TRANSFORM VOXTREL_PLATFORM_LIBRARIES PREPEND "-l" OUTPUT_VARIABLE VOXTREL_PC_PLATFORM_LIBS)
  list(JOIN VOXTREL_PC_PLATFORM_LIBS " " VOXTREL_PC_PLATFORM_LIBS)
endif()

foreach(program IN ITEMS voxtrel-servicemanager voxtreld voxtrelctl)
  if(TARGET ${program})
    set_target_properties(${program} PROPERTIES INSTALL_RPATH "$ORIGIN/../${CMAKE_INSTALL_LIBDIR}")
    install(TARGETS ${program} RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT programs)
  endif()
endforeach()

install(EXPORT voxtrel-client-targets NAMESPACE voxtrel:: COMPONENT development
  DESTINATION "${package_dir}")
configure_package_config_file(cmake/voxtrel-client-config.cmake.in
  "${CMAKE_BINARY_DIR}/voxtrel-client-config.cmake" INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file("${CMAKE_BINARY_DIR}/voxtrel-client-config-version.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES "${CMAKE_BINARY_DIR}/voxtrel-client-config.cmake"
  "${CMAKE_BINARY_DIR}/voxtrel-client-config-version.cmake" COMPONENT development
  DESTINATION "${package_dir}")
configure_file(cmake/voxtrel-client.pc.in "${CMAKE_BINARY_DIR}/voxtrel-client.pc" @ONLY)
install(FILES "${CMAKE_BINARY_DIR}/voxtrel-client.pc" COMPONENT development
  DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
