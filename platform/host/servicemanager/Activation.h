// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICEMANAGER_ACTIVATION_H
#define VOXTREL_SERVICEMANAGER_ACTIVATION_H

#include <string>

#include "support/Fd.h"

namespace servicemanager {

/// The listening socket with which systemd, or whoever does as it does, has started this process.
/// Invalid, with `error` empty, when there is none; invalid with `error` when there is something
/// that cannot be used. What told of it is gone from the environment afterwards.
/// Called on: the main thread, before there are others.
android::transport::Fd takeListeningSocket(std::string& error);

/// Tells systemd that the process can be used now, or is about to end. Without systemd: nothing.
void tellReady();
void tellStopping();

}  // namespace servicemanager

#endif
