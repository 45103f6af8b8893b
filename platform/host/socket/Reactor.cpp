// SPDX-License-Identifier: Apache-2.0
#include "socket/Reactor.h"

#include <sys/epoll.h>
#include <sys/socket.h>

#include <cerrno>

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

// By value: the struct is packed, so its fields cannot be bound to a reference.
uint64_t tokenOf(const epoll_event& event) {
    return event.data.u64;
}

}  // namespace

Reactor::Reactor() : mEpoll(epoll_create1(EPOLL_CLOEXEC)) {}

bool Reactor::add(const std::shared_ptr<EventHandler>& handler) {
    return add(handler, handler->socket());
}

bool Reactor::add(const std::shared_ptr<EventHandler>& handler, const Fd& socket) {
    Mutex::Autolock held(mLock);
    handler->mWaitedFd = socket.get();
    handler->mToken = ++mLastToken;
    mHandlers[handler->mToken] = handler;
    if (control(mEpoll.get(), EPOLL_CTL_ADD, handler->mWaitedFd, handler->mToken)) {
        return true;
    }
    mHandlers.erase(handler->mToken);
    return false;
}

void Reactor::addPaused(const std::shared_ptr<EventHandler>& handler) {
    Mutex::Autolock held(mLock);
    handler->mWaitedFd = handler->socket().get();
    handler->mToken = ++mLastToken;
    handler->mPaused = true;
    mHandlers[handler->mToken] = handler;
}

void Reactor::rearm(EventHandler& handler) {
    const bool paused = handler.mPaused.exchange(false);
    const int operation = paused ? EPOLL_CTL_ADD : EPOLL_CTL_MOD;
    // Of a handler that is not paused it fails only where another thread has removed it meanwhile.
    if (!control(mEpoll.get(), operation, handler.mWaitedFd, handler.mToken) && paused) {
        (void)shutdown(handler.mWaitedFd, SHUT_RDWR);
        remove(handler);
    }
}

void Reactor::rearmIfKept(EventHandler& handler) {
    Mutex::Autolock held(mLock);
    if (mHandlers.count(handler.mToken) != 0) {
        (void)control(mEpoll.get(), EPOLL_CTL_MOD, handler.mWaitedFd, handler.mToken);
    }
}

void Reactor::pause(EventHandler& handler) {
    if (!handler.mPaused.exchange(true)) {
        (void)control(mEpoll.get(), EPOLL_CTL_DEL, handler.mWaitedFd, handler.mToken);
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
            (void)control(mEpoll.get(), EPOLL_CTL_DEL, handler.mWaitedFd, handler.mToken);
        }
        last = std::move(found->second);
        mHandlers.erase(found);
    }
}

std::shared_ptr<EventHandler> Reactor::wait(int timeoutMs) {
    epoll_event event = {};
    if (epoll_wait(mEpoll.get(), &event, 1, timeoutMs) != 1) {
        return nullptr;
    }
    Mutex::Autolock held(mLock);
    const auto found = mHandlers.find(tokenOf(event));
    return found != mHandlers.end() ? found->second : nullptr;
}

}  // namespace android::transport
