// SPDX-License-Identifier: Apache-2.0
#include "service/PacedSink.h"

#include <algorithm>
#include <thread>

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
    constexpr size_t kSlicesPerSecond = 200;
    const size_t slice = std::max<size_t>(mRate / kSlicesPerSecond, 1);
    for (size_t done = 0; done < count && !cancel; done += slice) {
        const size_t size = std::min(slice, count - done);
        if (!mInner->write(samples + done, size, cancel)) {
            return false;
        }
        mHeardAt += std::chrono::nanoseconds(size * 1'000'000'000ULL / mRate);
        std::this_thread::sleep_until(mHeardAt);
    }
    return true;
}

bool PacedSink::end(const Cancel& cancel) {
    return mInner->end(cancel);
}

}  // namespace voxtreld
