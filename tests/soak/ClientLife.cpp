// SPDX-License-Identifier: Apache-2.0
#include "tests/soak/ClientLife.h"

#include <malloc.h>

#include <iostream>
#include <thread>
#include <vector>

namespace soak {

ClientLife::ClientLife(const std::string& ledger, unsigned seed, const NewSpeaker& newSpeaker)
    : mLedger(ledger),
      mStage{mLedger, mHeartbeat, newSpeaker},
      mActors{{mStage, true, seed}, {mStage, false, seed + 1}} {}

int ClientLife::live() {
    std::vector<std::thread> threads;
    for (Actor& actor : mActors) {
        threads.emplace_back([&actor] { actor.act(); });
    }
    bool isObedient = true;
    for (std::string order; isObedient && std::getline(std::cin, order) && order != "end";) {
        isObedient = obey(order);
    }
    for (Actor& actor : mActors) {
        actor.end();
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    mLedger.left();
    std::cout << "end" << std::endl;
    return isObedient ? 0 : 1;
}

bool ClientLife::obey(const std::string& order) {
    if (order == "calm" && !becomeCalm()) {
        std::cout << "an utterance has no outcome" << std::endl;
        return false;
    }
    if (order == "calm") {
        malloc_trim(0);  // what the allocator keeps for later is not held
    }
    for (Actor& actor : mActors) {
        if (order == "go") {
            actor.proceed();
        }
    }
    std::cout << order << std::endl;
    return true;
}

bool ClientLife::becomeCalm() {
    bool isCalm = true;
    for (Actor& actor : mActors) {
        isCalm = actor.becomeCalm() && isCalm;
    }
    return isCalm;
}

}  // namespace soak
