# What keeps a fault from being used, for the builds that people run. A build of the tests looks for
# faults instead: it is not optimised, which fortified functions need, or has sanitizers, which see less
# through them.
#
# Targets link one of these two:
#   voxtrel_hardened          libraries: checked stack frames, and checked lengths where the compiler knows
#                             how much a buffer holds
#   voxtrel_hardened_program  programs: the standard library checks its indices and iterators as well. What
#                             applications load has to be small, and their own build decides on this.
# The link options hold for everything that is linked: relocations are read-only once they are done, and
# all of them are done before main().
option(VOXTREL_HARDENED "Build programs and libraries hardened (optimised builds alone)" OFF)

add_library(voxtrel_hardened INTERFACE)
add_library(voxtrel_hardened_program INTERFACE)
target_link_libraries(voxtrel_hardened_program INTERFACE voxtrel_hardened)

if(VOXTREL_HARDENED)
  set(CMAKE_DISABLE_PRECOMPILE_HEADERS ON) # one serves one set of these options
  # Undefined first: a distribution's own flags may have another level, which would be a warning. As an
  # option and not as a definition, since definitions come before those flags.
  target_compile_options(voxtrel_hardened INTERFACE
    -fstack-protector-strong -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=3)
  target_compile_definitions(voxtrel_hardened_program INTERFACE _GLIBCXX_ASSERTIONS)
  add_link_options(LINKER:-z,relro LINKER:-z,now)
  # A compiler may link programs at fixed addresses unless it is told otherwise.
  include(CheckPIESupported)
  check_pie_supported(OUTPUT_VARIABLE VOXTREL_NO_PIE)
  if(NOT CMAKE_CXX_LINK_PIE_SUPPORTED)
    message(FATAL_ERROR "VOXTREL_HARDENED takes a linker for position-independent programs: "
                        "${VOXTREL_NO_PIE}")
  endif()
endif()
