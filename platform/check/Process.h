// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_PLATFORM_CHECK_PROCESS_H
#define VOXTREL_PLATFORM_CHECK_PROCESS_H

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

namespace check {

using Deadline = std::chrono::steady_clock::time_point;

/// How long what should happen at once may take on a busy device.
constexpr std::chrono::seconds kSoon{5};

Deadline soon();

/// A child process that runs this program with other arguments. It is killed when this object goes,
/// and with it the processes that it has started. Called on: one thread.
class Process {
public:
    /// Exit status of a child process in which the program could not be run. Not 127, with which
    /// the dynamic loader ends a program when its library lacks a function.
    static constexpr int kNotRun = 126;

    /// Throws CannotCheck. Appends the number of the descriptor for its reports (Report.h) to the
    /// arguments. Its standard input closes when this object goes; its standard output goes where
    /// its standard error does. `isQuiet`: both are discarded.
    Process(const std::vector<std::string>& arguments, bool isQuiet);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    /// The next line that it reports, without the line's end; false when none comes in time.
    bool readLine(std::string& line, Deadline deadline);
    void kill();
    /// Waits for its end: its exit status, or minus the signal that ended it; false when it has not
    /// ended in time.
    bool waitForEnd(int& status, Deadline deadline);

private:
    pid_t mPid = -1;
    int mInput = -1;
    int mReport = -1;
    std::string mUnread;
};

}  // namespace check

#endif
