// SPDX-License-Identifier: Apache-2.0
#include "socket/ThreadPool.h"

#include <pthread.h>

#include <algorithm>
#include <memory>
#include <system_error>
#include <thread>

#include "socket/Reactor.h"
#include "support/Log.h"

namespace android::transport {

namespace {

// Ends a recursion of calls between processes before memory does.
constexpr int kMaxThreads = 256;

// The pool that the calling thread serves in.
thread_local const ThreadPool* gPool = nullptr;

}  // namespace

void ThreadPool::start() {
    if (!mStarted.exchange(true)) {
        (void)grow();  // it says why not, and tries again with the first call
    }
}

bool ThreadPool::isServing() const {
    return gPool == this;
}

void ThreadPool::setMax(size_t count) {
    mMax = static_cast<int>(std::clamp<size_t>(count, 1, kMaxThreads));
}

bool ThreadPool::grow() {
    uint32_t bits = mCounts.load();
    do {
        const ThreadCounts counts(bits);
        if (!mStarted || counts.free() >= mMax.load()) {
            return true;
        }
        if (counts.spawned >= kMaxThreads) {
            return false;
        }
    } while (!mCounts.compare_exchange_weak(bits, bits + kOneSpawned));
    try {
        std::thread([this] { run(); }).detach();
        return true;
    } catch (const std::system_error& error) {
        mCounts.fetch_sub(kOneSpawned);
        logLimited("cannot start another thread: %s", error.what());
        return false;
    }
}

bool ThreadPool::leave() {
    uint32_t bits = mCounts.load(std::memory_order_relaxed);
    do {
        if (ThreadCounts(bits).free() <= mMax.load(std::memory_order_relaxed)) {
            return false;
        }
    } while (!mCounts.compare_exchange_weak(bits, bits - kOneSpawned));
    return true;
}

void ThreadPool::run() {
    (void)pthread_setname_np(pthread_self(), "binder");  // a name is a nicety
    gPool = this;
    // An implementation may end the thread in the middle of a call.
    const auto lost = [](ThreadPool* pool) { pool->lose(); };
    std::unique_ptr<ThreadPool, decltype(lost)> membership(this, lost);
    while (!leave()) {
        serveOne();
    }
    (void)membership.release();
}

void ThreadPool::lose() {
    mCounts.fetch_sub(kOneSpawned);
    if (nobodyWaits()) {
        (void)grow();  // it says why not
    }
}

void ThreadPool::serveForever() {
    mJoined = true;
    gPool = this;
    for (;;) {
        serveOne();
    }
}

void ThreadPool::serveOne() {
    mWaiting.fetch_add(1);
    const auto handler = mReactor.wait();
    mWaiting.fetch_sub(1);
    if (handler == nullptr) {
        return;
    }
    if (!handler->neverBlocks()) {
        keepOneWaiting();
    }
    handler->onReady();
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
    const int most = std::max(1, mMax.load(std::memory_order_relaxed) / 2);
    if (mStaying.fetch_add(1) < most) {
        return true;
    }
    --mStaying;
    return false;
}

void ThreadPool::endStay() {
    --mStaying;
}

ThreadPool::BlockedScope ThreadPool::blockOnReply() {
    if (!isServing()) {
        return {nullptr, true};
    }
    const ThreadCounts counts(mCounts.fetch_add(kOneBlocked) + kOneBlocked);
    if (!nobodyWaits() || grow() || counts.free() > 0) {
        return {this, true};
    }
    mCounts.fetch_sub(kOneBlocked);
    logLimited("all %d threads wait for replies: a call of the last one fails", counts.spawned);
    return {nullptr, false};
}

}  // namespace android::transport
