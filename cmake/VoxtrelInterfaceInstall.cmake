# SPDX-License-Identifier: Apache-2.0
# What an application gets that speaks through voxtrel/: the shared object, the public headers, a CMake
# package and a pkg-config file. It needs neither the headers of the client library and the platform nor
# a link line with them: the linker finds both beside the shared object or in the system's folders.
set(interface_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/voxtrel")

install(TARGETS voxtrel EXPORT voxtrel-targets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT runtime NAMELINK_COMPONENT development)
install(TARGETS voxtrel-testing EXPORT voxtrel-targets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}" COMPONENT development)
set_target_properties(voxtrel voxtrel-testing PROPERTIES INSTALL_RPATH "$ORIGIN")
foreach(header IN LISTS VOXTREL_PUBLIC_HEADERS)
  get_filename_component(folder "voxtrel/${header}" DIRECTORY)
  install(FILES "${PROJECT_SOURCE_DIR}/voxtrel/${header}" COMPONENT development
    DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/${folder}")
endforeach()

install(EXPORT voxtrel-targets NAMESPACE voxtrel:: COMPONENT development
  DESTINATION "${interface_package_dir}")
configure_package_config_file(cmake/voxtrel-config.cmake.in
  "${PROJECT_BINARY_DIR}/voxtrel-config.cmake" INSTALL_DESTINATION "${interface_package_dir}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/voxtrel-config-version.cmake"
  COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/voxtrel-config.cmake"
  "${PROJECT_BINARY_DIR}/voxtrel-config-version.cmake" COMPONENT development
  DESTINATION "${interface_package_dir}")
foreach(name IN ITEMS voxtrel voxtrel-testing)
  configure_file(cmake/${name}.pc.in "${PROJECT_BINARY_DIR}/${name}.pc" @ONLY)
endforeach()
install(FILES "${PROJECT_BINARY_DIR}/voxtrel.pc" "${PROJECT_BINARY_DIR}/voxtrel-testing.pc"
  COMPONENT development
  DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
