// SPDX-License-Identifier: Apache-2.0
#include "socket/CallChannel.h"

#include "socket/ConnectionServer.h"
#include "support/Manners.h"

namespace android::transport {

CallChannel::Control::Control()
    : overtaking(gManners.ofDriver ? std::make_unique<Overtaking>() : nullptr) {}

CallChannel::CallChannel(Fd socket, const sp<BBinder>& node, QuotaCharge charge,
                         std::shared_ptr<Control> control)
    : ServerChannel(std::move(socket), node, std::move(charge)), mControl(std::move(control)) {}

void CallChannel::onReady() {
    ConnectionServer(shared_from_this()).run();
}

uint32_t CallChannel::beginCall() {
    const uint32_t call = (mProgress.load(std::memory_order_relaxed) + 2) | 1U;
    mProgress.store(call, std::memory_order_relaxed);
    return call;
}

bool CallChannel::finishCall(uint32_t call) {
    return mProgress.compare_exchange_strong(call, call + 1);
}

bool CallChannel::lend(uint32_t call) {
    // As finished: who began it finds out, and whoever takes the socket over counts on from there.
    return mProgress.compare_exchange_strong(call, call + 1);
}

}  // namespace android::transport
