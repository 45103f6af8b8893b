// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BINDER_INTERNAL_INTERFACETOKEN_H
#define VOXTREL_BINDER_INTERNAL_INTERFACETOKEN_H

#include "binder/Parcel.h"

namespace android {

/// What a request of the platform's own interfaces begins with: the strict-mode policy of its
/// sender, which nobody here has, and the name of the interface.
inline void writeInterfaceToken(Parcel& request, const String16& interface) {
    request.writeInt32(0);
    request.writeString16(interface);
}

/// False for a request of another interface. The policy does not matter.
inline bool readInterfaceToken(const Parcel& request, const String16& interface) {
    (void)request.readInt32();
    return request.readString16() == interface;
}

}  // namespace android

#endif
