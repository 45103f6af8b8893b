// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SOAK_PLAN_H
#define VOXTREL_TESTS_SOAK_PLAN_H

#include <chrono>
#include <functional>
#include <map>

namespace soak {

/// What is to be done at which time.
class Plan {
public:
    using Clock = std::chrono::steady_clock;
    using Act = std::function<void()>;

    void add(Clock::time_point when, Act act) { mActs.emplace(when, std::move(act)); }

    /// `Clock::time_point::max()` for never.
    Clock::time_point next() const {
        return mActs.empty() ? Clock::time_point::max() : mActs.begin()->first;
    }

    /// Does what is due by then, in its order.
    void doUntil(Clock::time_point when) {
        while (next() <= when && !mActs.empty()) {
            const Act act = std::move(mActs.begin()->second);
            mActs.erase(mActs.begin());
            act();
        }
    }

private:
    std::multimap<Clock::time_point, Act> mActs;
};

}  // namespace soak

#endif
