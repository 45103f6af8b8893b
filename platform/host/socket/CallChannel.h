// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_CALLCHANNEL_H
#define VOXTREL_SOCKET_CALLCHANNEL_H

#include <atomic>
#include <cstdint>
#include <memory>

#include "socket/ServerChannel.h"
#include "socket/StallMonitor.h"
#include "support/Manners.h"
#include "support/Overtaking.h"

namespace android::transport {

/// The served end of a socket for calls.
///
/// The thread that is woken receives the call, carries it out and answers, and then sleeps on the
/// socket itself for a while, so that a busy caller is served with one receive and one send a call.
class CallChannel final : public ServerChannel, public std::enable_shared_from_this<CallChannel> {
public:
    /// What all channels that came through one control socket have in common.
    struct Shared {
        std::atomic<uint32_t> oneWaysDone{0};
        /// Null but in the manners of a driver.
        const std::unique_ptr<Overtaking> overtaking =
            gManners.ofDriver ? std::make_unique<Overtaking>() : nullptr;
    };

    CallChannel(const Context& context, Fd socket, const sp<BBinder>& node, QuotaCharge charge,
                std::shared_ptr<Shared> shared)
        : ServerChannel(context, std::move(socket), node, std::move(charge)),
          mShared(std::move(shared)) {}

    void onReady() override;

    Shared& shared() const { return *mShared; }
    CallProgress& progress() { return mProgress; }

private:
    const std::shared_ptr<Shared> mShared;
    CallProgress mProgress;
};

}  // namespace android::transport

#endif
