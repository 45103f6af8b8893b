// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SUPPORT_MANNERS_H
#define VOXTREL_SUPPORT_MANNERS_H

#include <cstdint>

namespace android::transport {

/// What the environment asks of this runtime where the one over the kernel's driver keeps fewer
/// promises. Read while the library is loaded, and the same ever after.
struct Manners {
    /// $VOXTREL_BINDER_MANNERS is "driver".
    bool ofDriver = false;
    /// Says which one-way calls are overtaken: $VOXTREL_BINDER_SEED, or drawn, and then set in the
    /// environment for the programs that this one starts.
    uint32_t seed = 0;
};

extern const Manners gManners;

}  // namespace android::transport

#endif
