// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BINDER_INTERNAL_MANAGERCALL_H
#define VOXTREL_BINDER_INTERNAL_MANAGERCALL_H

#include "binder/Parcel.h"

namespace android {

/// Calls the service manager, and once more where the first one has just died: there may be a next
/// one already. DEAD_OBJECT: there is none.
status_t callManager(uint32_t code, const Parcel& data, Parcel* reply);

}  // namespace android

#endif
