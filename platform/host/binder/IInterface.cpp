// SPDX-License-Identifier: Apache-2.0
#include "binder/IInterface.h"

namespace android {

// Here, where what it returns is a complete type.
sp<IInterface> IBinder::queryLocalInterface(const String16& /*descriptor*/) {
    return nullptr;
}

sp<IBinder> IInterface::asBinder(const IInterface* interface) {
    // Being asked for its binder changes nothing in an interface; the virtual is not const.
    return interface != nullptr ? const_cast<IInterface*>(interface)->onAsBinder() : nullptr;
}

sp<IBinder> IInterface::asBinder(const sp<IInterface>& interface) {
    return asBinder(interface.get());
}

}  // namespace android
