// SPDX-License-Identifier: Apache-2.0
#include "binder/transport/Watchman.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <utility>

#include "binder/transport/Log.h"

namespace android::transport {

namespace {

constexpr long kTickNanoseconds = 2000000;
// The timer goes on for a while after the last call, so that a call now and then need not set it.
constexpr int kMostIdleLooks = 5;
// After so many looks at a socket that has received nothing its limit of time is looked at as well.
// Only that limit decides: on a slow machine a thread may take any time to wake.
constexpr int kLooksUntilSuspicion = 50;
// The limit is 5 ms, which the kernel rounds up to its own tick.
constexpr suseconds_t kLongestStay = 50000;

bool limitsStay(const Fd& socket) {
    timeval stay = {};
    socklen_t size = sizeof(stay);
    return getsockopt(socket.get(), SOL_SOCKET, SO_RCVTIMEO, &stay, &size) != 0 ||
           (stay.tv_sec == 0 && stay.tv_usec != 0 && stay.tv_usec <= kLongestStay);
}

}  // namespace

Watchman::Watchman() : Source(Fd()) {}

bool Watchman::enter(const std::shared_ptr<CallEnd>& end) {
    Mutex::Autolock held(mLock);
    mWatched.push_back({end, 0, 0});
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
        lookAt(one);
    }
}

void Watchman::lookAt(Watched& one) {
    const uint32_t now = one.end->progress();
    const bool isServed = (now & 1U) != 0;
    if (isServed && now == one.seen && one.end->lend(now)) {
        reactor().rearm(*one.end);
    }
    one.idleLooks = !isServed && now == one.seen ? one.idleLooks + 1 : 0;
    one.seen = now;
    if (one.idleLooks == kLooksUntilSuspicion) {
        one.idleLooks = 0;
        if (!limitsStay(one.end->socket())) {
            logLimited("process %d has taken the limit of time off a connection: it is closed",
                       static_cast<int>(peerPid(one.end->socket())));
            (void)shutdown(one.end->socket().get(), SHUT_RDWR);
        }
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
