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

/// The events on their way to one client, in the order in which they were posted, sent from a
/// thread of their own: neither sound, nor a request, nor another client waits for this one to take
/// its mail. A client that takes none is tried again until it does or is closed; what waits for one
/// that is dead waits for its next callback.
///
/// Called on: any thread. Locks: its own.
class EventOutbox {
public:
    /// More than any client can have missed that will ever look again.
    static constexpr size_t kMostWaiting = 65536;

    /// A one-way call takes a runtime 100 ms at most.
    static constexpr std::chrono::seconds kCallPatience{1};

    /// @param held kept as long as the thread lives, which may be longer than the outbox does.
    /// @param callPatience how long `redirect` lets the next callback wait for a call that is under
    ///     way.
    /// Throws `std::system_error` if there is no thread to be had.
    explicit EventOutbox(const android::sp<TTS::ICallback>& to,
                         std::shared_ptr<const void> held = nullptr,
                         std::chrono::milliseconds callPatience = kCallPatience);
    /// Closes, without waiting for a call to the client that is under way.
    ~EventOutbox();
    EventOutbox(const EventOutbox&) = delete;
    EventOutbox& operator=(const EventOutbox&) = delete;

    /// What waits, and what is posted from now on, goes to another callback of the client, from
    /// another thread. An event that is under way counts as sent unless its call fails in time.
    /// Throws as the constructor, with nothing changed.
    void redirect(const android::sp<TTS::ICallback>& to,
                  std::shared_ptr<const void> held = nullptr);

    /// Returns at once. @return false if the event is dropped because too many wait already.
    bool post(TTS::Event event, uint32_t second, uint32_t third);

    /// Returns when everything posted before the call has been sent, or the time is up.
    /// @return true if it has been sent, or the client is dead.
    bool flush(std::chrono::milliseconds atMost);

private:
    struct Letter {
        TTS::Event event;
        uint32_t second;
        uint32_t third;
    };

    /// What the threads work on; it may outlive the outbox by one call to the client.
    class Desk;

    const std::shared_ptr<Desk> mDesk;
};

}  // namespace voxtreld

#endif
