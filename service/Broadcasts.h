// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_BROADCASTS_H
#define VOXTREL_SERVICE_BROADCASTS_H

#include <cstddef>
#include <cstdint>
#include <deque>

#include "service/EventOutbox.h"

namespace voxtreld {

/// Events for every client, numbered from 0, as long as some client has not got them yet. Each
/// client has the number of the next that is for it.
///
/// Called on: one thread at a time.
class Broadcasts {
public:
    /// As many as one client may have waiting.
    static constexpr size_t kMax = EventOutbox::kMaxWaiting;

    bool isEmpty() const { return mEvents.empty(); }
    bool isFull() const { return mEvents.size() >= kMax; }

    /// The number of the event that is added next.
    uint64_t end() const { return mFirst + mEvents.size(); }

    void add(TTS::Event event, uint32_t second, uint32_t third) {
        mEvents.push_back({event, second, third});
    }

    /// Posts those from `next` on, and moves `next` behind them.
    void post(EventOutbox& outbox, uint64_t& next) const;

    /// Forgets those before `end`, which every client has got.
    void forget(uint64_t end);

private:
    struct Entry {
        TTS::Event event;
        uint32_t second;
        uint32_t third;
    };

    std::deque<Entry> mEvents;
    uint64_t mFirst = 0;  ///< number of the first that is kept
};

}  // namespace voxtreld

#endif
