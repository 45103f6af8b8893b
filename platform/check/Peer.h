// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_PLATFORM_CHECK_PEER_H
#define VOXTREL_PLATFORM_CHECK_PEER_H

#include <stdexcept>
#include <string>

#include "check/Headers.h"
#include "check/Process.h"

namespace check {

/// There is no second process to look with; `what` tells why.
class NoPeer : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// How long whatever should happen at once may take on a busy device.
constexpr std::chrono::seconds kSoon{5};

Deadline soon();

/// The second process, which serves the calls of `PeerNode.h`, and its node as this process sees
/// it.
class Peer {
public:
    /// Starts it and finds its node under a name of its own. Throws NoPeer.
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
