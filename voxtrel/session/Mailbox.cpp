// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/session/Mailbox.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <new>

namespace voxtrel {
namespace {

bool isDispensable(const Event& event) {
    return event.kind == Event::Kind::Word || event.kind == Event::Kind::Mark;
}

}  // namespace

Mailbox::Mailbox(bool isPolled)
    : mIsPolled(isPolled), mFd(isPolled ? eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK) : -1) {
    mEvents.reserve(2 * kRoom);
}

Mailbox::~Mailbox() {
    if (mFd >= 0) {
        ::close(mFd);
    }
}

bool Mailbox::put(Event&& event) {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (mHandler == nullptr || (waiting() >= kRoom && (isDispensable(event) || renews(event)))) {
        return false;
    }
    try {
        append(std::move(event));
    } catch (const std::bad_alloc&) {
        return false;
    }
    if (waiting() == 1) {
        signal();
    }
    return true;
}

/// A change of what has changed before and has not been handled takes its place.
bool Mailbox::renews(const Event& event) {
    if (event.kind != Event::Kind::Changed) {
        return false;
    }
    const auto first = mEvents.begin() + static_cast<std::ptrdiff_t>(mFirst);
    const auto found = std::find_if(first, mEvents.end(), [&event](const Event& other) {
        return other.kind == event.kind && other.setting == event.setting;
    });
    if (found != mEvents.end()) {
        found->value = event.value;
    }
    return found != mEvents.end();
}

void Mailbox::setHandler(Handler handler) {
    auto other = handler ? std::make_shared<const Handler>(std::move(handler)) : nullptr;
    std::unique_lock<std::mutex> lock(mMutex);
    if (mClosed) {
        return;
    }
    mHandler.swap(other);
    if (mHandler == nullptr) {
        clear();
    }
    waitForOlder(lock);
}

bool Mailbox::hasHandler() const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mHandler != nullptr;
}

std::size_t Mailbox::dispatch(std::size_t max) {
    std::unique_lock<std::mutex> lock(mMutex);
    if (mInside != std::thread::id()) {
        return 0;
    }
    std::size_t count = 0;
    mInside = std::this_thread::get_id();
    while (count < max && waiting() > 0) {
        handleFirst(lock);
        ++count;
    }
    mInside = std::thread::id();
    return count;
}

void Mailbox::handleFirst(std::unique_lock<std::mutex>& lock) {
    mRunning = mHandler;
    const Event event = takeFirst();
    lock.unlock();
    try {
        (*mRunning)(event);
    } catch (...) {
        // Said at Client::onEvent: there is nobody to tell.
    }
    lock.lock();
    SharedHandler done;
    done.swap(mRunning);
    mIdle.notify_all();
    lock.unlock();
    done.reset();  // what it owns may end here, and call us
    lock.lock();
}

Event Mailbox::takeFirst() {
    Event event = std::move(mEvents[mFirst++]);
    if (waiting() == 0) {
        clear();
    }
    return event;
}

void Mailbox::append(Event&& event) {
    // Moved to the front rather than into more memory: a word must not allocate.
    if (mEvents.size() == mEvents.capacity() && mFirst >= mEvents.size() / 2) {
        mEvents.erase(mEvents.begin(), mEvents.begin() + static_cast<std::ptrdiff_t>(mFirst));
        mFirst = 0;
    }
    mEvents.push_back(std::move(event));
}

void Mailbox::clear() {
    mEvents.clear();
    mFirst = 0;
    unsignal();
}

void Mailbox::close() {
    SharedHandler last;
    std::unique_lock<std::mutex> lock(mMutex);
    mHandler.swap(last);
    mClosed = true;
    clear();
    waitForOlder(lock);
}

void Mailbox::waitForOlder(std::unique_lock<std::mutex>& lock) {
    if (mInside != std::this_thread::get_id()) {
        mIdle.wait(lock, [this] { return mRunning == nullptr || mRunning == mHandler; });
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
