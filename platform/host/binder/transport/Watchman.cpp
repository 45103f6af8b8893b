// SPDX-License-Identifier: Apache-2.0
#include "binder/transport/Watchman.h"

#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

namespace android::transport {

namespace {

constexpr long kTickNanoseconds = 2000000;
// The timer goes on for a while after the last call, so that a call now and then need not set it.
constexpr int kMostIdleLooks = 5;

}  // namespace

Watchman::Watchman() : Source(Fd()) {}

bool Watchman::enter(const std::shared_ptr<CallEnd>& end) {
    Mutex::Autolock held(mLock);
    mWatched.push_back({end, 0});
    mIdleLooks = 0;
    if (!mTicking) {
        setTimer(true);
    }
    return mTicking;
}

void Watchman::leave(const CallEnd& end) {
    std::shared_ptr<CallEnd> last;  // destroyed outside of the lock
    Mutex::Autolock held(mLock);
    const auto found = std::find_if(mWatched.begin(), mWatched.end(),
                                    [&end](const Watched& one) { return one.end.get() == &end; });
    last = std::exchange(found->end, nullptr);
    *found = std::move(mWatched.back());
    mWatched.pop_back();
}

void Watchman::onReady() {
    uint64_t ticks = 0;
    (void)read(mTimer.get(), &ticks, sizeof(ticks));  // how many does not matter
    {
        Mutex::Autolock held(mLock);
        look();
    }
    reactor().rearm(*this);
}

void Watchman::look() {
    mIdleLooks = mWatched.empty() ? mIdleLooks + 1 : 0;
    if (mIdleLooks > kMostIdleLooks) {
        setTimer(false);
    }
    for (Watched& one : mWatched) {
        const uint32_t now = one.end->progress();
        if ((now & 1U) != 0 && now == one.seen && one.end->lend(now)) {
            reactor().rearm(*one.end);
        }
        one.seen = now;
    }
}

bool Watchman::hasTimer() {
    if (!mTimer.valid()) {
        mTimer = Fd(timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK));
        if (mTimer.valid() && !reactor().add(shared_from_this(), mTimer)) {
            mTimer.reset();
        }
    }
    return mTimer.valid();
}

void Watchman::setTimer(bool on) {
    if (!hasTimer()) {
        return;
    }
    itimerspec when = {};
    when.it_value.tv_nsec = on ? kTickNanoseconds : 0;
    when.it_interval.tv_nsec = when.it_value.tv_nsec;
    mTicking = timerfd_settime(mTimer.get(), 0, &when, nullptr) == 0 && on;
}

Watchman& watchman() {
    static const auto* const instance = new std::shared_ptr<Watchman>(std::make_shared<Watchman>());
    return **instance;
}

}  // namespace android::transport
