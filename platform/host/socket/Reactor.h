// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_REACTOR_H
#define VOXTREL_SOCKET_REACTOR_H

#include <atomic>
#include <cstdint>
#include <memory>
#include <unordered_map>

#include "support/Fd.h"
#include "utils/Mutex.h"

namespace android::transport {

/// Something with a descriptor that threads of the pool wait for. Armed for one event at a time, so
/// that one thread at most is in `onReady`, which ends with `Reactor::rearm` or `Reactor::remove`.
class EventHandler {
public:
    explicit EventHandler(Fd socket) : mSocket(std::move(socket)) {}
    virtual ~EventHandler() = default;
    EventHandler(const EventHandler&) = delete;
    EventHandler& operator=(const EventHandler&) = delete;

    /// Called on: a thread of the pool. Locks: none.
    virtual void onReady() = 0;
    /// `onReady` returns at once and runs no code of an implementation, or else calls
    /// `ThreadPool::keepOneWaiting` first: the pool needs no other thread in the reactor until
    /// then.
    virtual bool neverBlocks() const { return false; }

    const Fd& socket() const { return mSocket; }

private:
    friend class Reactor;
    Fd mSocket;
    int mWaitedFd = -1;
    uint64_t mToken = 0;
    // Changed only by the thread that the handler has been handed to.
    std::atomic<bool> mPaused{false};
};

/// The one place where idle threads of the process wait. Called on: any thread.
class Reactor {
public:
    Reactor();

    /// Keeps the handler, and arms it. False when epoll refuses the descriptor, or memory runs out.
    bool add(const std::shared_ptr<EventHandler>& handler);
    /// The same for a descriptor that somebody else owns and removes before it is closed.
    bool add(const std::shared_ptr<EventHandler>& handler, const Fd& socket);
    /// Keeps the handler, paused.
    void addPaused(const std::shared_ptr<EventHandler>& handler);
    /// A paused handler that epoll refuses is let go, and its peer sees a hang-up.
    void rearm(EventHandler& handler);
    /// The same for a handler that another thread may remove at any time, which closes the
    /// descriptor.
    void rearmIfKept(EventHandler& handler);
    /// Takes a handler that is not armed out of epoll until it is armed again: while a thread reads
    /// its socket directly, each message would cost a wake-up callback.
    void pause(EventHandler& handler);
    /// Lets the handler go; it is destroyed when nobody uses it any more.
    void remove(const EventHandler& handler);

    /// Sleeps until a handler is ready; the handlers come in turn. Null when the time is up, and
    /// once in a while when the handler has been removed meanwhile.
    std::shared_ptr<EventHandler> wait(int timeoutMs = -1);

private:
    int epoll() const { return mEpoll.load(std::memory_order_relaxed); }
    void open() PLATFORM_REQUIRES(mLock);
    bool keep(const std::shared_ptr<EventHandler>& handler) PLATFORM_REQUIRES(mLock);
    bool arm(EventHandler& handler);
    void letGo(EventHandler& handler);

    Mutex mLock;
    Fd mOwner PLATFORM_GUARDED_BY(mLock);
    std::atomic<int> mEpoll{-1};  // its descriptor, which stays the same once there is one
    // Events name handlers by number: a handler may go while an event for it is on its way.
    std::unordered_map<uint64_t, std::shared_ptr<EventHandler>> mHandlers
        PLATFORM_GUARDED_BY(mLock);
    uint64_t mLastToken PLATFORM_GUARDED_BY(mLock) = 0;
};

}  // namespace android::transport

#endif
