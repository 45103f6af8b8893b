// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_CALLCHANNEL_H
#define VOXTREL_SOCKET_CALLCHANNEL_H

#include <atomic>
#include <cstdint>
#include <memory>

#include "socket/Overtaking.h"
#include "socket/ServerChannel.h"

namespace android::transport {

/// The served end of a socket for calls.
///
/// While a thread is in a call of the channel it does not read the socket. When the call takes
/// long, the stall monitor hands the channel over to the rest of the pool, so that what comes
/// behind is not delayed.
class CallChannel : public ServerChannel {
public:
    /// What all channels that came through one control socket have in common.
    struct Shared {
        Shared();
        std::atomic<uint32_t> oneWaysDone{0};
        /// Null but in the manners of a driver.
        const std::unique_ptr<Overtaking> overtaking;
    };

    CallChannel(const Context& context, Fd socket, const sp<BBinder>& node, QuotaCharge charge,
                std::shared_ptr<Shared> shared);

    std::atomic<uint32_t>& oneWaysDone() const { return mShared->oneWaysDone; }
    Overtaking* overtaking() const { return mShared->overtaking.get(); }

    /// The calling thread is about to carry out a call; a number that `finishCall` wants back.
    uint32_t beginCall();
    /// False: the call took long, and the channel is another thread's now.
    bool finishCall(uint32_t call);

    /// For the stall monitor: the call under way, if any (odd), and taking the channel from it.
    uint32_t progress() const { return mProgress.load(std::memory_order_relaxed); }
    bool handOver(uint32_t call);

private:
    const std::shared_ptr<Shared> mShared;
    // Odd while a call is under way. Each call has a number of its own.
    std::atomic<uint32_t> mProgress{0};
};

}  // namespace android::transport

#endif
