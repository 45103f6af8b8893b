// SPDX-License-Identifier: Apache-2.0
#include "socket/OneWayQueue.h"

#include <utility>

#include "socket/CallChannel.h"
#include "socket/Incoming.h"
#include "socket/OneWayBudget.h"

namespace android::transport {

namespace {

constexpr size_t kMaxOfOneConnection = 16;
constexpr size_t kMaxBytes = kLargestOneWay;

}  // namespace

OneWayQueue::Place OneWayQueue::enter(const std::shared_ptr<CallChannel>& end,
                                      std::unique_ptr<Incoming>& message) {
    Mutex::Autolock held(mLock);
    if (!mBusy) {
        mBusy = true;
        return Place::Mine;
    }
    // Only here, where the message is left waiting: the turn is taken without it.
    const Envelope& envelope = message->envelope;
    message->charge.emplace(PeerIdentity{envelope.senderPid(), envelope.senderUid()},
                            envelope.highestFd(), message->amount());
    if (!message->charge->granted()) {
        return Place::Refused;
    }
    const bool scarce = message->charge->scarce();
    const bool counted = isCounted(envelope.header());
    const size_t size = message->parcel.dataSize();
    mBytes += size;
    mWaiting.push_back({end, std::move(message), size});
    Share& share = mShares[end.get()];
    ++share.messages;
    share.bytes += size;
    // What is counted in the budget is limited there, for all connections together.
    share.full = !counted && (share.messages >= kMaxOfOneConnection ||
                              ((scarce || mBytes >= kMaxBytes) && !share.isPromised()));
    return share.full ? Place::Full : Place::Waiting;
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
    const auto share = mShares.find(first.end.get());
    --share->second.messages;
    share->second.bytes -= first.size;
    const bool readOn = share->second.full && share->second.isPromised();
    if (readOn) {
        share->second.full = false;
    }
    if (share->second.messages == 0) {
        mShares.erase(share);
    }
    return {std::move(first.message), std::move(first.end), readOn};
}

}  // namespace android::transport
