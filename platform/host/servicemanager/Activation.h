// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICEMANAGER_ACTIVATION_H
#define VOXTREL_SERVICEMANAGER_ACTIVATION_H

#include <string>

#include "support/Fd.h"

namespace servicemanager {

/// The listening socket that systemd, or another program with its protocol, passes to this process.
/// Invalid, with `error` empty, when there is none; invalid with `error` when it cannot be used.
/// Removes the protocol's variables from the environment.
/// Called on: the main thread, before there are others.
android::transport::Fd takeListeningSocket(std::string& error);

/// Tells systemd that the process can be used now, or is about to end; nothing without systemd.
void tellReady();
void tellStopping();

}  // namespace servicemanager

#endif
