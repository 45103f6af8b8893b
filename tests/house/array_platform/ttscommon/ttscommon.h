// SPDX-License-Identifier: Apache-2.0
// The TTS common library of a device that declares its filter text as an array.
#ifndef VOXTREL_TESTS_HOUSE_ARRAY_PLATFORM_TTSCOMMON_H
#define VOXTREL_TESTS_HOUSE_ARRAY_PLATFORM_TTSCOMMON_H

extern "C" void dbgPrint(int level, const char* fmt, ...);
extern const char INI_LANGUAGE_WITH_VOICES[256];

#endif
