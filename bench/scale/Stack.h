// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BENCH_SCALE_STACK_H
#define VOXTREL_BENCH_SCALE_STACK_H

#include <memory>
#include <string>

#include "bench/scale/Board.h"
#include "bench/scale/Process.h"

namespace bench {

/// A service manager, a service, a client that is measured, and a crowd of others.
class Stack {
public:
    /// `name` is one that no other stack in the folder has.
    Stack(const std::string& folder, const std::string& name);

    Board& board() { return mBoard; }
    Process& manager() { return *mManager; }
    Process& service() { return *mService; }
    Process& client() { return *mClient; }
    Crowd& crowd() { return mCrowd; }

    /// Lets the crowd grow to so many. `kind`: of a client's, "crowd", "idle" or "woken".
    void gather(size_t members, const char* kind = "crowd");
    /// Each of the crowd has its turn: microseconds until the last has had its text spoken, or has
    /// run.
    double everybodysTurn();
    void killCrowd();

private:
    const std::string mPlace;
    const int mDescriptor;
    Board& mBoard;
    std::unique_ptr<Process> mManager;
    std::unique_ptr<Process> mService;
    std::unique_ptr<Process> mClient;
    Crowd mCrowd;
};

}  // namespace bench

#endif
