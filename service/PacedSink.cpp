// SPDX-License-Identifier: Apache-2.0
#include "service/PacedSink.h"

namespace voxtreld {

using std::chrono::steady_clock;

bool PacedSink::open(unsigned rate, std::string& error) {
    mRate = rate;
    return mInner->open(rate, error);
}

bool PacedSink::begin(uint32_t pid, uint32_t id) {
    mHeardAt = steady_clock::now();
    return mInner->begin(pid, id);
}

bool PacedSink::write(const int16_t* samples, size_t count, const Cancel& cancel) {
    if (cancel.sleepUntil(mHeardAt)) {
        return true;
    }
    mHeardAt += std::chrono::nanoseconds(count * 1'000'000'000ULL / mRate);
    return mInner->write(samples, count, cancel);
}

bool PacedSink::end(const Cancel& cancel) {
    (void)cancel.sleepUntil(mHeardAt);
    return mInner->end(cancel);
}

}  // namespace voxtreld
