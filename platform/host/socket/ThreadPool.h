// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_THREADPOOL_H
#define VOXTREL_SOCKET_THREADPOOL_H

#include <atomic>
#include <cstddef>
#include <cstdint>

namespace android::transport {

class EventHandler;
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
    /// Asks again for the first thread, where the pool has started and could not have it. False
    /// where it still cannot.
    bool keepOneThread();
    /// At least one thread serves once the pool has started, whatever `count` says.
    void setMax(size_t count);
    [[noreturn]] void serveForever();
    /// Has any thread been told to serve? Without one nobody waits in the reactor.
    bool isUsed() const { return mStarted || mJoined; }
    /// Is the calling thread one of the pool's?
    bool isServing() const;

    /// May a thread that has just served a socket sleep on that socket for its next call? Only
    /// while others wait in the reactor, and half of the pool at most, so that silent sockets do
    /// not exhaust the pool. `endStay` ends it.
    bool tryStay();
    void endStay();
    /// Serves a handler that is ready. One that runs out of memory is armed again.
    void serve(EventHandler& handler);
    /// For a handler that `neverBlocks`, before the exception to it.
    void keepOneWaiting();
    /// The last thread has left the reactor: one that stays goes back there after its call.
    bool nobodyWaits() const { return mWaiting.load(std::memory_order_relaxed) <= 0; }

    /// That the calling thread waits for another process, until this goes. Always granted to
    /// threads that do not serve.
    class BlockedScope {
    public:
        /// `counted`: null for a thread that does not serve, and one to which it is not granted.
        BlockedScope(ThreadPool* counted, bool granted) : mCounted(counted), mGranted(granted) {}
        ~BlockedScope() {
            if (mCounted != nullptr) {
                mCounted->mCounts.fetch_sub(kOneBlocked);
            }
        }
        BlockedScope(const BlockedScope&) = delete;
        BlockedScope& operator=(const BlockedScope&) = delete;

        bool granted() const { return mGranted; }

    private:
        ThreadPool* const mCounted;
        const bool mGranted;
    };

    /// For a reply, or for an owner to take a socket. Such a thread does not count: another may be
    /// started in its place, so that calls nest. Not granted to the last one when no other can be
    /// started: nobody would be left to serve what all of them wait for.
    BlockedScope blockOnReply();

private:
    // Threads, and those of them that are blocked, in one word: a thread must not leave while
    // another one is about to wait.
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

    Reactor& mReactor;
    std::atomic<bool> mStarted{false};
    std::atomic<bool> mJoined{false};
    std::atomic<int> mMax{15};
    std::atomic<uint32_t> mCounts{0};
    std::atomic<int> mWaiting{0};
    std::atomic<int> mStaying{0};
    std::atomic<bool> mShort{false};  // of threads: told once, until one can be started again
};

}  // namespace android::transport

#endif
