// SPDX-License-Identifier: Apache-2.0
#include "socket/StallMonitor.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

#include "support/Log.h"

namespace android::transport {

namespace {

constexpr long kTickNanoseconds = 2000000;
// The timer goes on for a while after the last call, so that a call now and then need not set it.
constexpr int kMaxIdleLooks = 5;
// After so many looks at a thread in one sleep the limit of its socket is looked at as well; after
// so many more, whether it does sleep: on a slow machine it may take any time to run again.
constexpr int kLooksUntilSuspicion = 50;
constexpr int kLooksUntilProof = 2500;
// The limit is 5 ms, which the kernel rounds up to its own tick.
constexpr suseconds_t kLongestStay = 50000;

bool limitsStay(const Fd& socket) {
    timeval stay = {};
    socklen_t size = sizeof(stay);
    return getsockopt(socket.get(), SOL_SOCKET, SO_RCVTIMEO, &stay, &size) != 0 ||
           (stay.tv_sec == 0 && stay.tv_usec != 0 && stay.tv_usec <= kLongestStay);
}

// By the kernel's word: who only waits for a processor does not sleep.
bool isAsleep(pid_t thread) {
    const std::string path = "/proc/self/task/" + std::to_string(thread) + "/stat";
    const Fd file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
    char text[256];
    const ssize_t got = read(file.get(), text, sizeof(text));
    const std::string_view status(text, got > 0 ? static_cast<size_t>(got) : 0);
    const size_t name = status.rfind(')');
    return name != std::string_view::npos && status.substr(name, 3) == ") S";
}

void cutOff(const Fd& socket) {
    logLimited("process %d has taken the limit of time off a connection: it is closed",
               static_cast<int>(peerPid(socket)));
    (void)shutdown(socket.get(), SHUT_RDWR);
}

}  // namespace

StallMonitor::StallMonitor() : EventHandler(Fd()) {}

bool StallMonitor::enter(const std::shared_ptr<CallChannel>& end,
                         const std::atomic<uint32_t>& sleeps) {
    Mutex::Autolock held(mLock);
    mWatched.push_back({end, 0, &sleeps, 0, 0, gettid()});
    mIdleLooks = 0;
    if (!mTicking) {
        setTimer(true);
    }
    return mTicking;
}

void StallMonitor::leave(const std::atomic<uint32_t>& sleeps) {
    std::shared_ptr<CallChannel> last;  // destroyed outside of the lock
    Mutex::Autolock held(mLock);
    const auto found =
        std::find_if(mWatched.begin(), mWatched.end(),
                     [&sleeps](const Watched& one) { return one.sleeps == &sleeps; });
    last = std::exchange(found->end, nullptr);
    *found = std::move(mWatched.back());
    mWatched.pop_back();
}

void StallMonitor::onReady() {
    uint64_t ticks = 0;
    (void)read(mTimer.get(), &ticks, sizeof(ticks));  // how many does not matter
    {
        Mutex::Autolock held(mLock);
        look();
    }
    reactor().rearm(*this);
}

void StallMonitor::look() {
    mIdleLooks = mWatched.empty() ? mIdleLooks + 1 : 0;
    if (mIdleLooks > kMaxIdleLooks) {
        setTimer(false);
    }
    for (Watched& one : mWatched) {
        lookAt(one);
    }
}

void StallMonitor::lookAt(Watched& one) {
    const uint32_t now = one.end->progress();
    if ((now & 1U) != 0 && now == one.seen && one.end->lend(now)) {
        reactor().rearm(*one.end);
    }
    one.seen = now;
    lookAtSleep(one);
}

void StallMonitor::lookAtSleep(Watched& one) {
    const uint32_t sleep = one.sleeps->load(std::memory_order_relaxed);
    one.asleepLooks = (sleep & 1U) != 0 && sleep == one.seenSleep ? one.asleepLooks + 1 : 0;
    one.seenSleep = sleep;
    const Fd& socket = one.end->socket();
    if ((one.asleepLooks == kLooksUntilSuspicion && !limitsStay(socket)) ||
        (one.asleepLooks == kLooksUntilProof && isAsleep(one.thread))) {
        cutOff(socket);
    }
}

bool StallMonitor::hasTimer() {
    if (!mTimer.valid()) {
        mTimer = Fd(timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK));
        if (mTimer.valid() && !reactor().add(shared_from_this(), mTimer)) {
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

StallMonitor& stallMonitor() {
    static const auto* const instance =
        new std::shared_ptr<StallMonitor>(std::make_shared<StallMonitor>());
    return **instance;
}

}  // namespace android::transport
