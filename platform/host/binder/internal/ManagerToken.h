// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BINDER_INTERNAL_MANAGERTOKEN_H
#define VOXTREL_BINDER_INTERNAL_MANAGERTOKEN_H

#include "binder/Parcel.h"

namespace android {

/// Not the interface's `descriptor`: a thread may ask the service manager while the process ends,
/// when that string has been destroyed.
constexpr const char* kServiceManagerInterface = "android.os.IServiceManager";

/// What a request to the service manager begins with: the strict-mode policy of its sender, which
/// nobody here has, and the name of the interface.
inline void writeManagerToken(Parcel& request) {
    request.writeInt32(0);
    request.writeString16(String16(kServiceManagerInterface));
}

/// False for a request of another interface. The policy does not matter.
inline bool readManagerToken(const Parcel& request) {
    (void)request.readInt32();
    return request.readString16() == String16(kServiceManagerInterface);
}

}  // namespace android

#endif
