// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_THREADPOOL_H
#define VOXTREL_SOCKET_THREADPOOL_H

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace android::transport {

class Reactor;

/// The threads that serve this process's nodes. One of them always waits in the reactor while the
/// pool may still grow; a busy thread is never handed another's work.
///
/// Called on: any thread. Locks: none.
class ThreadPool {
public:
    explicit ThreadPool(Reactor& reactor) : mReactor(reactor) {}
    ThreadPool(const ThreadPool&) = delete;
    ThreadPool& operator=(const ThreadPool&) = delete;

    void start();
    /// At least one thread serves once the pool has started, whatever `count` says.
    void setMax(size_t count);
    [[noreturn]] void serveForever();
    /// Has any thread been told to serve? Without one nobody waits in the reactor.
    bool isUsed() const { return mStarted || mJoined; }

    /// May a thread that has just served a socket sleep on that socket, to be woken straight into
    /// its next call? Only while others wait in the reactor, and half of the pool at most, so that
    /// silent sockets do not exhaust the pool. `endStay` ends it.
    bool tryStay();
    void endStay();
    /// For a thread in a handler that never blocks, before it does something that may after all.
    void keepOneWaiting();
    /// Has the last thread left the reactor? Then a thread that stays goes back there after each
    /// call.
    bool nobodyWaits() const { return mWaiting.load(std::memory_order_relaxed) <= 0; }

    /// A pool thread that waits for the reply to a call of its own does not count: another may be
    /// started in its place, so that calls nest to any depth that matters. Not granted to the last
    /// thread when no other can be started: nobody would be left to serve what all of them wait
    /// for.
    class BlockedScope {
    public:
        explicit BlockedScope(ThreadPool& pool);
        ~BlockedScope();
        BlockedScope(const BlockedScope&) = delete;
        BlockedScope& operator=(const BlockedScope&) = delete;

        bool granted() const { return mGranted; }

    private:
        ThreadPool& mPool;
        const bool mServes;
        const bool mGranted;
    };

    /// Only so many threads that serve may wait at a time until another process takes a socket: the
    /// rest keep serving other calls.
    class BlockingSlot {
    public:
        explicit BlockingSlot(ThreadPool& pool);
        ~BlockingSlot();
        BlockingSlot(const BlockingSlot&) = delete;
        BlockingSlot& operator=(const BlockingSlot&) = delete;

        bool granted() const { return mGranted; }

    private:
        ThreadPool& mPool;
        const bool mServes;
        const bool mGranted;
    };

private:
    bool servesHere() const;

    // How many threads there are and how many of them wait for replies. The two change in one step:
    // a thread must not leave on the strength of another that is about to wait.
    struct ThreadCounts {
        explicit ThreadCounts(uint32_t bits)
            : spawned(static_cast<int>(bits >> 16U)), blocked(static_cast<int>(bits & 0xFFFFU)) {}
        int free() const { return spawned - blocked; }
        int spawned;
        int blocked;
    };
    static constexpr uint32_t kOneSpawned = 1U << 16U;
    static constexpr uint32_t kOneBlocked = 1;

    /// False when another thread is wanted and cannot be had.
    bool grow();
    void serveOne();
    void run();
    bool leave();
    void lose();
    bool block();

    Reactor& mReactor;
    std::atomic<bool> mStarted{false};
    std::atomic<bool> mJoined{false};
    std::atomic<int> mMax{15};
    std::atomic<uint32_t> mCounts{0};
    std::atomic<int> mWaiting{0};
    std::atomic<int> mStaying{0};
    std::atomic<int> mInSlots{0};
};

}  // namespace android::transport

#endif
