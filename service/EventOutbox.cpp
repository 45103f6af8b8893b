// SPDX-License-Identifier: Apache-2.0
#include "service/EventOutbox.h"

#include <deque>
#include <thread>
#include <utility>

namespace voxtreld {

using std::chrono::steady_clock;

/// Each callback has a thread of its own with a number; the latest one sends. A letter stays in
/// front until its call has succeeded, so the next thread finds it there otherwise.
class EventOutbox::Desk : public std::enable_shared_from_this<Desk> {
public:
    explicit Desk(std::chrono::milliseconds callPatience) : mCallPatience(callPatience) {}

    bool post(const Letter& letter) {
        {
            const MutexLock lock(mMutex);
            if (mLetters.size() >= kMostWaiting) {
                return false;
            }
            mLetters.push_back(letter);
        }
        mChanged.notify_all();
        return true;
    }

    bool flush(std::chrono::milliseconds atMost) {
        const auto deadline = steady_clock::now() + atMost;
        MutexLock lock(mMutex);
        while (!mDead && !mLetters.empty()) {
            if (!lock.waitUntil(mChanged, deadline)) {
                return false;
            }
        }
        return true;
    }

    void startSender(const android::sp<TTS::ICallback>& to, std::shared_ptr<const void> held) {
        const android::sp<android::IBinder> binder = android::IInterface::asBinder(to);
        {
            const MutexLock lock(mMutex);
            const unsigned number = mSender + 1;
            // Detached, since a client that hangs in a call must not hang who forgets it.
            std::thread([self = shared_from_this(), binder, number, held = std::move(held)] {
                self->run(*binder, number);
            }).detach();
            mSender = number;
            mDead = false;
        }
        mChanged.notify_all();
    }

    void close() {
        {
            const MutexLock lock(mMutex);
            ++mSender;
        }
        mChanged.notify_all();
    }

private:
    void run(android::IBinder& to, unsigned number) {
        awaitCall(number);
        Letter letter = {};
        while (takeNext(number, letter)) {
            const android::status_t status = send(to, letter);
            if (conclude(number, status) && status != android::OK) {
                pause(number);
            }
        }
    }

    /// The callback before may be in a call. Whether that succeeds must be known before the next
    /// letter goes; if it takes too long it counts as success, since nothing is told twice.
    void awaitCall(unsigned number) {
        const auto deadline = steady_clock::now() + mCallPatience;
        MutexLock lock(mMutex);
        while (mSender == number && mCaller != 0 && lock.waitUntil(mChanged, deadline)) {
        }
        if (mSender == number && mCaller != 0) {
            mLetters.pop_front();
            mCaller = 0;
        }
    }

    /// Waits for a letter. @return false when this sender is not the latest any more.
    bool takeNext(unsigned number, Letter& letter) {
        MutexLock lock(mMutex);
        while (mSender == number && (mLetters.empty() || mDead)) {
            lock.wait(mChanged);
        }
        if (mSender != number) {
            return false;
        }
        mCaller = number;
        letter = mLetters.front();
        return true;
    }

    /// @return false if nobody waits for that call any more.
    bool conclude(unsigned number, android::status_t status) {
        {
            const MutexLock lock(mMutex);
            if (mCaller != number) {
                return false;
            }
            mCaller = 0;
            if (status == android::OK) {
                mLetters.pop_front();
            }
            mDead = mDead || (status == android::DEAD_OBJECT && mSender == number);
        }
        mChanged.notify_all();
        return true;
    }

    /// Not through the callback's proxy, which does not tell whether the client had room.
    static android::status_t send(android::IBinder& to, const Letter& letter) {
        android::Parcel request;
        android::Parcel reply;
        request.writeInt32(static_cast<int32_t>(letter.event));
        request.writeInt32(static_cast<int32_t>(letter.second));
        request.writeInt32(static_cast<int32_t>(letter.third));
        return to.transact(TTS::ICallback::kNotify, request, &reply, android::IBinder::FLAG_ONEWAY);
    }

    /// A client's room is full: gives it time.
    void pause(unsigned number) {
        const auto deadline = steady_clock::now() + std::chrono::milliseconds(10);
        MutexLock lock(mMutex);
        while (mSender == number && lock.waitUntil(mChanged, deadline)) {
        }
    }

    const std::chrono::milliseconds mCallPatience;
    Mutex mMutex;
    std::condition_variable mChanged;
    std::deque<Letter> mLetters VOXTRELD_GUARDED_BY(mMutex);
    unsigned mSender VOXTRELD_GUARDED_BY(mMutex) = 0;  ///< number of the latest
    unsigned mCaller VOXTRELD_GUARDED_BY(mMutex) = 0;  ///< whose call has the front letter; 0: none
    bool mDead VOXTRELD_GUARDED_BY(mMutex) = false;    ///< the latest callback
};

EventOutbox::EventOutbox(const android::sp<TTS::ICallback>& to, std::shared_ptr<const void> held,
                         std::chrono::milliseconds callPatience)
    : mDesk(std::make_shared<Desk>(callPatience)) {
    mDesk->startSender(to, std::move(held));
}

EventOutbox::~EventOutbox() {
    mDesk->close();
}

void EventOutbox::redirect(const android::sp<TTS::ICallback>& to,
                           std::shared_ptr<const void> held) {
    mDesk->startSender(to, std::move(held));
}

bool EventOutbox::post(TTS::Event event, uint32_t second, uint32_t third) {
    return mDesk->post({event, second, third});
}

bool EventOutbox::flush(std::chrono::milliseconds atMost) {
    return mDesk->flush(atMost);
}

}  // namespace voxtreld
