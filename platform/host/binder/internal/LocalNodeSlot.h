// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BINDER_INTERNAL_LOCALNODESLOT_H
#define VOXTREL_BINDER_INTERNAL_LOCALNODESLOT_H

#include <atomic>

#include "binder/Binder.h"
#include "binder/internal/LocalNode.h"

namespace android::transport {

/// Where an object holds its transport's record: null until the object is first sent to another
/// process, set once.
class LocalNodeSlot {
public:
    static std::atomic<LocalNode*>& of(BBinder& object) { return object.mLocalNode; }
};

}  // namespace android::transport

#endif
