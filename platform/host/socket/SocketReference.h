// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_SOCKETREFERENCE_H
#define VOXTREL_SOCKET_SOCKETREFERENCE_H

#include <atomic>
#include <functional>
#include <memory>

#include "binder/transport/Reference.h"
#include "socket/Context.h"
#include "socket/ControlSocket.h"
#include "socket/IdleSockets.h"
#include "socket/MainChannel.h"
#include "socket/OneWayBudget.h"
#include "utils/Mutex.h"

namespace android::transport {

/// A reference that is a socket, the control socket. Calls travel on sockets of their own: the main
/// channel, and one further socket for each two-way call that is under way at the same time, so
/// that its caller sleeps on its own reply.
class SocketReference final : public Reference {
public:
    /// `predecessor`: see MainChannel. `leadsToManager`: the node is the service manager's. `atEnd`
    /// is told as it goes.
    SocketReference(const Context& context, const NodeId& id, Fd control,
                    std::shared_ptr<const DrainingSocket> predecessor, bool leadsToManager,
                    std::function<void(SocketReference&)> atEnd);
    ~SocketReference() override;
    SocketReference(const SocketReference&) = delete;
    SocketReference& operator=(const SocketReference&) = delete;

    status_t call(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) override;
    bool hasEnded() const override;
    status_t watch(const wp<BpBinder>& proxy) override;
    void unwatch() override;

    const NodeId& id() const { return mId; }
    /// A new reference to the same node, to be given away: a control socket that the node's process
    /// serves, or a dead one when the node has died. Invalid when there are no descriptors left, or
    /// the node's process does not take it. `holder` is who it is for, with the pid 0 when that is
    /// not known.
    Fd share(const PeerIdentity& holder, Deadline& deadline);
    /// See MainChannel.
    Fd takeUndrained() { return mMain.takeUndrained(); }

private:
    class Watch;

    status_t callTwoWay(const Header& header, const Parcel& data, Parcel* reply);
    status_t callOneWay(const Header& header, const Parcel& data);
    status_t callOneWayWithinBudget(Header header, const Parcel& data);
    status_t sendBeside(const Header& header, const Parcel& data, const Attachments& attachments,
                        Deadline& deadline, Fd* socket);
    status_t finish(status_t sent, const Fd& socket, Parcel* reply, uint8_t* room,
                    Deadline& deadline, bool* broken);
    status_t receiveReply(const Fd& socket, uint8_t* room, Parcel* reply, bool* broken);

    const Context& mContext;
    const NodeId mId;
    const ControlSocket mControl;
    const bool mLeadsToManager;
    const std::function<void(SocketReference&)> mAtEnd;
    MainChannel mMain;
    IdleSockets mIdle;
    // The owner did not take the last reference that was passed on: the next one does not wait.
    std::atomic<bool> mDoesNotListen{false};
    // Of the node's process; null but in the manners of a driver.
    const std::unique_ptr<BudgetPage> mBudget;

    Mutex mLock;
    std::shared_ptr<Watch> mWatch PLATFORM_GUARDED_BY(mLock);
};

}  // namespace android::transport

#endif
