// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_DAEMON_H
#define VOXTREL_TOOLS_DAEMON_H

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace voxtrelctl {

/// A program that goes on after this one: a session of its own, no terminal, no descriptor of ours,
/// and its output in the user's state folder, "voxtrel/NAME.log".
/// Called on: the main thread. Locks: none.
class Daemon {
public:
    /// Starts the program of that name, beside this one or else in $PATH. Throws Failure(-8) when
    /// it is in neither or cannot be started, or when its log cannot be written.
    Daemon(const std::string& name, const std::vector<std::string>& options);

    /// True once it has ended.
    bool hasEnded();

    /// "NAME has ended: LINE", with the last line that it logged, or with its exit status.
    std::string howItEnded() const;

    pid_t pid() const { return mPid; }
    const std::string& logPath() const { return mLogPath; }

private:
    const std::string mName;
    const std::string mLogPath;
    std::streamoff mLogBegin = 0;  ///< what others have left in the log before
    pid_t mPid = -1;
    std::optional<int> mStatus;  ///< as from waitpid
};

}  // namespace voxtrelctl

#endif
