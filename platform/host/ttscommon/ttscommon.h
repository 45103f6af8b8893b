// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TTSCOMMON_TTSCOMMON_H
#define VOXTREL_TTSCOMMON_TTSCOMMON_H

/// Writes one formatted line, as it is (no newline is added), when `level` is at or below the
/// threshold. On a PC: to standard error, with the level in front where that is systemd's journal;
/// the threshold is $VOXTREL_LOG_LEVEL, read once, or 0, so that only warnings show (-1 errors,
/// 0 warnings, 1 what happens, 2 every step). A line for which there is no room, because nobody
/// reads, is left out and counted, so that no thread is held up. Called on: any thread.
extern "C" void dbgPrint(int level, const char* fmt, ...) __attribute__((format(printf, 2, 3)));

/// The device's filter of languages and voices, NUL-terminated. On a PC: the value that
/// $VOXTREL_LANGUAGE_WITH_VOICES had when the library was loaded, or the empty text.
extern const char* INI_LANGUAGE_WITH_VOICES;

#endif
