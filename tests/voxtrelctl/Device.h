// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_VOXTRELCTL_DEVICE_H
#define VOXTREL_TESTS_VOXTRELCTL_DEVICE_H

#include <memory>
#include <string>

#include "tests/support/ChildProcess.h"
#include "tests/support/TempFolder.h"

namespace voxtrel_test {

/// A device in a folder of its own: a service manager, a service, and the command line. One in a
/// process: where the service manager listens is in the environment.
class Device {
public:
    using Words = ChildProcess::Words;

    /// With a service manager, which is given these options, and no service.
    explicit Device(const Words& managerOptions = {});
    ~Device();
    Device(const Device&) = delete;
    Device& operator=(const Device&) = delete;

    /// Starts the service with its profile in the folder, and returns when it has loaded its
    /// voices. Without a sink among the options it writes wavPath().
    void startService(const Words& options = {});

    /// Starts another program that is a service, and returns when it has registered.
    void startOther(const Words& words);

    /// Ends it in order, so that its files are whole.
    void stopService();

    void killService();
    void killServiceManager();

    /// Runs voxtrelctl to its end.
    Outcome ctl(const Words& arguments, const std::string& input = "");

    /// Starts voxtrelctl.
    std::unique_ptr<ChildProcess> start(const Words& arguments);

    std::string path(const std::string& entry) const { return mFolder.path(entry); }
    std::string wavPath() const { return path("speech.wav"); }
    ChildProcess& service() { return *mService; }
    pid_t servicePid() const { return mService->pid(); }
    pid_t managerPid() const { return mManager->pid(); }

    /// The program under test.
    static std::string control();

private:
    const TempFolder mFolder;
    std::unique_ptr<ChildProcess> mManager;
    std::unique_ptr<ChildProcess> mService;
};

/// "say", "x" as the value that the service now has for a setting; fails the test on an error.
std::string settingOf(Device& device, const std::string& name);

}  // namespace voxtrel_test

#endif
