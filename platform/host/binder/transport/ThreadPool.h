// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BINDER_TRANSPORT_THREADPOOL_H
#define VOXTREL_BINDER_TRANSPORT_THREADPOOL_H

#include <atomic>
#include <cstddef>

namespace android::transport {

/// The threads that serve this process's nodes. One of them always waits in the reactor while the
/// pool may still grow; a busy thread is never handed another's work.
///
/// Called on: any thread. Locks: none.
class ThreadPool {
public:
    void start();
    void setMost(size_t count);
    [[noreturn]] void serveForever();

    /// May a thread that has just served a socket sleep on that socket, to be woken straight into
    /// its next call? Only while others wait in the reactor, and half of the pool at most: so a
    /// socket that stays silent keeps nobody from being served. `endStay` gives the place back.
    bool tryStay();
    void endStay();
    /// Has the last thread left the reactor? Then who stays goes back there after each call.
    bool nobodyWaits() const { return mWaiting.load(std::memory_order_relaxed) <= 0; }

    /// A pool thread that waits for the reply to a call of its own does not count: another may be
    /// started in its place, so that calls nest to any depth that matters.
    class Blocked {
    public:
        Blocked();
        ~Blocked();
        Blocked(const Blocked&) = delete;
        Blocked& operator=(const Blocked&) = delete;

    private:
        const bool mCounts;
    };

private:
    void grow();
    void serveOne();
    void run();
    bool tooMany() const;

    std::atomic<bool> mStarted{false};
    std::atomic<int> mMost{15};
    std::atomic<int> mSpawned{0};
    std::atomic<int> mBlocked{0};
    std::atomic<int> mWaiting{0};
    std::atomic<int> mStaying{0};
};

/// The process's pool; never destroyed.
ThreadPool& threadPool();

}  // namespace android::transport

#endif
