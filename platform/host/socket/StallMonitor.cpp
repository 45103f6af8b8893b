// SPDX-License-Identifier: Apache-2.0
#include "socket/StallMonitor.h"

#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

#include "socket/Syscalls.h"

namespace android::transport {

namespace {

constexpr long kTickNanoseconds = 2000000;
// The timer goes on for a while after the last call: setting it costs a system call.
constexpr int kMaxIdleLooks = 5;

}  // namespace

StallMonitor::StallMonitor(Reactor& reactor) : EventHandler(Fd()), mReactor(reactor) {}

bool StallMonitor::enter(const std::shared_ptr<EventHandler>& channel, CallProgress& progress) {
    Mutex::Autolock held(mLock);
    mWatched.push_back({channel, &progress, 0});
    mIdleLooks = 0;
    if (!mTicking) {
        setTimer(true);
    }
    return mTicking;
}

void StallMonitor::leave(const CallProgress& progress) {
    // Several threads may be in calls of one channel; which of them leaves does not matter.
    Mutex::Autolock held(mLock);
    const auto found =
        std::find_if(mWatched.begin(), mWatched.end(),
                     [&progress](const Watched& one) { return one.progress == &progress; });
    std::swap(*found, mWatched.back());
    mWatched.pop_back();
}

void StallMonitor::onReady() {
    uint64_t ticks = 0;
    (void)!read(mTimer.get(), &ticks, sizeof(ticks));  // how many does not matter
    {
        Mutex::Autolock held(mLock);
        look();
    }
    mReactor.rearm(*this);
}

void StallMonitor::look() {
    mIdleLooks = mWatched.empty() ? mIdleLooks + 1 : 0;
    if (mIdleLooks > kMaxIdleLooks) {
        setTimer(false);
    }
    for (Watched& one : mWatched) {
        const uint32_t now = one.progress->mNumber.load(std::memory_order_relaxed);
        // As finished: the thread that began it finds out, and the one that takes over counts on.
        if ((now & 1U) != 0 && now == one.seen && one.progress->finish(now)) {
            mReactor.rearm(*one.channel);
        }
        one.seen = now;
    }
}

bool StallMonitor::hasTimer() {
    if (!mTimer.valid()) {
        mTimer = Fd(sys::makeTimer());
        if (mTimer.valid() && !mReactor.add(shared_from_this(), mTimer)) {
            mTimer.reset();
        }
    }
    return mTimer.valid();
}

void StallMonitor::setTimer(bool on) {
    if (!hasTimer()) {
        return;
    }
    itimerspec when = {};
    when.it_value.tv_nsec = on ? kTickNanoseconds : 0;
    when.it_interval.tv_nsec = when.it_value.tv_nsec;
    mTicking = timerfd_settime(mTimer.get(), 0, &when, nullptr) == 0 && on;
}

}  // namespace android::transport
