// SPDX-License-Identifier: Apache-2.0
#include "check/Probe.h"

namespace check {

IMPLEMENT_META_INTERFACE(Probe, "voxtrel.platform.check.IProbe")

BpProbe::BpProbe(const android::sp<android::IBinder>& remote)
    : android::BpInterface<IProbe>(remote) {}

int32_t BpProbe::first() {
    return 0;
}

int32_t BpProbe::second() {
    return 0;
}

int32_t BnProbe::first() {
    return 1;
}

int32_t BnProbe::second() {
    return 2;
}

}  // namespace check
