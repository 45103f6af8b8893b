// SPDX-License-Identifier: Apache-2.0
#include "socket/OneWayQueue.h"

#include <new>
#include <utility>

#include "socket/OneWayBudget.h"

namespace android::transport {

namespace {

// A channel with so many queued is not read until no more than `kMaxAhead` are left, so that the
// thread that reads it again takes several at once.
constexpr size_t kMaxMessages = size_t{2} * kMaxAhead;

}  // namespace

OneWayQueue::Entry OneWayQueue::enter(Quotas& quotas, const std::shared_ptr<CallChannel>& channel,
                                      std::unique_ptr<Incoming>& message) {
    Mutex::Autolock held(mLock);
    if (!mBusy) {
        mBusy = true;
        return Entry::ServeNow;
    }
    try {
        return put(quotas, channel, message);
    } catch (const std::bad_alloc&) {
        return Entry::OutOfMemory;
    }
}

OneWayQueue::Entry OneWayQueue::put(Quotas& quotas, const std::shared_ptr<CallChannel>& channel,
                                    std::unique_ptr<Incoming>& message) {
    // Charged only when it is queued: a message that is served at once needs none.
    const Envelope& envelope = message->envelope;
    const size_t size = message->parcel.dataSize();
    message->charge.emplace(quotas, PeerIdentity{envelope.senderPid(), envelope.senderUid()},
                            envelope.highestFd(),
                            QuotaAmount{envelope.fdCount(), sizeof(Incoming) + size});
    if (!message->charge->granted()) {
        return Entry::Refused;
    }
    // Where memory runs out the message is still the caller's, and nothing counts it.
    Amount& amount = mAmounts[channel.get()];
    mQueued.emplace_back();
    ++amount.messages;
    amount.bytes += size;
    // What is counted in the budget is limited there, for all connections together.
    amount.full = !isCounted(envelope.header()) &&
                  (amount.messages >= kMaxMessages || amount.bytes > kMaxBytesAhead);
    mQueued.back() = {channel, std::move(message)};
    return amount.full ? Entry::Full : Entry::Queued;
}

OneWayQueue::Next OneWayQueue::next() {
    Mutex::Autolock held(mLock);
    if (mQueued.empty()) {
        mBusy = false;
        return {};
    }
    Queued first = std::move(mQueued.front());
    mQueued.pop_front();
    const auto found = mAmounts.find(first.channel.get());
    Amount& amount = found->second;
    --amount.messages;
    amount.bytes -= first.message->parcel.dataSize();
    const bool readOn =
        amount.full && amount.messages <= kMaxAhead && amount.bytes <= kMaxBytesAhead;
    if (readOn) {
        amount.full = false;
    }
    if (amount.messages == 0) {
        mAmounts.erase(found);
    }
    return {std::move(first.message), std::move(first.channel), readOn};
}

}  // namespace android::transport
