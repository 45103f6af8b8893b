// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_DRAININGSOCKET_H
#define VOXTREL_SOCKET_DRAININGSOCKET_H

#include <memory>
#include <vector>

#include "socket/Wire.h"
#include "support/Fd.h"
#include "utils/Mutex.h"

namespace android::transport {

/// The main socket of a reference that is gone, whose one-way calls may not all have been received.
/// Its owner hangs up when it has read it to the end. Another reference to the same node, which has
/// a socket of its own, sends its first one-way call only then: otherwise it could overtake.
struct DrainingSocket {
    bool isDrained() const;

    NodeId id;
    Fd socket;
};

/// Those of this process that may not be drained yet, at most `kMax`: of more the oldest is given
/// up, and with it the order of its calls and later ones. One that is drained is closed when the
/// next reference comes or goes. Called on: any thread.
class DrainingSockets {
public:
    static constexpr size_t kMax = 64;

    /// Closes `socket` for writing.
    void add(const NodeId& id, Fd socket) PLATFORM_EXCLUDES(mLock);
    /// The one for this node; null when nothing stands in the way of a one-way call to it.
    std::shared_ptr<const DrainingSocket> find(const NodeId& id) PLATFORM_EXCLUDES(mLock);

private:
    void closeDrained() PLATFORM_REQUIRES(mLock);

    Mutex mLock;
    std::vector<std::shared_ptr<const DrainingSocket>> mOldestFirst PLATFORM_GUARDED_BY(mLock);
};

}  // namespace android::transport

#endif
