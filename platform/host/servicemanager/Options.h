// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICEMANAGER_OPTIONS_H
#define VOXTREL_SERVICEMANAGER_OPTIONS_H

#include <chrono>

#include "servicemanager/Registry.h"
#include "socket/SocketPath.h"

namespace servicemanager {

/// What the command line asks for.
struct Options {
    int logLevel = 1;                   ///< of `dbgPrint`
    std::chrono::seconds idleLimit{0};  ///< 0: stay
    android::transport::SocketAccess access;
    bool asksForAccess = false;  ///< by an option, not by default
    android::Registry::Reservations reserved;
};

/// Reads the command line. Prints help, version and errors.
/// @return true to go on; else the process is to exit with `exitStatus`.
bool parseOptions(int argc, char** argv, Options& options, int& exitStatus);

}  // namespace servicemanager

#endif
