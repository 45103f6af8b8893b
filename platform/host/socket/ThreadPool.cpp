// SPDX-License-Identifier: Apache-2.0
#include "socket/ThreadPool.h"

#include <poll.h>
#include <pthread.h>

#include <algorithm>
#include <exception>
#include <memory>
#include <new>
#include <thread>

#include "socket/Reactor.h"
#include "support/Log.h"

namespace android::transport {

namespace {

// Ends a recursion of calls between processes before memory does.
constexpr int kMaxThreads = 256;

// Until memory that has run out is asked for again.
constexpr int kOutOfMemoryMs = 10;
// Of a process that begins to serve, to have its first thread.
constexpr int kMoreAttempts = 5;

// The pool that the calling thread serves in.
thread_local const ThreadPool* gPool = nullptr;

}  // namespace

// Worth a short wait: without a thread a process that makes no calls would stay deaf.
void ThreadPool::start() {
    mStarted = true;
    for (int left = kMoreAttempts; !keepOneThread() && left > 0; --left) {
        (void)poll(nullptr, 0, kOutOfMemoryMs);
    }
}

bool ThreadPool::keepOneThread() {
    const bool none = ThreadCounts(mCounts.load(std::memory_order_relaxed)).spawned == 0;
    return !none || !mStarted.load(std::memory_order_relaxed) || grow();
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
        mShort = false;
        return true;
    } catch (const std::exception& error) {  // no thread, or no memory for one
        mCounts.fetch_sub(kOneSpawned);
        if (!mShort.exchange(true)) {
            logLimited("cannot start another thread: %s", error.what());
        }
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
    serve(*handler);
}

// A process must not end because there is no memory for a message that another one sent.
void ThreadPool::serve(EventHandler& handler) {
    try {
        handler.onReady();
    } catch (const std::bad_alloc&) {
        logLimited("out of memory: what another process sent waits, or is lost");
        (void)poll(nullptr, 0, kOutOfMemoryMs);
        mReactor.rearmIfKept(handler);
    }
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
