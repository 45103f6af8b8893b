// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_EVENTOUTBOX_H
#define VOXTREL_SERVICE_EVENTOUTBOX_H

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "ipc/ICallback.h"
#include "service/Locking.h"
#include "vocabulary/Events.h"

namespace voxtreld {

/// Sends events to one client, in the order in which they were posted, from a thread of its own, so
/// that a slow client delays neither sound nor requests nor other clients. A call that fails is
/// repeated until it succeeds or the outbox is closed; events for a client that has died are kept
/// for its next callback.
///
/// Called on: any thread. Locks: its own.
class EventOutbox {
public:
    /// Events that are kept at most.
    static constexpr size_t kMaxWaiting = 65536;

    /// A one-way call takes a runtime 100 ms at most.
    static constexpr std::chrono::seconds kCallTimeout{1};

    /// @param held kept as long as the thread lives, which may be longer than the outbox does.
    /// @param callTimeout how long `redirect` waits for a call that has begun.
    /// Throws `std::system_error` if no thread can be started.
    explicit EventOutbox(const android::sp<TTS::ICallback>& to,
                         std::shared_ptr<const void> held = nullptr,
                         std::chrono::milliseconds callTimeout = kCallTimeout);
    /// Closes without waiting for a call to the client that has begun.
    ~EventOutbox();
    EventOutbox(const EventOutbox&) = delete;
    EventOutbox& operator=(const EventOutbox&) = delete;

    /// Sends pending and later events to another callback of the client, from another thread. An
    /// event whose call has begun counts as sent unless the call fails in time.
    /// Throws as the constructor, with nothing changed.
    void redirect(const android::sp<TTS::ICallback>& to,
                  std::shared_ptr<const void> held = nullptr);

    /// Returns at once. @return false if the event is dropped because too many are pending.
    bool post(TTS::Event event, uint32_t second, uint32_t third);

    /// Returns when everything posted before the call has been sent, or the time is up.
    /// @return true if it has been sent, or the client is dead.
    bool flush(std::chrono::milliseconds atMost);

private:
    struct PendingEvent {
        TTS::Event event;
        uint32_t second;
        uint32_t third;
    };

    /// Shared with the threads; outlives the outbox by at most one call to the client.
    class Sender;

    const std::shared_ptr<Sender> mSender;
};

}  // namespace voxtreld

#endif
