// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SERVICE_PROCESSES_H
#define VOXTREL_TESTS_SERVICE_PROCESSES_H

#include <memory>
#include <string>

#include "tests/support/ChildProcess.h"

namespace voxtreld {

using voxtrel_test::ChildProcess;
using Lines = ChildProcess::Lines;
using Process = std::unique_ptr<ChildProcess>;

constexpr auto kWithOutput = ChildProcess::Errors::WithOutput;

/// Starts a program whose output and errors are read as one.
inline Process startProcess(const Lines& command) {
    return std::make_unique<ChildProcess>(command, kWithOutput);
}

/// A service manager that is ready.
inline Process startManager() {
    Process manager = startProcess({VOXTREL_SERVICE_MANAGER});
    manager->readUntil("voxtrel-servicemanager: ready");
    return manager;
}

/// A client that has connected.
inline Process startClient() {
    Process client = startProcess({VOXTREL_SPEECH_CLIENT});
    client->say("connect");
    client->readUntil("connect 0");
    return client;
}

}  // namespace voxtreld

#endif
