// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_EVENTOUTBOX_H
#define VOXTREL_SERVICE_EVENTOUTBOX_H

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "ipc/ICallback.h"
#include "service/Locking.h"
#include "vocabulary/Events.h"

namespace voxtreld {

/// The events on their way to one client, in the order in which they were posted, sent from a
/// thread of their own: neither sound, nor a request, nor another client waits for this one to take
/// its mail. A client that takes none is tried again until it does, dies, or is closed.
///
/// Called on: any thread. Locks: its own.
class EventOutbox {
public:
    /// More than any client can have missed that will ever look again.
    static constexpr size_t kMostWaiting = 65536;

    /// @param held kept as long as the thread lives, which may be longer than the outbox does.
    /// Throws `std::system_error` if there is no thread to be had.
    explicit EventOutbox(const android::sp<TTS::ICallback>& to,
                         std::shared_ptr<const void> held = nullptr);
    /// Closes, without waiting for a call to the client that is under way.
    ~EventOutbox();
    EventOutbox(const EventOutbox&) = delete;
    EventOutbox& operator=(const EventOutbox&) = delete;

    /// Returns at once. @return false if the event is dropped because too many wait already.
    bool post(TTS::Event event, uint32_t second, uint32_t third);

    /// Returns when everything posted before the call has been sent, or the time is up.
    /// @return true if it has been sent.
    bool flush(std::chrono::milliseconds atMost);

private:
    struct Letter {
        TTS::Event event;
        uint32_t second;
        uint32_t third;
    };

    /// What the thread works on; it may outlive the outbox by one call to the client.
    class Desk;

    const std::shared_ptr<Desk> mDesk;
};

}  // namespace voxtreld

#endif
