// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/session/Mailbox.h"

#include <sys/eventfd.h>
#include <unistd.h>

namespace voxtrel {
namespace {

bool isDispensable(const Event& event) {
    return event.kind == Event::Kind::Word || event.kind == Event::Kind::Mark;
}

}  // namespace

Mailbox::Mailbox(bool isPolled) : mIsPolled(isPolled), mFd(isPolled ? eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK) : -1) {
    mEvents.reserve(kRoom);
    mHandled.reserve(kRoom);
}

Mailbox::~Mailbox() {
    if (mFd >= 0) {
        ::close(mFd);
    }
}

bool Mailbox::put(Event&& event) {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (mHandler == nullptr || mClosed || (mEvents.size() >= kRoom && isDispensable(event))) {
        return false;
    }
    mEvents.push_back(std::move(event));
    if (mEvents.size() == 1) {
        signal();
    }
    return true;
}

void Mailbox::setHandler(Handler handler) {
    std::unique_lock<std::mutex> lock(mMutex);
    mHandler = handler ? std::make_shared<const Handler>(std::move(handler)) : nullptr;
    if (mHandler == nullptr) {
        mEvents.clear();
        unsignal();
    }
    waitForOthers(lock);
}

bool Mailbox::hasHandler() const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mHandler != nullptr;
}

std::size_t Mailbox::dispatch() {
    std::unique_lock<std::mutex> lock(mMutex);
    if (mInside != std::thread::id()) {
        return 0;
    }
    std::size_t count = 0;
    mInside = std::this_thread::get_id();
    while (!mEvents.empty() && !mClosed) {
        mHandled.swap(mEvents);
        unsignal();
        for (const Event& event : mHandled) {
            const std::shared_ptr<const Handler> handler = mClosed ? nullptr : mHandler;
            if (handler == nullptr) {
                break;
            }
            lock.unlock();
            try {
                (*handler)(event);
            } catch (...) {
                // Said at Client::onEvent: there is nobody to tell.
            }
            lock.lock();
            ++count;
        }
        mHandled.clear();
    }
    mInside = std::thread::id();
    mIdle.notify_all();
    return count;
}

void Mailbox::close() {
    std::unique_lock<std::mutex> lock(mMutex);
    mClosed = true;
    mEvents.clear();
    unsignal();
    waitForOthers(lock);
}

void Mailbox::waitForOthers(std::unique_lock<std::mutex>& lock) {
    // Only an older handler is waited for: whoever is inside meanwhile may be a newer one.
    if (mInside != std::this_thread::get_id()) {
        mIdle.wait(lock, [this] { return mInside == std::thread::id(); });
    }
}

void Mailbox::signal() const {
    if (mFd >= 0) {
        const std::uint64_t one = 1;
        (void)!write(mFd, &one, sizeof one);
    }
}

void Mailbox::unsignal() const {
    if (mFd >= 0) {
        std::uint64_t any = 0;
        (void)!read(mFd, &any, sizeof any);
    }
}

}  // namespace voxtrel
