// SPDX-License-Identifier: Apache-2.0
#include "binder/transport/ThreadPool.h"

#include <pthread.h>

#include <algorithm>
#include <system_error>
#include <thread>

#include "binder/transport/Log.h"
#include "binder/transport/Reactor.h"

namespace android::transport {

namespace {

// Calls that go back and forth without end are stopped here, not by the machine's memory.
constexpr int kMostEver = 256;

thread_local bool gServes = false;

}  // namespace

void ThreadPool::start() {
    if (!mStarted.exchange(true)) {
        grow();
    }
}

void ThreadPool::setMost(size_t count) {
    mMost = static_cast<int>(std::min<size_t>(count, kMostEver));
}

void ThreadPool::grow() {
    int spawned = mSpawned.load();
    do {
        if (!mStarted || spawned >= kMostEver || spawned - mBlocked.load() >= mMost.load()) {
            return;
        }
    } while (!mSpawned.compare_exchange_weak(spawned, spawned + 1));
    try {
        std::thread([this] { run(); }).detach();
    } catch (const std::system_error& error) {
        --mSpawned;
        logLine("cannot start another thread: %s", error.what());
    }
}

bool ThreadPool::tooMany() const {
    return mSpawned.load(std::memory_order_relaxed) - mBlocked.load(std::memory_order_relaxed) >
           mMost.load(std::memory_order_relaxed);
}

void ThreadPool::run() {
    (void)pthread_setname_np(pthread_self(), "binder");  // a name is a nicety
    gServes = true;
    while (!tooMany()) {
        serveOne();
    }
    --mSpawned;
}

void ThreadPool::serveForever() {
    gServes = true;
    for (;;) {
        serveOne();
    }
}

void ThreadPool::serveOne() {
    mWaiting.fetch_add(1);
    const auto source = reactor().wait();
    if (mWaiting.fetch_sub(1) == 1) {
        grow();
    }
    if (source != nullptr) {
        source->onReady();
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

ThreadPool::Blocked::Blocked() : mCounts(gServes) {
    if (mCounts) {
        ThreadPool& pool = threadPool();
        ++pool.mBlocked;
        if (pool.nobodyWaits()) {
            pool.grow();
        }
    }
}

ThreadPool::Blocked::~Blocked() {
    if (mCounts) {
        --threadPool().mBlocked;
    }
}

ThreadPool& threadPool() {
    static auto* const instance = new ThreadPool();
    return *instance;
}

}  // namespace android::transport
