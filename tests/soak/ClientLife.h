// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SOAK_CLIENTLIFE_H
#define VOXTREL_TESTS_SOAK_CLIENTLIFE_H

#include <string>

#include "tests/soak/Actor.h"

namespace soak {

/// What a process with clients does until it is ended. Each line on standard input is an order, and
/// is answered by the same line: "calm", to be silent until no utterance is open, "go" on, and
/// "end".
class ClientLife {
public:
    ClientLife(const std::string& ledger, unsigned seed, const NewSpeaker& newSpeaker);

    /// @return the exit status of the process.
    int live();

private:
    bool obey(const std::string& order);
    bool becomeCalm();

    Ledger mLedger;
    Heartbeat mHeartbeat;
    Stage mStage;
    Actor mActors[2];  ///< the clients of a process share a session
};

}  // namespace soak

#endif
