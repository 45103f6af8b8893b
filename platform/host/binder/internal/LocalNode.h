// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BINDER_INTERNAL_LOCALNODE_H
#define VOXTREL_BINDER_INTERNAL_LOCALNODE_H

namespace android::transport {

/// What a transport keeps about an object of this process that other processes may call. It belongs
/// to the transport; the object only holds its address (`LocalNodeSlot`).
class LocalNode {
public:
    /// The object is being destroyed: it can be neither called nor promoted any more.
    /// Called on: the thread that let go of it last, also in a forked child.
    virtual void objectDestroyed() = 0;

protected:
    ~LocalNode() = default;
};

}  // namespace android::transport

#endif
