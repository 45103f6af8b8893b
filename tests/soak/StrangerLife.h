// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SOAK_STRANGERLIFE_H
#define VOXTREL_TESTS_SOAK_STRANGERLIFE_H

#include <random>
#include <string>
#include <vector>

#include "tests/soak/Ledger.h"

namespace soak {

/// What a process does that connects to the service manager and does not speak its language:
/// packets of any bytes, some of them in a few connections that it keeps. Orders are those of
/// ClientLife.
class StrangerLife {
public:
    StrangerLife(const std::string& ledger, unsigned seed);

    /// @return the exit status of the process.
    int live();

private:
    void act();
    void sendTo(int connection);
    std::string anyBytes();
    unsigned upTo(unsigned most);

    Ledger mLedger;
    std::mt19937 mRandom;
    std::vector<int> mConnections;
    bool mWasHeard = false;  ///< a packet was taken
};

}  // namespace soak

#endif
