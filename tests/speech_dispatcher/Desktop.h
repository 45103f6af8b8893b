// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SPEECH_DISPATCHER_DESKTOP_H
#define VOXTREL_TESTS_SPEECH_DISPATCHER_DESKTOP_H

#include <memory>
#include <string>

#include "tests/voxtrelctl/Device.h"

namespace voxtrel_test {

/// A device and, in the same folder, speech-dispatcher with the module under test alone. One in a
/// process, as a device is.
class Desktop {
public:
    /// @param options of the service.
    /// @param timeout how many milliseconds the module waits for a service; on a busy machine one
    /// that is there may take a while to answer.
    /// @param asInstalled the configuration is the one that comes with the server, and the line
    /// that enables the module, which the server finds by itself.
    explicit Desktop(const Device::Words& options = {}, unsigned timeout = 60000,
                     bool asInstalled = false);

    /// Runs spd-say to its end.
    Outcome say(const ChildProcess::Words& arguments);

    /// Starts spd-say.
    std::unique_ptr<ChildProcess> start(const ChildProcess::Words& arguments);

    /// Waits until that much of the sound is in the service's file.
    bool awaitSound(double seconds);

    /// Where the server listens.
    std::string socketPath() const { return device.path("speechd"); }

    Device device;

private:
    void writeConfig(unsigned timeout, bool asInstalled);

    std::unique_ptr<ChildProcess> mServer;
};

}  // namespace voxtrel_test

#endif
