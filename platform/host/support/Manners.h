// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SUPPORT_MANNERS_H
#define VOXTREL_SUPPORT_MANNERS_H

#include <cstdint>

namespace android::transport {

/// Whether this runtime keeps only the promises of a runtime over the kernel's driver, for tests.
/// Read from the environment while the library is loaded; it does not change.
struct Manners {
    /// $VOXTREL_BINDER_MANNERS is "driver".
    bool ofDriver = false;
    /// Selects the one-way calls that are overtaken: $VOXTREL_BINDER_SEED, or drawn, and then set
    /// in the environment for the programs that this one starts.
    uint32_t seed = 0;
};

extern const Manners gManners;

}  // namespace android::transport

#endif
