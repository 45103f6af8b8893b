// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_KERNEL_HANDLEREFERENCE_H
#define VOXTREL_KERNEL_HANDLEREFERENCE_H

#include <cstdint>

#include "binder/BpBinder.h"
#include "binder/transport/Reference.h"

namespace android::kernel {

/// A reference by a handle of the driver.
class HandleReference : public transport::Reference {
public:
    explicit HandleReference(uint32_t handle) : mHandle(handle) {}

    uint32_t handle() const { return mHandle; }

private:
    const uint32_t mHandle;
};

/// All proxies of a process whose transport is the driver have such a reference.
inline uint32_t handleOf(const BpBinder& proxy) {
    return static_cast<HandleReference&>(proxy.reference()).handle();
}

}  // namespace android::kernel

#endif
