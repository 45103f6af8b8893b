// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_CALLCHANNEL_H
#define VOXTREL_SOCKET_CALLCHANNEL_H

#include <atomic>
#include <cstdint>
#include <memory>

#include "socket/Overtaking.h"
#include "socket/ServerChannel.h"

namespace android::transport {

/// The served end of a socket for calls. The thread that is woken by a call serves it and answers,
/// and then sleeps on the socket itself for a while: a busy caller is served with one receive and
/// one send a call.
///
/// While that thread is in a call it does not read the socket. When the call takes long, the
/// stall monitor lends the socket to the rest of the pool, so that what comes behind is not held
/// up.
class CallChannel final : public ServerChannel, public std::enable_shared_from_this<CallChannel> {
public:
    /// What all sockets that came through one control socket have in common.
    struct Control {
        Control();
        std::atomic<uint32_t> oneWaysDone{0};
        /// Null but in the manners of a driver.
        const std::unique_ptr<Overtaking> overtaking;
    };

    CallChannel(Fd socket, const sp<BBinder>& node, QuotaCharge charge,
                std::shared_ptr<Control> control);
    void onReady() override;

    std::atomic<uint32_t>& oneWaysDone() const { return mControl->oneWaysDone; }
    Overtaking* overtaking() const { return mControl->overtaking.get(); }

    /// The calling thread is about to carry out a call; a number that `finishCall` wants back.
    uint32_t beginCall();
    /// False: the call took long, and the socket is another thread's now.
    bool finishCall(uint32_t call);

    /// For the stall monitor: the call under way, if any (odd), and taking the socket from it.
    uint32_t progress() const { return mProgress.load(std::memory_order_relaxed); }
    bool lend(uint32_t call);

private:
    const std::shared_ptr<Control> mControl;
    // Odd while a call is under way. Each call has a number of its own.
    std::atomic<uint32_t> mProgress{0};
};

}  // namespace android::transport

#endif
