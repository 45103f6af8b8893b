// SPDX-License-Identifier: Apache-2.0
#include "service/EventOutbox.h"

#include <deque>
#include <thread>
#include <utility>

namespace voxtreld {

using std::chrono::steady_clock;

/// Each callback has a numbered thread; only the latest sends. An event stays at the front until
/// its call has succeeded, so that the next thread repeats a call that failed.
class EventOutbox::Sender : public std::enable_shared_from_this<Sender> {
public:
    explicit Sender(std::chrono::milliseconds callTimeout) : mCallTimeout(callTimeout) {}

    bool post(const PendingEvent& event) {
        {
            const MutexLock lock(mMutex);
            if (mPending.size() >= kMaxWaiting) {
                return false;
            }
            mPending.push_back(event);
        }
        mChanged.notify_all();
        return true;
    }

    bool flush(std::chrono::milliseconds atMost) {
        const auto deadline = steady_clock::now() + atMost;
        MutexLock lock(mMutex);
        while (!mDead && !mPending.empty()) {
            if (!lock.waitUntil(mChanged, deadline)) {
                return false;
            }
        }
        return true;
    }

    void startThread(const android::sp<TTS::ICallback>& to, std::shared_ptr<const void> held) {
        const android::sp<android::IBinder> binder = android::IInterface::asBinder(to);
        {
            const MutexLock lock(mMutex);
            const unsigned number = mLatest + 1;
            // Detached, so that a client that hangs in a call does not block its removal.
            std::thread([self = shared_from_this(), binder, number, held = std::move(held)] {
                self->run(*binder, number);
            }).detach();
            mLatest = number;
            mDead = false;
        }
        mChanged.notify_all();
    }

    void close() {
        {
            const MutexLock lock(mMutex);
            ++mLatest;
        }
        mChanged.notify_all();
    }

private:
    void run(android::IBinder& to, unsigned number) {
        awaitCall(number);
        PendingEvent event = {};
        while (takeNext(number, event)) {
            const android::status_t status = send(to, event);
            if (conclude(number, status) && status != android::OK) {
                pause(number);
            }
        }
    }

    /// The previous callback's thread may be in a call. Its result decides which event is next; a
    /// call that takes too long counts as a success, so that no event is sent twice.
    void awaitCall(unsigned number) {
        const auto deadline = steady_clock::now() + mCallTimeout;
        MutexLock lock(mMutex);
        while (mLatest == number && mCaller != 0 && lock.waitUntil(mChanged, deadline)) {
        }
        if (mLatest == number && mCaller != 0) {
            mPending.pop_front();
            mCaller = 0;
        }
    }

    /// Waits for an event. @return false when this thread is no longer the latest.
    bool takeNext(unsigned number, PendingEvent& event) {
        MutexLock lock(mMutex);
        while (mLatest == number && (mPending.empty() || mDead)) {
            lock.wait(mChanged);
        }
        if (mLatest != number) {
            return false;
        }
        mCaller = number;
        event = mPending.front();
        return true;
    }

    /// @return false if the result of that call is no longer needed.
    bool conclude(unsigned number, android::status_t status) {
        {
            const MutexLock lock(mMutex);
            if (mCaller != number) {
                return false;
            }
            mCaller = 0;
            if (status == android::OK) {
                mPending.pop_front();
            }
            mDead = mDead || (status == android::DEAD_OBJECT && mLatest == number);
        }
        mChanged.notify_all();
        return true;
    }

    /// Not through the callback's proxy, which does not report whether the transaction failed.
    static android::status_t send(android::IBinder& to, const PendingEvent& event) {
        android::Parcel request;
        android::Parcel reply;
        request.writeInt32(static_cast<int32_t>(event.event));
        request.writeInt32(static_cast<int32_t>(event.second));
        request.writeInt32(static_cast<int32_t>(event.third));
        return to.transact(TTS::ICallback::kNotify, request, &reply, android::IBinder::FLAG_ONEWAY);
    }

    /// The client's buffer is full.
    void pause(unsigned number) {
        const auto deadline = steady_clock::now() + std::chrono::milliseconds(10);
        MutexLock lock(mMutex);
        while (mLatest == number && lock.waitUntil(mChanged, deadline)) {
        }
    }

    const std::chrono::milliseconds mCallTimeout;
    Mutex mMutex;
    std::condition_variable mChanged;
    std::deque<PendingEvent> mPending VOXTRELD_GUARDED_BY(mMutex);
    unsigned mLatest VOXTRELD_GUARDED_BY(mMutex) = 0;  ///< number of the latest thread
    unsigned mCaller VOXTRELD_GUARDED_BY(mMutex) = 0;  ///< sends the front event; 0: none
    bool mDead VOXTRELD_GUARDED_BY(mMutex) = false;    ///< the latest callback
};

EventOutbox::EventOutbox(const android::sp<TTS::ICallback>& to, std::shared_ptr<const void> held,
                         std::chrono::milliseconds callTimeout)
    : mSender(std::make_shared<Sender>(callTimeout)) {
    mSender->startThread(to, std::move(held));
}

EventOutbox::~EventOutbox() {
    mSender->close();
}

void EventOutbox::redirect(const android::sp<TTS::ICallback>& to,
                           std::shared_ptr<const void> held) {
    mSender->startThread(to, std::move(held));
}

bool EventOutbox::post(TTS::Event event, uint32_t second, uint32_t third) {
    return mSender->post({event, second, third});
}

bool EventOutbox::flush(std::chrono::milliseconds atMost) {
    return mSender->flush(atMost);
}

}  // namespace voxtreld
