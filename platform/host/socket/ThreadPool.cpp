// SPDX-License-Identifier: Apache-2.0
#include "socket/ThreadPool.h"

#include <pthread.h>

#include <algorithm>
#include <system_error>
#include <thread>

#include "socket/Reactor.h"
#include "support/Log.h"

namespace android::transport {

namespace {

// Calls that go back and forth without end are stopped here, not by the machine's memory.
constexpr int kMostEver = 256;

thread_local bool gServes = false;

}  // namespace

void ThreadPool::start() {
    if (!mStarted.exchange(true)) {
        (void)grow();  // it says why not, and tries again with the first call
    }
}

void ThreadPool::setMost(size_t count) {
    mMost = static_cast<int>(std::clamp<size_t>(count, 1, kMostEver));
}

bool ThreadPool::grow() {
    uint32_t bits = mCrew.load();
    do {
        const Crew crew(bits);
        if (!mStarted || crew.free() >= mMost.load()) {
            return true;
        }
        if (crew.spawned >= kMostEver) {
            return false;
        }
    } while (!mCrew.compare_exchange_weak(bits, bits + kOneSpawned));
    try {
        std::thread([this] { run(); }).detach();
        return true;
    } catch (const std::system_error& error) {
        mCrew.fetch_sub(kOneSpawned);
        logLimited("cannot start another thread: %s", error.what());
        return false;
    }
}

bool ThreadPool::leave() {
    uint32_t bits = mCrew.load(std::memory_order_relaxed);
    do {
        if (Crew(bits).free() <= mMost.load(std::memory_order_relaxed)) {
            return false;
        }
    } while (!mCrew.compare_exchange_weak(bits, bits - kOneSpawned));
    return true;
}

// One thread's place in the pool; an implementation may end the thread in the middle of a call.
struct ThreadPool::Place {
    explicit Place(ThreadPool& threads) : pool(threads) {}
    ~Place() {
        if (!left) {
            pool.lose();
        }
    }
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;

    ThreadPool& pool;
    bool left = false;
};

void ThreadPool::run() {
    (void)pthread_setname_np(pthread_self(), "binder");  // a name is a nicety
    gServes = true;
    Place place(*this);
    while (!leave()) {
        serveOne();
    }
    place.left = true;
}

void ThreadPool::lose() {
    mCrew.fetch_sub(kOneSpawned);
    if (nobodyWaits()) {
        (void)grow();  // it says why not
    }
}

void ThreadPool::serveForever() {
    mJoined = true;
    gServes = true;
    for (;;) {
        serveOne();
    }
}

void ThreadPool::serveOne() {
    mWaiting.fetch_add(1);
    const auto source = reactor().wait();
    mWaiting.fetch_sub(1);
    if (source == nullptr) {
        return;
    }
    if (!source->isBrief()) {
        keepOneWaiting();
    }
    source->onReady();
}

void ThreadPool::keepOneWaiting() {
    if (nobodyWaits()) {
        (void)grow();  // without it, this thread goes back to the reactor after its work
    }
}

bool ThreadPool::tryStay() {
    if (nobodyWaits()) {
        return false;
    }
    const int most = std::max(1, mMost.load(std::memory_order_relaxed) / 2);
    if (mStaying.fetch_add(1) < most) {
        return true;
    }
    --mStaying;
    return false;
}

void ThreadPool::endStay() {
    --mStaying;
}

bool ThreadPool::block() {
    const Crew crew(mCrew.fetch_add(kOneBlocked) + kOneBlocked);
    if (!nobodyWaits() || grow() || crew.free() > 0) {
        return true;
    }
    mCrew.fetch_sub(kOneBlocked);
    logLimited("all %d threads wait for replies: a call of the last one fails", crew.spawned);
    return false;
}

bool ThreadPool::servesHere() {
    return gServes;
}

ThreadPool::Blocked::Blocked() : mServes(gServes), mGranted(!mServes || threadPool().block()) {}

ThreadPool::Blocked::~Blocked() {
    if (mServes && mGranted) {
        threadPool().mCrew.fetch_sub(kOneBlocked);
    }
}

ThreadPool& threadPool() {
    static auto* const instance = new ThreadPool();
    return *instance;
}

}  // namespace android::transport
