// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_PROFILELOCK_H
#define VOXTREL_SERVICE_PROFILELOCK_H

#include <chrono>
#include <csignal>
#include <string>

#include "service/Log.h"

namespace voxtreld {

enum class ProfileLock { Ours, OfAnother, Interrupted };

/// Keeps other services from a profile until this process ends, however it ends: two would write
/// over each other's settings. The lock is that of a file beside the profile ("FILE.lock"), which
/// stays there.
///
/// Another service may be about to end and still write its last settings, so it is waited for,
/// for at most `timeout`; one of the blocked `signals` ends the wait. Where the file cannot be
/// locked, the profile is used all the same, and that is logged. Called on: main.
ProfileLock lockProfile(const std::string& profile, const sigset_t& signals,
                        std::chrono::milliseconds timeout, const Log& log);

}  // namespace voxtreld

#endif
