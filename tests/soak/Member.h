// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SOAK_MEMBER_H
#define VOXTREL_TESTS_SOAK_MEMBER_H

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/ChildProcess.h"

namespace soak {

/// One of the processes of a soak, in one life after the other.
class Member {
public:
    using Words = std::vector<std::string>;

    /// @param command of a life, counted from 1.
    Member(std::string name, std::function<Words(unsigned life)> command);

    const std::string& name() const { return mName; }
    bool isAlive() const { return mProcess != nullptr; }
    bool isStopped() const { return mIsStopped; }

    /// SIGTERM does not just kill it: it has come so far as to wait for the signal.
    bool canBeEnded() const;
    pid_t pid() const { return isAlive() ? mProcess->pid() : -1; }

    void start();
    void kill();
    void stop();
    void proceed();

    /// Waits until it has ended by itself, after `signal` or an order.
    void awaitEnd(int signal = 0);

    /// True if it has left, with status 1 as a service without a service manager does. Then it is
    /// not alive any more.
    bool hasLeft();

    /// A line to it, and its answer; empty for none.
    bool say(const std::string& line);
    std::string answer() { return mProcess->readLine(); }

    /// What happened to it that nobody did.
    const std::vector<std::string>& findings() const { return mFindings; }

    struct Counts {
        unsigned kills = 0;
        unsigned stops = 0;
        unsigned ends = 0;
        unsigned leaves = 0;
    };
    const Counts& counts() const { return mCounts; }

private:
    void expectStatus(int expected);

    const std::string mName;
    const std::function<Words(unsigned)> mCommand;
    std::unique_ptr<voxtrel_test::ChildProcess> mProcess;
    unsigned mLife = 0;
    bool mIsStopped = false;
    Counts mCounts;
    std::vector<std::string> mFindings;
};

}  // namespace soak

#endif
