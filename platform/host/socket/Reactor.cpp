// SPDX-License-Identifier: Apache-2.0
#include "socket/Reactor.h"

#include <poll.h>
#include <sys/epoll.h>
#include <sys/socket.h>

#include <cerrno>
#include <new>

#include "socket/Syscalls.h"
#include "support/ForkGuard.h"

namespace android::transport {

namespace {

bool control(int epoll, int operation, int fd, uint64_t token) {
    epoll_event event = {};
    event.events = EPOLLIN | EPOLLRDHUP | EPOLLONESHOT;
    event.data.u64 = token;
    return sys::epollControl(epoll, operation, fd, &event) == 0;
}

// Until a thread looks again whether there is something to wait in.
constexpr int kUnopenedMs = 20;

// By value: the struct is packed, so its fields cannot be bound to a reference.
uint64_t tokenOf(const epoll_event& event) {
    return event.data.u64;
}

}  // namespace

Reactor::Reactor() {
    Mutex::Autolock held(mLock);
    open();
}

// Again with each handler, if there was no descriptor for it before.
void Reactor::open() {
    if (!mOwner.valid()) {
        mOwner = Fd(sys::makeEpoll());
        mEpoll.store(mOwner.get(), std::memory_order_relaxed);
    }
}

bool Reactor::add(const std::shared_ptr<EventHandler>& handler) {
    return add(handler, handler->socket());
}

bool Reactor::add(const std::shared_ptr<EventHandler>& handler, const Fd& socket) {
    Mutex::Autolock held(mLock);
    open();
    handler->mWaitedFd = socket.get();
    handler->mToken = ++mLastToken;
    if (!keep(handler)) {
        return false;
    }
    if (control(epoll(), EPOLL_CTL_ADD, handler->mWaitedFd, handler->mToken)) {
        return true;
    }
    mHandlers.erase(handler->mToken);
    return false;
}

bool Reactor::keep(const std::shared_ptr<EventHandler>& handler) {
    try {
        mHandlers[handler->mToken] = handler;
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

void Reactor::addPaused(const std::shared_ptr<EventHandler>& handler) {
    Mutex::Autolock held(mLock);
    handler->mWaitedFd = handler->socket().get();
    handler->mToken = ++mLastToken;
    handler->mPaused = true;
    mHandlers[handler->mToken] = handler;
}

// False when epoll refuses a paused handler. Of another one it refuses only what another thread has
// removed meanwhile.
bool Reactor::arm(EventHandler& handler) {
    const bool paused = handler.mPaused.exchange(false);
    const int operation = paused ? EPOLL_CTL_ADD : EPOLL_CTL_MOD;
    return control(epoll(), operation, handler.mWaitedFd, handler.mToken) || !paused;
}

void Reactor::letGo(EventHandler& handler) {
    (void)shutdown(handler.mWaitedFd, SHUT_RDWR);
    remove(handler);
}

void Reactor::rearm(EventHandler& handler) {
    if (!arm(handler)) {
        letGo(handler);
    }
}

void Reactor::rearmIfKept(EventHandler& handler) {
    bool armed = true;
    {
        Mutex::Autolock held(mLock);
        armed = mHandlers.count(handler.mToken) == 0 || arm(handler);
    }
    if (!armed) {
        letGo(handler);
    }
}

void Reactor::pause(EventHandler& handler) {
    if (!handler.mPaused.exchange(true)) {
        (void)control(epoll(), EPOLL_CTL_DEL, handler.mWaitedFd, handler.mToken);
    }
}

void Reactor::remove(const EventHandler& handler) {
    if (isForkedChild()) {
        return;  // the lock may be held for ever, and the descriptors are closed already
    }
    std::shared_ptr<EventHandler> last;  // destroyed outside of the lock
    Mutex::Autolock held(mLock);
    const auto found = mHandlers.find(handler.mToken);
    if (found != mHandlers.end()) {
        if (!handler.mPaused.load()) {
            (void)control(epoll(), EPOLL_CTL_DEL, handler.mWaitedFd, handler.mToken);
        }
        last = std::move(found->second);
        mHandlers.erase(found);
    }
}

std::shared_ptr<EventHandler> Reactor::wait(int timeoutMs) {
    epoll_event event = {};
    if (epoll() < 0) {
        (void)poll(nullptr, 0, timeoutMs < 0 ? kUnopenedMs : timeoutMs);
        return nullptr;
    }
    if (epoll_wait(epoll(), &event, 1, timeoutMs) != 1) {
        return nullptr;
    }
    Mutex::Autolock held(mLock);
    const auto found = mHandlers.find(tokenOf(event));
    return found != mHandlers.end() ? found->second : nullptr;
}

}  // namespace android::transport
