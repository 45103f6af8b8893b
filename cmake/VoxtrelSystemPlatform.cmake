# SPDX-License-Identifier: Apache-2.0
# The device's own binder runtime and TTS common library, named by the user or found in the sysroot.
# docs/porting.md is the way through it.
set(VOXTREL_PLATFORM_INCLUDE_DIRS "" CACHE PATH
    "Folders that hold <binder/...>, <utils/...>, <ttscommon/...>, beside the compiler's own")
set(VOXTREL_PLATFORM_LIBRARY_DIRS "" CACHE PATH
    "Folders that hold the platform's libraries, and what these are linked with")
set(VOXTREL_PLATFORM_LIBRARIES "binder;utils;ttscommon" CACHE STRING
    "Libraries of the device's platform: names, full paths or linker flags")

set(link_options "")
foreach(folder IN LISTS VOXTREL_PLATFORM_LIBRARY_DIRS)
  # What a shared library of the platform needs itself is looked up there, too.
  list(APPEND link_options "LINKER:-rpath-link,${folder}")
endforeach()
# Programs of the build tree, such as the tests, run where they are.
list(APPEND CMAKE_BUILD_RPATH ${VOXTREL_PLATFORM_LIBRARY_DIRS})

add_library(voxtrel_platform INTERFACE)
target_include_directories(voxtrel_platform SYSTEM INTERFACE ${VOXTREL_PLATFORM_INCLUDE_DIRS})
target_link_directories(voxtrel_platform INTERFACE ${VOXTREL_PLATFORM_LIBRARY_DIRS})
target_link_options(voxtrel_platform INTERFACE ${link_options})
target_link_libraries(voxtrel_platform INTERFACE ${VOXTREL_PLATFORM_LIBRARIES} Threads::Threads)

# voxtrel_try_platform(STEP TYPE SOURCE ADVICE): builds SOURCE against the platform, or ends with the
# compiler's words and what to do about them.
function(voxtrel_try_platform step type source advice)
  set(file "${PROJECT_BINARY_DIR}/platform-${step}.cpp")
  file(CONFIGURE OUTPUT "${file}" CONTENT "${source}")
  set(CMAKE_TRY_COMPILE_TARGET_TYPE ${type})
  set(link "")
  if(type STREQUAL "EXECUTABLE")
    set(link LINK_OPTIONS ${link_options} LINK_LIBRARIES ${VOXTREL_PLATFORM_LIBRARIES} Threads::Threads)
  endif()
  try_compile(works "${PROJECT_BINARY_DIR}/platform-${step}" SOURCES "${file}"
    CMAKE_FLAGS "-DINCLUDE_DIRECTORIES=${PROJECT_SOURCE_DIR};${VOXTREL_PLATFORM_INCLUDE_DIRS}"
                "-DLINK_DIRECTORIES=${VOXTREL_PLATFORM_LIBRARY_DIRS}"
    ${link} OUTPUT_VARIABLE output)
  if(NOT works)
    string(REGEX MATCHALL "[^\n]*(error|cannot find|undefined reference)[^\n]*" words "${output}")
    list(SUBLIST words 0 5 words)
    list(JOIN words "\n  " words)
    message(FATAL_ERROR "VOXTREL_PLATFORM=system: ${advice}\nSee docs/porting.md. The compiler says:\n  ${words}")
  endif()
endfunction()

# Once for each set of answers: a developer configures more often than they change.
string(SHA1 answers "${CMAKE_CXX_COMPILER};${CMAKE_CXX_FLAGS};${VOXTREL_PLATFORM_INCLUDE_DIRS};\
${VOXTREL_PLATFORM_LIBRARY_DIRS};${VOXTREL_PLATFORM_LIBRARIES}")
if(NOT VOXTREL_PLATFORM_TRIED STREQUAL answers)
  voxtrel_try_platform(headers STATIC_LIBRARY
    "#include \"ipc/BinderHeaders.h\"\n#include <ttscommon/ttscommon.h>\n"
    "its headers do not compile. VOXTREL_PLATFORM_INCLUDE_DIRS is '${VOXTREL_PLATFORM_INCLUDE_DIRS}'; it \
takes the folders that hold binder/, utils/ and ttscommon/.")
  voxtrel_try_platform(libraries EXECUTABLE
    "#include \"ipc/BinderHeaders.h\"\n#include <ttscommon/ttscommon.h>
int main() {
    dbgPrint(0, \"%s\", INI_LANGUAGE_WITH_VOICES);
    return android::defaultServiceManager() == nullptr ? 1 : 0;
}\n"
    "its libraries do not link. VOXTREL_PLATFORM_LIBRARIES is '${VOXTREL_PLATFORM_LIBRARIES}'; it takes \
names, full paths and linker flags, also those of further libraries that the platform's need. \
VOXTREL_PLATFORM_LIBRARY_DIRS is '${VOXTREL_PLATFORM_LIBRARY_DIRS}'; it takes the folders that hold them.")
  set(VOXTREL_PLATFORM_TRIED "${answers}" CACHE INTERNAL "answers with which the platform was tried")
endif()

# voxtrel_system_platform_flags(CFLAGS LIBS): the same for pkg-config's file, where a library has a
# name and a folder, and no path.
function(voxtrel_system_platform_flags cflags libs)
  set(folders ${VOXTREL_PLATFORM_LIBRARY_DIRS})
  set(names "")
  foreach(library IN LISTS VOXTREL_PLATFORM_LIBRARIES)
    if(library MATCHES "^(/.*)/lib([^/]+)\\.(so|a)$")
      list(APPEND folders "${CMAKE_MATCH_1}")
      list(APPEND names "-l${CMAKE_MATCH_2}")
    elseif(library MATCHES "^[-/]")
      list(APPEND names "${library}")
    else()
      list(APPEND names "-l${library}")
    endif()
  endforeach()
  list(REMOVE_DUPLICATES folders)
  set(folder_flags "")
  foreach(folder IN LISTS folders)
    list(APPEND folder_flags "-L${folder}" "-Wl,-rpath-link,${folder}")
  endforeach()
  list(TRANSFORM VOXTREL_PLATFORM_INCLUDE_DIRS PREPEND "-I" OUTPUT_VARIABLE include_flags)
  list(JOIN include_flags " " include_flags)
  list(JOIN folder_flags " " folder_flags)
  list(JOIN names " " names)
  set(${cflags} "${include_flags}" PARENT_SCOPE)
  set(${libs} "${folder_flags} ${names} -pthread" PARENT_SCOPE)
endfunction()
