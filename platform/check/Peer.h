// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_PLATFORM_CHECK_PEER_H
#define VOXTREL_PLATFORM_CHECK_PEER_H

#include <string>

#include "check/Headers.h"
#include "check/Process.h"

namespace check {

/// The second process, which serves the calls of `PeerNode.h`, and the proxy of its node.
class Peer {
public:
    /// Starts it and finds its node under a name of its own. Throws CannotCheck.
    Peer();

    const android::sp<android::IBinder>& node() const { return mNode; }
    /// Ends it as `kill -9` does, and waits until it is gone.
    void kill();

private:
    const std::string mName;
    Process mProcess;
    android::sp<android::IBinder> mNode;
};

}  // namespace check

#endif
