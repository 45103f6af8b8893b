// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_VOXTREL_PROCESS_MACHINE_H
#define VOXTREL_TESTS_VOXTREL_PROCESS_MACHINE_H

#include <memory>
#include <string>

#include "tests/support/ChildProcess.h"
#include "tests/support/TempFolder.h"

namespace voxtrel_test {

/// A service manager and a service, as processes of their own in a folder of their own, which this
/// process and those that it starts find. One in a process. Nothing waits until they are ready.
class Machine {
public:
    using Words = ChildProcess::Words;

    /// With a service manager, which is given these options, and no service.
    explicit Machine(Words managerOptions = {});
    ~Machine();
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;

    void startManager();
    void stopManager();
    void continueManager();
    void killManager();

    /// Starts voxtreld. Without a sink among the options it makes no sound.
    void startService(const Words& options = {});

    /// Starts another program that is a service, and returns when it has registered. The one before
    /// goes on.
    void startOther(const Words& words);

    ChildProcess& manager() const { return *mManager; }

    /// The service that was started last.
    ChildProcess& latestService() const { return *mLatest; }

    void shutDownService();
    void killService();

    /// The service does nothing until it is continued.
    void stopService();
    void continueService();

    std::string path(const std::string& entry) const { return mFolder.path(entry); }

    /// How many utterances a service with the sink `wavdir:` + `path("spoken")` has spoken.
    std::size_t spokenFiles() const;

private:
    const TempFolder mFolder;
    const Words mManagerOptions;
    std::unique_ptr<ChildProcess> mManager;
    std::unique_ptr<ChildProcess> mService;
    std::unique_ptr<ChildProcess> mOther;
    ChildProcess* mLatest = nullptr;
};

}  // namespace voxtrel_test

#endif
