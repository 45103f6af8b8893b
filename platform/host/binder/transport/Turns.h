// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BINDER_TRANSPORT_TURNS_H
#define VOXTREL_BINDER_TRANSPORT_TURNS_H

#include <deque>
#include <memory>
#include <optional>

#include "utils/Mutex.h"

namespace android::transport {

class LaneEnd;
struct Incoming;

/// A lane that has, or may have, something to be served; with the message when it was taken off the
/// socket already.
struct Turn {
    std::shared_ptr<LaneEnd> lane;
    std::unique_ptr<Incoming> message;
};

/// One-way calls to a node are served one at a time: whoever comes while a thread is at it leaves
/// its lane here, and that thread goes on with it. What was not received waits in the sockets, so
/// that a slow node costs no memory here and its callers feel it.
class Turns {
public:
    /// True: it is the caller's turn, `turn` is still its own. False: `turn` has been left here.
    bool enter(Turn& turn) PLATFORM_EXCLUDES(mLock);
    /// Ends the caller's turn; it goes on with the one given, if any.
    std::optional<Turn> leave() PLATFORM_EXCLUDES(mLock);

private:
    Mutex mLock;
    bool mBusy PLATFORM_GUARDED_BY(mLock) = false;
    std::deque<Turn> mWaiting PLATFORM_GUARDED_BY(mLock);
};

}  // namespace android::transport

#endif
