# SPDX-License-Identifier: Apache-2.0
# The cross compiler, with the libraries that the programs use: those of the emulated ARM board's packages,
# which scripts/board/packages.sh unpacks.
include("${CMAKE_CURRENT_LIST_DIR}/arm-linux-gnueabihf.cmake")
unset(CMAKE_CROSSCOMPILING_EMULATOR) # tests start their processes on the board itself
set(board_root "${CMAKE_CURRENT_LIST_DIR}/../build/board/arm/root")
get_filename_component(board_root "${board_root}" ABSOLUTE)
set(board_libraries "${board_root}/usr/lib/arm-linux-gnueabihf")
if(NOT EXISTS "${board_libraries}/pkgconfig")
  message(FATAL_ERROR "The libraries of the emulated ARM board are missing in ${board_root}: "
          "'./dev board arm' fetches them and builds this preset.")
endif()
list(APPEND CMAKE_FIND_ROOT_PATH "${board_root}")
set(ENV{PKG_CONFIG_LIBDIR} "${board_libraries}/pkgconfig:${board_root}/usr/share/pkgconfig")
set(ENV{PKG_CONFIG_SYSROOT_DIR} "${board_root}")
# What those libraries need in turn is there, too.
string(JOIN "," search -Wl "-rpath-link,${board_libraries}" "-rpath-link,${board_libraries}/pulseaudio"
       "-rpath-link,${board_root}/lib/arm-linux-gnueabihf")
set(CMAKE_EXE_LINKER_FLAGS_INIT "${search}")
