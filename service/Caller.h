// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_CALLER_H
#define VOXTREL_SERVICE_CALLER_H

#include <cstdint>

namespace voxtreld {

/// The sender of a request, as reported by the kernel.
struct Caller {
    uint32_t pid;
    uint32_t uid;
};

}  // namespace voxtreld

#endif
