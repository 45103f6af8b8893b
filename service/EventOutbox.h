// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_EVENTOUTBOX_H
#define VOXTREL_SERVICE_EVENTOUTBOX_H

#include <condition_variable>
#include <cstdint>
#include <thread>
#include <vector>

#include "ipc/ICallback.h"
#include "service/Events.h"
#include "service/Locking.h"

namespace voxtreld {

/// Sends events to callbacks from a thread of its own, in the order in which they were posted, so
/// that neither sound nor a request ever waits for a client to take its mail.
///
/// Called on: any thread. Locks: its own.
class EventOutbox {
public:
    EventOutbox();
    /// Sends what has been posted, then ends its thread.
    ~EventOutbox();
    EventOutbox(const EventOutbox&) = delete;
    EventOutbox& operator=(const EventOutbox&) = delete;

    void post(const android::sp<TTS::ICallback>& to, Event event, uint32_t second, uint32_t third);

    /// Returns when everything posted before the call has been sent.
    void flush();

private:
    struct Letter {
        android::sp<TTS::ICallback> to;
        Event event;
        uint32_t second;
        uint32_t third;
    };

    void run();
    std::vector<Letter> collect();

    Mutex mMutex;
    std::condition_variable mPosted;
    std::condition_variable mEmptied;
    std::vector<Letter> mLetters VOXTRELD_GUARDED_BY(mMutex);
    bool mSending VOXTRELD_GUARDED_BY(mMutex) = false;
    bool mClosed VOXTRELD_GUARDED_BY(mMutex) = false;
    std::thread mThread;
};

}  // namespace voxtreld

#endif
