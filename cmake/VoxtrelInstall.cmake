# SPDX-License-Identifier: Apache-2.0
# What a stranger gets: the shared object, its headers, a CMake package and a pkg-config file; on a PC
# the stand-in of the platform beside them, in folders of its own. The tree may be moved as a whole.
include(CMakePackageConfigHelpers)
set(package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/voxtrel-client")

install(TARGETS voxtrel-client EXPORT voxtrel-client-targets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime NAMELINK_COMPONENT development)
set_target_properties(voxtrel-client PROPERTIES INSTALL_RPATH "$ORIGIN")
foreach(room IN LISTS VOXTREL_ROOMS)
  install(DIRECTORY "${PROJECT_SOURCE_DIR}/${room}" COMPONENT development
    DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/voxtrel"
    FILES_MATCHING PATTERN "*.h" PATTERN "internal" EXCLUDE)
endforeach()

if(VOXTREL_PLATFORM STREQUAL "host")
  target_include_directories(voxtrel_platform INTERFACE
    "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/voxtrel-platform>")
  install(TARGETS voxtrel_platform EXPORT voxtrel-client-targets
    LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime NAMELINK_COMPONENT development)
  foreach(part IN ITEMS utils binder ttscommon)
    install(DIRECTORY "${PROJECT_SOURCE_DIR}/platform/host/${part}" COMPONENT development
      DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/voxtrel-platform" FILES_MATCHING PATTERN "*.h"
      PATTERN "transport" EXCLUDE PATTERN "internal" EXCLUDE)
  endforeach()
  set(VOXTREL_PC_PLATFORM_CFLAGS "-I\${includedir}/voxtrel-platform")
  set(VOXTREL_PC_PLATFORM_LIBS "-lvoxtrel-platform -pthread")
else()
  install(TARGETS voxtrel_platform EXPORT voxtrel-client-targets)
  voxtrel_system_platform_flags(VOXTREL_PC_PLATFORM_CFLAGS VOXTREL_PC_PLATFORM_LIBS)
endif()

file(RELATIVE_PATH from_bin "${CMAKE_INSTALL_FULL_BINDIR}" "${CMAKE_INSTALL_FULL_LIBDIR}")
foreach(program IN ITEMS voxtrel-servicemanager voxtrel-platform-check voxtreld voxtrelctl)
  if(TARGET ${program})
    set_target_properties(${program} PROPERTIES INSTALL_RPATH "$ORIGIN/${from_bin}")
    install(TARGETS ${program} RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT programs)
  endif()
endforeach()
install(DIRECTORY "${PROJECT_SOURCE_DIR}/examples" COMPONENT programs
  DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/voxtrel")

install(EXPORT voxtrel-client-targets NAMESPACE voxtrel:: COMPONENT development
  DESTINATION "${package_dir}")
configure_package_config_file(cmake/voxtrel-client-config.cmake.in
  "${PROJECT_BINARY_DIR}/voxtrel-client-config.cmake" INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/voxtrel-client-config-version.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/voxtrel-client-config.cmake"
  "${PROJECT_BINARY_DIR}/voxtrel-client-config-version.cmake" COMPONENT development
  DESTINATION "${package_dir}")
# Relative to the file itself, so that it holds wherever the tree is put.
file(RELATIVE_PATH VOXTREL_PC_TO_PREFIX "${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig"
     "${CMAKE_INSTALL_PREFIX}")
string(REGEX REPLACE "/$" "" VOXTREL_PC_TO_PREFIX "${VOXTREL_PC_TO_PREFIX}")
file(RELATIVE_PATH VOXTREL_PC_LIBDIR "${CMAKE_INSTALL_PREFIX}" "${CMAKE_INSTALL_FULL_LIBDIR}")
file(RELATIVE_PATH VOXTREL_PC_INCLUDEDIR "${CMAKE_INSTALL_PREFIX}"
     "${CMAKE_INSTALL_FULL_INCLUDEDIR}")
configure_file(cmake/voxtrel-client.pc.in "${PROJECT_BINARY_DIR}/voxtrel-client.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/voxtrel-client.pc" COMPONENT development
  DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
include(VoxtrelInterfaceInstall)
