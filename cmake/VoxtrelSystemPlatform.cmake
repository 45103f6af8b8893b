# The device's own binder runtime and TTS common library, named by the user or found in the sysroot.
set(VOXTREL_PLATFORM_INCLUDE_DIRS "" CACHE STRING "Folders that hold <binder/...>, <utils/...>, <ttscommon/...>")
set(VOXTREL_PLATFORM_LIBRARIES "binder;utils;ttscommon" CACHE STRING "Libraries of the device's platform")

add_library(voxtrel_platform INTERFACE)
target_include_directories(voxtrel_platform SYSTEM INTERFACE ${VOXTREL_PLATFORM_INCLUDE_DIRS})
target_link_libraries(voxtrel_platform INTERFACE ${VOXTREL_PLATFORM_LIBRARIES} Threads::Threads)
