// SPDX-License-Identifier: Apache-2.0
#include "support/Overtaking.h"

#include <random>

#include "support/Manners.h"

namespace android::transport {

namespace {

bool isAfter(uint32_t number, uint32_t other) {
    return static_cast<int32_t>(number - other) > 0;  // they may have gone round
}

}  // namespace

bool isToBeOvertaken(uint32_t seed, uint32_t number, uint32_t code) {
    std::seed_seq mixed{seed, number, code};
    std::mt19937 generator(mixed);  // gives the same numbers wherever there is a standard library
    return (generator() & 1U) != 0;
}

Overtaking::Arrival Overtaking::arrive() {
    Mutex::Autolock held(mLock);
    return {++mArrived, std::chrono::steady_clock::now()};
}

void Overtaking::holdBack(const Arrival& arrival, uint32_t code) {
    if (!isToBeOvertaken(gManners.seed, arrival.number, code)) {
        return;
    }
    const auto limit = arrival.time + kLongest;
    Mutex::Autolock held(mLock);
    while (isAfter(arrival.number, mOvertaken) &&
           mChanged.wait_until(mLock, limit) == std::cv_status::no_timeout) {
    }
}

uint32_t Overtaking::arrived() {
    Mutex::Autolock held(mLock);
    return mArrived;
}

void Overtaking::overtake(uint32_t arrived) {
    Mutex::Autolock held(mLock);
    if (isAfter(arrived, mOvertaken)) {
        mOvertaken = arrived;
        mChanged.notify_all();
    }
}

}  // namespace android::transport
