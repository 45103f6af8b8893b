// SPDX-License-Identifier: Apache-2.0
#include "kernel/FlatObject.h"

namespace android::kernel {

namespace {

// In the bits of FLAT_BINDER_FLAG_PRIORITY_MASK: calls to the node need no priority of their own.
constexpr uint32_t kAnyPriority = 0x7F;
// Without FLAT_BINDER_FLAG_ACCEPTS_FDS the driver refuses calls that carry descriptors.
constexpr uint32_t kFlags = kAnyPriority;

flat_binder_object flat(uint32_t type) {
    flat_binder_object object = {};
    object.hdr.type = type;
    object.flags = kFlags;
    return object;
}

}  // namespace

flat_binder_object flatNode(BBinder& node) {
    flat_binder_object object = flat(BINDER_TYPE_BINDER);
    object.binder = toWord(node.getWeakRefs());
    object.cookie = toWord(&node);
    return object;
}

flat_binder_object flatHandle(uint32_t handle) {
    flat_binder_object object = flat(BINDER_TYPE_HANDLE);
    object.handle = handle;
    return object;
}

}  // namespace android::kernel
