// SPDX-License-Identifier: Apache-2.0
#include "socket/OneWayQueue.h"

#include <utility>

#include "socket/OneWayBudget.h"

namespace android::transport {

namespace {

constexpr size_t kMaxOfOneConnection = 16;
constexpr size_t kMaxBytes = kLargestOneWay;

}  // namespace

OneWayQueue::Entry OneWayQueue::enter(Quotas& quotas, const std::shared_ptr<CallChannel>& channel,
                                      std::unique_ptr<Incoming>& message) {
    Mutex::Autolock held(mLock);
    if (!mBusy) {
        mBusy = true;
        return Entry::ServeNow;
    }
    // Charged only when it is queued: a message that is served at once needs none.
    const Envelope& envelope = message->envelope;
    const size_t size = message->parcel.dataSize();
    message->charge.emplace(quotas, PeerIdentity{envelope.senderPid(), envelope.senderUid()},
                            envelope.highestFd(),
                            QuotaAmount{envelope.fdCount(), sizeof(Incoming) + size});
    if (!message->charge->granted()) {
        return Entry::Refused;
    }
    const bool scarce = message->charge->scarce();
    const bool counted = isCounted(envelope.header());
    mBytes += size;
    mWaiting.push_back({channel, std::move(message), size});
    Share& share = mShares[channel.get()];
    ++share.messages;
    share.bytes += size;
    // What is counted in the budget is limited there, for all connections together.
    share.full = !counted && (share.messages >= kMaxOfOneConnection ||
                              ((scarce || mBytes >= kMaxBytes) && !share.isPromised()));
    return share.full ? Entry::Full : Entry::Queued;
}

OneWayQueue::Next OneWayQueue::next() {
    Mutex::Autolock held(mLock);
    if (mWaiting.empty()) {
        mBusy = false;
        return {};
    }
    Waiting first = std::move(mWaiting.front());
    mWaiting.pop_front();
    mBytes -= first.size;
    const auto share = mShares.find(first.channel.get());
    --share->second.messages;
    share->second.bytes -= first.size;
    const bool readOn = share->second.full && share->second.isPromised();
    if (readOn) {
        share->second.full = false;
    }
    if (share->second.messages == 0) {
        mShares.erase(share);
    }
    return {std::move(first.message), std::move(first.channel), readOn};
}

}  // namespace android::transport
