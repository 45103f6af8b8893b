// SPDX-License-Identifier: Apache-2.0
#include "socket/Reactor.h"

#include <sys/epoll.h>

#include <cerrno>

#include "support/ForkGuard.h"

namespace android::transport {

namespace {

bool control(int epoll, int operation, int fd, uint64_t token) {
    epoll_event event = {};
    event.events = EPOLLIN | EPOLLRDHUP | EPOLLONESHOT;
    event.data.u64 = token;
    return epoll_ctl(epoll, operation, fd, &event) == 0;
}

// By value: the struct is packed, so its fields cannot be bound to a reference.
uint64_t tokenOf(const epoll_event& event) {
    return event.data.u64;
}

}  // namespace

Reactor::Reactor() : mEpoll(epoll_create1(EPOLL_CLOEXEC)) {}

bool Reactor::add(const std::shared_ptr<Source>& source) {
    return add(source, source->socket());
}

bool Reactor::add(const std::shared_ptr<Source>& source, const Fd& socket) {
    Mutex::Autolock held(mLock);
    source->mWaitedFd = socket.get();
    source->mToken = ++mLastToken;
    mSources[source->mToken] = source;
    if (control(mEpoll.get(), EPOLL_CTL_ADD, source->mWaitedFd, source->mToken)) {
        return true;
    }
    mSources.erase(source->mToken);
    return false;
}

void Reactor::rearm(Source& source) {
    const int operation = source.mPaused.exchange(false) ? EPOLL_CTL_ADD : EPOLL_CTL_MOD;
    // Fails only for a source that another thread has removed meanwhile.
    (void)control(mEpoll.get(), operation, source.mWaitedFd, source.mToken);
}

void Reactor::rearmIfKept(Source& source) {
    Mutex::Autolock held(mLock);
    if (mSources.count(source.mToken) != 0) {
        rearm(source);
    }
}

void Reactor::pause(Source& source) {
    if (!source.mPaused.exchange(true)) {
        (void)control(mEpoll.get(), EPOLL_CTL_DEL, source.mWaitedFd, source.mToken);
    }
}

void Reactor::remove(const Source& source) {
    if (isForkedChild()) {
        return;  // the lock may be held for ever, and the descriptors are closed already
    }
    std::shared_ptr<Source> last;  // destroyed outside of the lock
    Mutex::Autolock held(mLock);
    const auto found = mSources.find(source.mToken);
    if (found != mSources.end()) {
        (void)control(mEpoll.get(), EPOLL_CTL_DEL, source.mWaitedFd, source.mToken);
        last = std::move(found->second);
        mSources.erase(found);
    }
}

std::shared_ptr<Source> Reactor::wait() {
    epoll_event event = {};
    if (epoll_wait(mEpoll.get(), &event, 1, -1) != 1) {
        return nullptr;
    }
    Mutex::Autolock held(mLock);
    const auto found = mSources.find(tokenOf(event));
    return found != mSources.end() ? found->second : nullptr;
}

std::vector<std::shared_ptr<Source>> Reactor::ready() {
    constexpr int kMostAtOnce = 16;
    epoll_event events[kMostAtOnce];
    const int count = epoll_wait(mEpoll.get(), events, kMostAtOnce, 0);
    std::vector<std::shared_ptr<Source>> sources;
    Mutex::Autolock held(mLock);
    for (int i = 0; i < count; ++i) {
        const auto found = mSources.find(tokenOf(events[i]));
        if (found != mSources.end()) {
            sources.push_back(found->second);
        }
    }
    return sources;
}

Reactor& reactor() {
    static auto* const instance = new Reactor();
    return *instance;
}

}  // namespace android::transport
