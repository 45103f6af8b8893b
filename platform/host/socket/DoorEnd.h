// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_DOOREND_H
#define VOXTREL_SOCKET_DOOREND_H

#include <memory>

#include "socket/CallEnd.h"

namespace android::transport {

/// The served end of a reference. Its peer sends further sockets through it that are to be served
/// for the same node.
class DoorEnd final : public ServedEnd {
public:
    using ServedEnd::ServedEnd;
    void onReady() override;
    bool isBrief() const override { return true; }

private:
    std::shared_ptr<Source> makeEnd(Role role, Fd socket, Lease lease) const;

    /// False when the door has been closed.
    bool take(Received received, Envelope& envelope);
    /// False when the message is none that may come through a door, which is closed then.
    bool adopt(Envelope& envelope);

    const std::shared_ptr<CallEnd::Door> mDoor = std::make_shared<CallEnd::Door>();
};

}  // namespace android::transport

#endif
