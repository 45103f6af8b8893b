// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BENCH_SCALE_PROCESS_H
#define VOXTREL_BENCH_SCALE_PROCESS_H

#include <sys/types.h>

#include <cstdio>
#include <string>
#include <vector>

namespace bench {

using Words = std::vector<std::string>;

/// A program that reads lines from us and answers each with one; killed at the end.
class Process {
public:
    explicit Process(const Words& command);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    pid_t pid() const { return mPid; }
    /// The next line; ends the benchmark where there is none.
    std::string hear();
    /// Sends a line, and takes the numbers of the answer.
    std::vector<double> ask(const std::string& line);

private:
    pid_t mPid = -1;
    std::FILE* mIn = nullptr;
    std::FILE* mOut = nullptr;
};

/// Processes of one program that are killed at once.
class Crowd {
public:
    Crowd() = default;
    ~Crowd();
    Crowd(const Crowd&) = delete;
    Crowd& operator=(const Crowd&) = delete;

    size_t size() const { return mMembers.size(); }
    void add(const Words& command);
    /// Returns at once. @return a descriptor that hangs up when the kernel has closed those of all.
    int kill();
    /// Until the kernel has cleared all of them away.
    void bury();

private:
    std::vector<pid_t> mMembers;
    pid_t mGroup = 0;
    int mAlive = -1;  ///< read end of a pipe that every member holds open
    int mHeld = -1;   ///< its write end
};

}  // namespace bench

#endif
