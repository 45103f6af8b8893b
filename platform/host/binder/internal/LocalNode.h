// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BINDER_INTERNAL_LOCALNODE_H
#define VOXTREL_BINDER_INTERNAL_LOCALNODE_H

#include <atomic>

#include "binder/Binder.h"

namespace android::transport {

/// What a transport keeps about an object of this process that other processes may call. It belongs
/// to the transport; the object only holds its address.
class LocalNode {
public:
    /// The object is being destroyed: it can be neither called nor promoted any more.
    /// Called on: the thread that let go of it last, also in a forked child.
    virtual void objectDestroyed() = 0;

protected:
    ~LocalNode() = default;
};

/// Where an object holds it: null until a transport first sends the object to another process, set
/// once.
class LocalNodeSlot {
public:
    static std::atomic<LocalNode*>& of(BBinder& object) { return object.mLocalNode; }
};

}  // namespace android::transport

#endif
