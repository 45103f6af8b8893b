// SPDX-License-Identifier: Apache-2.0
#include "kernel/FlatObject.h"

namespace android::kernel {

namespace {

// The lowest priority a thread that serves the node needs to have: none in particular.
constexpr uint32_t kAnyPriority = 0x7F;

flat_binder_object flat(uint32_t type) {
    flat_binder_object object = {};
    object.hdr.type = type;
    object.flags = kAnyPriority;
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
