// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BINDER_BINDER_H
#define VOXTREL_BINDER_BINDER_H

#include <atomic>

#include "binder/IBinder.h"

namespace android {

namespace transport {
class LocalNode;
class LocalNodeSlot;
}  // namespace transport

/// An object of this process that other processes may call once they hold a reference to it.
///
/// Called on: binder threads for calls from elsewhere, the caller's own thread for calls from
/// within this process (also one-way ones, whose reply is then filled).
class BBinder : public IBinder {
public:
    BBinder() = default;

    /// Empty unless an interface is implemented (`BnInterface`).
    const String16& getInterfaceDescriptor() const override;
    bool isBinderAlive() const override;
    status_t pingBinder() override;
    status_t transact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags = 0) final;
    status_t linkToDeath(const sp<DeathRecipient>& recipient, void* cookie = nullptr,
                         uint32_t flags = 0) override;
    status_t unlinkToDeath(const wp<DeathRecipient>& recipient, void* cookie = nullptr,
                           uint32_t flags = 0, wp<DeathRecipient>* outRecipient = nullptr) override;
    BBinder* localBinder() override;

    BBinder(const BBinder&) = delete;
    BBinder& operator=(const BBinder&) = delete;

protected:
    ~BBinder() override;

    /// Answers `INTERFACE_TRANSACTION` with the descriptor; any other code gives
    /// `UNKNOWN_TRANSACTION`.
    virtual status_t onTransact(uint32_t code, const Parcel& data, Parcel* reply,
                                uint32_t flags = 0);

private:
    friend class transport::LocalNodeSlot;

    /// Null until the object is first sent to another process.
    std::atomic<transport::LocalNode*> mLocalNode{nullptr};
};

/// Holds the binder behind a proxy object.
class BpRefBase : public virtual RefBase {
public:
    BpRefBase(const BpRefBase&) = delete;
    BpRefBase& operator=(const BpRefBase&) = delete;

protected:
    /// `remote` may be null; so is then `remote()`.
    explicit BpRefBase(const sp<IBinder>& remote);
    ~BpRefBase() override = default;

    IBinder* remote() const { return mRemote.get(); }

private:
    const sp<IBinder> mRemote;
};

}  // namespace android

#endif
