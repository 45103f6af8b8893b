// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SUPPORT_OVERTAKING_H
#define VOXTREL_SUPPORT_OVERTAKING_H

#include <chrono>
#include <condition_variable>
#include <cstdint>

#include "utils/Mutex.h"

namespace android::transport {

/// Lets two-way calls overtake one-way calls that their caller made before, as the kernel's driver
/// may. Each reference that another process holds has one, in the manners of a driver: about half
/// of its one-way calls are held back until a two-way call through it has been carried out, or
/// `kLongest` has passed since they arrived. Those behind one that is held back wait with it, so
/// that one-way calls never overtake each other. Called on: any thread.
class Overtaking {
public:
    static constexpr std::chrono::milliseconds kLongest{20};

    /// One one-way call, by its place among those of its reference.
    struct Arrival {
        uint32_t number = 0;  ///< from 1
        std::chrono::steady_clock::time_point time{};
    };
    Arrival arrive() PLATFORM_EXCLUDES(mLock);

    /// Waits until the call may be carried out; another thread has to receive what overtakes it.
    void holdBack(const Arrival& arrival, uint32_t code) PLATFORM_EXCLUDES(mLock);

    /// How many have arrived so far.
    uint32_t arrived() PLATFORM_EXCLUDES(mLock);
    /// A two-way call has been carried out that came behind so many: they are held back no longer.
    void overtake(uint32_t arrived) PLATFORM_EXCLUDES(mLock);

private:
    Mutex mLock;
    std::condition_variable_any mChanged;
    uint32_t mArrived PLATFORM_GUARDED_BY(mLock) = 0;
    uint32_t mOvertaken PLATFORM_GUARDED_BY(mLock) = 0;
};

/// Does the seed name this call? It names about every other one, the same on each machine.
bool isToBeOvertaken(uint32_t seed, uint32_t number, uint32_t code);

}  // namespace android::transport

#endif
