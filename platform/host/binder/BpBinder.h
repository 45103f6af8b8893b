// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BINDER_BPBINDER_H
#define VOXTREL_BINDER_BPBINDER_H

#include "binder/IBinder.h"

namespace android {

/// The proxy of a node that lives in another process; made by the runtime, one a node and process.
class BpBinder : public IBinder {
public:
    const String16& getInterfaceDescriptor() const override;
    bool isBinderAlive() const override;
    status_t pingBinder() override;
    status_t transact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags = 0) final;
    status_t linkToDeath(const sp<DeathRecipient>& recipient, void* cookie = nullptr,
                         uint32_t flags = 0) override;
    status_t unlinkToDeath(const wp<DeathRecipient>& recipient, void* cookie = nullptr,
                           uint32_t flags = 0, wp<DeathRecipient>* outRecipient = nullptr) override;
    BpBinder* remoteBinder() override;

protected:
    ~BpBinder() override;
};

}  // namespace android

#endif
