// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_KERNEL_FLATOBJECT_H
#define VOXTREL_KERNEL_FLATOBJECT_H

#include "binder/Binder.h"
#include "kernel/Protocol.h"

namespace android::kernel {

/// A binder as 24 bytes of a parcel that the driver translates. A node is named by its weak counts,
/// which outlive it, and carries its own address as the cookie.
flat_binder_object flatNode(BBinder& node);
flat_binder_object flatHandle(uint32_t handle);

/// The weak counts and the object of a node that this process has sent, from the driver's words.
inline RefBase::weakref_type* countsOf(const binder_ptr_cookie& node) {
    return toPointer<RefBase::weakref_type>(node.ptr);
}
inline BBinder* nodeOf(const binder_ptr_cookie& node) {
    return toPointer<BBinder>(node.cookie);
}

}  // namespace android::kernel

#endif
