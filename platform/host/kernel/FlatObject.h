// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_KERNEL_FLATOBJECT_H
#define VOXTREL_KERNEL_FLATOBJECT_H

#include "binder/Binder.h"
#include "kernel/Protocol.h"

namespace android::kernel {

/// The flat_binder_object that the driver translates. For a node, `binder` is the address of its
/// weak counts, which outlive it, and `cookie` its own.
flat_binder_object flatNode(BBinder& node);
flat_binder_object flatHandle(uint32_t handle);

/// The weak counts and the object of a node of this process, from what the driver returns.
inline RefBase::weakref_type* countsOf(const binder_ptr_cookie& node) {
    return toPointer<RefBase::weakref_type>(node.ptr);
}
inline BBinder* nodeOf(const binder_ptr_cookie& node) {
    return toPointer<BBinder>(node.cookie);
}

}  // namespace android::kernel

#endif
