// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_CLIENT_PLATFORM_H
#define VOXTREL_TESTS_CLIENT_PLATFORM_H

#include <functional>
#include <string>

#include "ipc/BinderHeaders.h"

namespace platform {

// This program takes the platform calls of the client over, by defining them itself, and notes each
// in the journal: `dbgPrint` as `logged` says; `usleep(n)`, which returns at once, as "pause n"; a
// death link made to or taken off a local binder as "link RECIPIENT" and "unlink RECIPIENT"; and
// `IPCThreadState::flushCommands` as "flush". `defaultServiceManager` gives what the test says,
// since not every release of the platform lets its own be replaced.

/// The journal's line for a log line, with its format as it was given and the text it makes.
std::string logged(int level, const std::string& format, const std::string& text);

/// What `defaultServiceManager` gives from now on. Some platforms give null while their context
/// manager is not up yet.
void giveServiceManager(const android::sp<android::IServiceManager>& manager);

/// Called in each pause.
void onPause(std::function<void()> action);

/// Called at each log line, before it is noted.
void onLog(std::function<void()> action);

/// Called with "lock" before anybody waits for `Clientmutex`, on the thread that is about to wait,
/// and with "unlock" before it is let go. Set it while no other thread is in the library.
void onMutex(std::function<void(const std::string& what)> action);

}  // namespace platform

#endif
