// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SOAK_TOOLRUN_H
#define VOXTREL_TESTS_SOAK_TOOLRUN_H

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

namespace soak {

/// A command that is run once, with its output and errors in a file.
///
/// Called on: the main thread, at whose end the command's process is killed.
class ToolRun {
public:
    using Milliseconds = std::chrono::milliseconds;

    /// @throws std::runtime_error when it cannot be started.
    ToolRun(const std::vector<std::string>& words, const std::string& output);
    ~ToolRun();
    ToolRun(const ToolRun&) = delete;
    ToolRun& operator=(const ToolRun&) = delete;

    /// False when it is still there after that time.
    bool waitFor(Milliseconds longest);
    void signal(int number) const;

    /// Of one that has ended: its exit status, or 128 and the number of the signal that ended it.
    int status() const { return mStatus; }

private:
    pid_t mProcess = -1;
    int mEnd = -1;  ///< can be read once it has ended
    int mStatus = -1;
};

}  // namespace soak

#endif
