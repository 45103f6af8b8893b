# SPDX-License-Identifier: Apache-2.0
# What keeps a fault from being used, for the builds that people run. A build of the tests looks for
# faults instead: it is not optimised, which fortified functions need, or has sanitizers, which see less
# through them.
#
# Programs link voxtrel_hardened: checked stack frames, checked lengths where the compiler knows how much a
# buffer holds, and a standard library that checks its indices and iterators. The libraries do not: a call
# over the stand-in took 5 % more instructions, and what applications load has to be small. A distribution's
# own flags hold for them, too.
# The link options hold for everything that is linked: relocations are read-only once they are done, and
# all of them are done before main().
option(VOXTREL_HARDENED "Build programs hardened (optimised builds alone)" OFF)

add_library(voxtrel_hardened INTERFACE)

if(VOXTREL_HARDENED)
  set(CMAKE_DISABLE_PRECOMPILE_HEADERS ON) # one serves one set of these options
  # Undefined first: a distribution's own flags may have another level, which would be a warning. As an
  # option and not as a definition, since definitions come before those flags.
  target_compile_options(voxtrel_hardened INTERFACE
    -fstack-protector-strong "$<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=3>")
  target_compile_definitions(voxtrel_hardened INTERFACE _GLIBCXX_ASSERTIONS)
  add_link_options(LINKER:-z,relro LINKER:-z,now)
  # A compiler may link programs at fixed addresses unless it is told otherwise.
  include(CheckPIESupported)
  check_pie_supported(OUTPUT_VARIABLE VOXTREL_NO_PIE)
  if(NOT CMAKE_CXX_LINK_PIE_SUPPORTED)
    message(FATAL_ERROR "VOXTREL_HARDENED takes a linker for position-independent programs: "
                        "${VOXTREL_NO_PIE}")
  endif()
endif()
