// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_VOXTRELCTL_DEVICE_H
#define VOXTREL_TESTS_VOXTRELCTL_DEVICE_H

#include <memory>
#include <string>

#include "tests/support/ChildProcess.h"
#include "tests/voxtrel_process/Machine.h"

namespace voxtrel_test {

/// A machine with the command line.
class Device {
public:
    using Words = ChildProcess::Words;

    /// With a service manager, which is given these options, and no service.
    explicit Device(const Words& managerOptions = {});

    /// Starts the service with its profile in the folder, and returns when it has loaded its
    /// voices. Without a sink among the options it writes wavPath().
    void startService(const Words& options = {});

    /// Starts another program that is a service, and returns when it has registered.
    void startOther(const Words& words) { mMachine.startOther(words); }

    /// Ends it in order, so that its files are whole.
    void stopService();

    void killService();
    void killServiceManager();

    /// Runs voxtrelctl to its end.
    Outcome ctl(const Words& arguments, const std::string& input = "");

    /// Starts voxtrelctl.
    std::unique_ptr<ChildProcess> start(const Words& arguments);

    std::string path(const std::string& entry) const { return mMachine.path(entry); }
    std::string wavPath() const { return path("speech.wav"); }
    ChildProcess& service() { return mMachine.latestService(); }
    pid_t servicePid() const { return mMachine.latestService().pid(); }
    pid_t managerPid() const { return mMachine.manager().pid(); }

    /// The program under test.
    static std::string control();

private:
    Machine mMachine;
};

/// The last line of what a command says on standard error: how it has ended. Before that, one that
/// a slow machine keeps waiting says what for.
std::string lastLine(const std::string& text);

/// "say", "x" as the value that the service now has for a setting; fails the test on an error.
std::string settingOf(Device& device, const std::string& name);

}  // namespace voxtrel_test

#endif
