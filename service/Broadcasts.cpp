// SPDX-License-Identifier: Apache-2.0
#include "service/Broadcasts.h"

namespace voxtreld {

void Broadcasts::post(EventOutbox& outbox, uint64_t& next) const {
    for (; next < end(); ++next) {
        const Entry& entry = mEvents[static_cast<size_t>(next - mFirst)];
        (void)outbox.post(entry.event, entry.second, entry.third);
    }
}

void Broadcasts::forget(uint64_t end) {
    for (; mFirst < end && !mEvents.empty(); ++mFirst) {
        mEvents.pop_front();
    }
}

}  // namespace voxtreld
