// SPDX-License-Identifier: Apache-2.0
#include "socket/CallChannel.h"

#include "support/Manners.h"

namespace android::transport {

CallChannel::Shared::Shared()
    : overtaking(gManners.ofDriver ? std::make_unique<Overtaking>() : nullptr) {}

CallChannel::CallChannel(const Context& context, Fd socket, const sp<BBinder>& node,
                         QuotaCharge charge, std::shared_ptr<Shared> shared)
    : ServerChannel(context, std::move(socket), node, std::move(charge)),
      mShared(std::move(shared)) {}

uint32_t CallChannel::beginCall() {
    const uint32_t call = (mProgress.load(std::memory_order_relaxed) + 2) | 1U;
    mProgress.store(call, std::memory_order_relaxed);
    return call;
}

bool CallChannel::finishCall(uint32_t call) {
    return mProgress.compare_exchange_strong(call, call + 1);
}

bool CallChannel::handOver(uint32_t call) {
    // As finished: the thread that began it finds out, and the one that takes over counts on.
    return mProgress.compare_exchange_strong(call, call + 1);
}

}  // namespace android::transport
