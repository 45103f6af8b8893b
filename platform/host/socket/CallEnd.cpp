// SPDX-License-Identifier: Apache-2.0
#include "socket/CallEnd.h"

#include "socket/Shift.h"
#include "support/Manners.h"

namespace android::transport {

CallEnd::Door::Door() : overtaking(gManners.ofDriver ? std::make_unique<Overtaking>() : nullptr) {}

CallEnd::CallEnd(Fd socket, const sp<BBinder>& node, Lease lease, std::shared_ptr<Door> door)
    : ServedEnd(std::move(socket), node, std::move(lease)), mDoor(std::move(door)) {}

void CallEnd::onReady() {
    Shift(shared_from_this()).run();
}

uint32_t CallEnd::beginCall() {
    const uint32_t call = (mProgress.load(std::memory_order_relaxed) + 2) | 1U;
    mProgress.store(call, std::memory_order_relaxed);
    return call;
}

bool CallEnd::finishCall(uint32_t call) {
    return mProgress.compare_exchange_strong(call, call + 1);
}

bool CallEnd::lend(uint32_t call) {
    // As finished: who began it finds out, and whoever takes the socket over counts on from there.
    return mProgress.compare_exchange_strong(call, call + 1);
}

}  // namespace android::transport
