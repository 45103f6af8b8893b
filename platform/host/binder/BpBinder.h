// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BINDER_BPBINDER_H
#define VOXTREL_BINDER_BPBINDER_H

#include <atomic>
#include <memory>
#include <vector>

#include "binder/IBinder.h"
#include "utils/Mutex.h"

namespace android {

namespace transport {
class Reference;
}

/// The proxy of a node that lives in another process; made by the runtime, one a node and process.
///
/// Called on: any thread. Locks: its own, never while it calls the node or a recipient.
class BpBinder : public IBinder {
public:
    /// Where memory runs out the reference is still the caller's.
    explicit BpBinder(std::unique_ptr<transport::Reference>&& reference);

    /// Empty when the node cannot be asked.
    const String16& getInterfaceDescriptor() const override;
    bool isBinderAlive() const override;
    status_t pingBinder() override;
    status_t transact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags = 0) final;
    status_t linkToDeath(const sp<DeathRecipient>& recipient, void* cookie = nullptr,
                         uint32_t flags = 0) override;
    status_t unlinkToDeath(const wp<DeathRecipient>& recipient, void* cookie = nullptr,
                           uint32_t flags = 0, wp<DeathRecipient>* outRecipient = nullptr) override;
    BpBinder* remoteBinder() override;

    BpBinder(const BpBinder&) = delete;
    BpBinder& operator=(const BpBinder&) = delete;

    /// For the transport: the node has gone; each link is told, once.
    void reportDeath();
    /// For the service manager: has the node gone, whether or not anybody has noticed? Asks the
    /// kernel, never the node.
    bool nodeHasEnded() const;
    transport::Reference& reference() const { return *mReference; }

protected:
    ~BpBinder() override;

private:
    void tell(DeathRecipient& recipient);

    struct Link {
        wp<DeathRecipient> recipient;
        void* cookie;
        uint32_t flags;
    };

    std::unique_ptr<transport::Reference> mReference;  // never replaced
    std::atomic<bool> mAlive{true};
    mutable Mutex mLock;
    std::vector<Link> mLinks PLATFORM_GUARDED_BY(mLock);
    bool mReported PLATFORM_GUARDED_BY(mLock) = false;
    mutable std::unique_ptr<const String16> mDescriptor PLATFORM_GUARDED_BY(mLock);
};

}  // namespace android

#endif
