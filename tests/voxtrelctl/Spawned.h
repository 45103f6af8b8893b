// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_VOXTRELCTL_SPAWNED_H
#define VOXTREL_TESTS_VOXTRELCTL_SPAWNED_H

#include <sys/types.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/support/ChildProcess.h"
#include "tests/support/TempFolder.h"

namespace voxtrel_test {

/// A user's home in a folder of its own where nothing runs; sound goes nowhere. What voxtrelctl
/// starts there is ended with it.
class EmptyHome {
public:
    EmptyHome();
    ~EmptyHome();
    EmptyHome(const EmptyHome&) = delete;
    EmptyHome& operator=(const EmptyHome&) = delete;

    /// Starts voxtrelctl with `--spawn` in front of these.
    static std::unique_ptr<ChildProcess> spawn(const ChildProcess::Words& words);

    /// Process ids of the programs of that name that this home's voxtrelctl has started.
    std::vector<pid_t> running(const std::string& program) const;

    std::string path(const std::string& entry) const { return mFolder.path(entry); }
    std::string logOf(const std::string& program) const {
        return readFile(path("state/voxtrel/" + program + ".log"));
    }

private:
    const TempFolder mFolder;
};

/// The words of a process's command line.
std::vector<std::string> commandLineOf(pid_t pid);

}  // namespace voxtrel_test

#endif
