// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_PLATFORM_H
#define VOXTREL_TOOLS_PLATFORM_H

#include <thread>

#include "client/TTSClientPrivate.h"

namespace voxtrelctl {

/// The name under which this program speaks: the library puts it into its log lines.
constexpr const char* kAppName = "voxtrelctl";

/// Starts the threads on which the service's events and its death arrive. More calls do nothing.
void startBinderThreads();

/// The service's binder, or null while it is not registered or there is no service manager.
android::sp<android::IBinder> findService();

/// findService() != null.
bool isServiceRegistered();

/// True when a service manager answers.
bool isServiceManagerThere();

/// Ends with a thread that asked a service: joins one that was answered. One that was not may be in
/// its call for ever, and leave() goes without it. Called on: the main thread.
void settle(std::thread asker, bool answered);

/// What main returns: `status`. Ends the process here when a thread is still in a call, for that
/// thread needs the objects that returning destroys. Called on: the main thread.
int leave(int status);

/// Chooses what the platform's log shows: only what is asked for, because the retry lines of the
/// library say the same as this program's own progress and error lines. An environment that sets
/// VOXTREL_LOG_LEVEL is left alone. Call it before anything is logged and before any thread starts.
void quietLog(bool verbose);

}  // namespace voxtrelctl

#endif
