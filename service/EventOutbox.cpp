// SPDX-License-Identifier: Apache-2.0
#include "service/EventOutbox.h"

#include <utility>

namespace voxtreld {

EventOutbox::EventOutbox() : mThread([this] { run(); }) {}

EventOutbox::~EventOutbox() {
    {
        const MutexLock lock(mMutex);
        mClosed = true;
    }
    mPosted.notify_one();
    mThread.join();
}

void EventOutbox::post(const android::sp<TTS::ICallback>& to, Event event, uint32_t second,
                       uint32_t third) {
    bool wake = false;
    {
        const MutexLock lock(mMutex);
        wake = mLetters.empty() && !mSending;
        mLetters.push_back({to, event, second, third});
    }
    if (wake) {
        mPosted.notify_one();
    }
}

void EventOutbox::flush() {
    MutexLock lock(mMutex);
    while (mSending || !mLetters.empty()) {
        lock.wait(mEmptied);
    }
}

std::vector<EventOutbox::Letter> EventOutbox::collect() {
    MutexLock lock(mMutex);
    mSending = false;
    if (mLetters.empty()) {
        mEmptied.notify_all();
    }
    while (mLetters.empty() && !mClosed) {
        lock.wait(mPosted);
    }
    mSending = !mLetters.empty();
    return std::exchange(mLetters, {});
}

void EventOutbox::run() {
    for (auto letters = collect(); !letters.empty(); letters = collect()) {
        for (const Letter& letter : letters) {
            // One-way: the answer carries nothing, and a client that is gone is told of elsewhere.
            (void)letter.to->notify(letter.event, letter.second, letter.third);
        }
    }
}

}  // namespace voxtreld
