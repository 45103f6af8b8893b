// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_DRAININGSOCKET_H
#define VOXTREL_SOCKET_DRAININGSOCKET_H

#include <memory>
#include <vector>

#include "socket/Reactor.h"
#include "socket/Wire.h"
#include "utils/Mutex.h"

namespace android::transport {

class DrainingSockets;

/// The main socket of a reference that is gone, whose one-way calls may not all have been received.
/// Its owner hangs up when it has read it to the end. Another reference to the same node, which has
/// a socket of its own, sends its first one-way call only then: otherwise it could overtake.
class DrainingSocket final : public EventHandler {
public:
    /// Closes `socket` for writing.
    DrainingSocket(DrainingSockets& all, const NodeId& id, Fd socket);
    void onReady() override;

    const NodeId& id() const { return mId; }
    bool isDrained() const;

private:
    DrainingSockets& mAll;
    const NodeId mId;
};

/// Those of this process that may not be drained yet, at most `kMax`: of more the oldest is given
/// up, and with it the order of its calls and later ones. Called on: any thread.
class DrainingSockets {
public:
    static constexpr size_t kMax = 64;

    explicit DrainingSockets(Reactor& reactor) : mReactor(reactor) {}

    void add(const NodeId& id, Fd socket) PLATFORM_EXCLUDES(mLock);
    /// The one for this node; null when nothing stands in the way of a one-way call to it.
    std::shared_ptr<DrainingSocket> find(const NodeId& id) PLATFORM_EXCLUDES(mLock);
    void remove(const DrainingSocket& socket) PLATFORM_EXCLUDES(mLock);

private:
    using List = std::vector<std::shared_ptr<DrainingSocket>>;
    void letGo(List::iterator one) PLATFORM_REQUIRES(mLock);

    Reactor& mReactor;
    Mutex mLock;
    List mOldestFirst PLATFORM_GUARDED_BY(mLock);
};

}  // namespace android::transport

#endif
