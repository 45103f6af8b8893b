// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_PLATFORM_CHECK_PROCESS_H
#define VOXTREL_PLATFORM_CHECK_PROCESS_H

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

namespace check {

using Deadline = std::chrono::steady_clock::time_point;

/// This program once more, with arguments of its own. It is killed at the end, with all that it has
/// started, unless it has left. Called on: one thread.
class Process {
public:
    /// Its standard input closes when this object goes. `isQuiet`: its standard error is dropped.
    Process(const std::vector<std::string>& arguments, bool isQuiet);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    /// The next line of its standard output, without the line's end; false when none comes in time.
    bool readLine(std::string& line, Deadline deadline);
    void kill();
    /// Waits for its end: its exit status, or minus the signal that ended it; false when it has not
    /// ended in time.
    bool waitForEnd(int& status, Deadline deadline);

private:
    pid_t mPid = -1;
    int mInput = -1;
    int mOutput = -1;
    std::string mUnread;
};

}  // namespace check

#endif
