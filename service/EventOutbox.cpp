// SPDX-License-Identifier: Apache-2.0
#include "service/EventOutbox.h"

#include <thread>
#include <utility>

namespace voxtreld {

using std::chrono::steady_clock;

class EventOutbox::Desk {
public:
    explicit Desk(const android::sp<TTS::ICallback>& to) : mTo(android::IInterface::asBinder(to)) {}

    bool post(const Letter& letter) {
        bool wake = false;
        {
            const MutexLock lock(mMutex);
            if (mLetters.size() >= kMostWaiting) {
                return false;
            }
            wake = mLetters.empty() && !mSending;
            mLetters.push_back(letter);
        }
        if (wake) {
            mChanged.notify_all();
        }
        return true;
    }

    bool flush(std::chrono::milliseconds atMost) {
        const auto deadline = steady_clock::now() + atMost;
        MutexLock lock(mMutex);
        while (mSending || !mLetters.empty()) {
            if (!lock.waitUntil(mChanged, deadline)) {
                return false;
            }
        }
        return true;
    }

    void close() {
        {
            const MutexLock lock(mMutex);
            mClosed = true;
        }
        mChanged.notify_all();
    }

    void run() {
        for (auto letters = collect(); !letters.empty(); letters = collect()) {
            for (const Letter& letter : letters) {
                if (!deliver(letter)) {
                    break;
                }
            }
        }
    }

private:
    /// Everything posted meanwhile; empty once closed.
    std::vector<Letter> collect() {
        MutexLock lock(mMutex);
        mSending = false;
        mChanged.notify_all();
        while (mLetters.empty() && !mClosed) {
            lock.wait(mChanged);
        }
        if (mClosed) {
            return {};
        }
        mSending = true;
        return std::exchange(mLetters, {});
    }

    /// @return false when nobody is there to take letters any more.
    bool deliver(const Letter& letter) {
        for (;;) {
            const android::status_t status = send(letter);
            if (status == android::DEAD_OBJECT) {
                return false;
            }
            if (status == android::OK || !pauseUnlessClosed()) {
                return status == android::OK;
            }
        }
    }

    /// Not through the callback's proxy, which does not tell whether the client had room.
    android::status_t send(const Letter& letter) const {
        android::Parcel request;
        android::Parcel reply;
        request.writeInt32(static_cast<int32_t>(letter.event));
        request.writeInt32(static_cast<int32_t>(letter.second));
        request.writeInt32(static_cast<int32_t>(letter.third));
        return mTo->transact(TTS::ICallback::kNotify, request, &reply,
                             android::IBinder::FLAG_ONEWAY);
    }

    /// A client's room is full: gives it time. @return false once closed.
    bool pauseUnlessClosed() {
        const auto deadline = steady_clock::now() + std::chrono::milliseconds(10);
        MutexLock lock(mMutex);
        while (!mClosed && lock.waitUntil(mChanged, deadline)) {
        }
        return !mClosed;
    }

    const android::sp<android::IBinder> mTo;
    Mutex mMutex;
    std::condition_variable mChanged;
    std::vector<Letter> mLetters VOXTRELD_GUARDED_BY(mMutex);
    bool mSending VOXTRELD_GUARDED_BY(mMutex) = false;
    bool mClosed VOXTRELD_GUARDED_BY(mMutex) = false;
};

EventOutbox::EventOutbox(const android::sp<TTS::ICallback>& to, std::shared_ptr<const void> held)
    : mDesk(std::make_shared<Desk>(to)) {
    // Detached, since a client that hangs in a call must not hang who forgets it.
    std::thread([desk = mDesk, held = std::move(held)] { desk->run(); }).detach();
}

EventOutbox::~EventOutbox() {
    mDesk->close();
}

bool EventOutbox::post(TTS::Event event, uint32_t second, uint32_t third) {
    return mDesk->post({event, second, third});
}

bool EventOutbox::flush(std::chrono::milliseconds atMost) {
    return mDesk->flush(atMost);
}

}  // namespace voxtreld
