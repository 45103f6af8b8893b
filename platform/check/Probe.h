// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_PLATFORM_CHECK_PROBE_H
#define VOXTREL_PLATFORM_CHECK_PROBE_H

#include "check/Headers.h"

namespace check {

/// An interface like those of the library.
class IProbe : public android::IInterface {
public:
    DECLARE_META_INTERFACE(Probe)

    virtual int32_t first() = 0;
    virtual int32_t second() = 0;
};

class BpProbe : public android::BpInterface<IProbe> {
public:
    explicit BpProbe(const android::sp<android::IBinder>& remote);
    int32_t first() override;
    int32_t second() override;
    bool hasRemote() const { return remote() != nullptr; }
};

class BnProbe : public android::BnInterface<IProbe> {
public:
    int32_t first() override;
    int32_t second() override;
};

}  // namespace check

#endif
