// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BINDER_IBINDER_H
#define VOXTREL_BINDER_IBINDER_H

#include <cstdint>

#include "utils/Errors.h"
#include "utils/RefBase.h"
#include "utils/String16.h"
#include "utils/StrongPointer.h"

#define B_PACK_CHARS(c1, c2, c3, c4) \
    ((((c1) << 24)) | (((c2) << 16)) | (((c3) << 8)) | (c4))  // NOLINT: public API

namespace android {

class BBinder;
class BpBinder;
class IInterface;
class Parcel;

/// Something that can be called: an object of this process (`BBinder`) or the proxy of one that
/// lives elsewhere (`BpBinder`). Never on the stack, always held by `sp<>`.
class IBinder : public virtual RefBase {
public:
    enum {
        FIRST_CALL_TRANSACTION = 0x00000001,
        LAST_CALL_TRANSACTION = 0x00ffffff,

        PING_TRANSACTION = B_PACK_CHARS('_', 'P', 'N', 'G'),
        INTERFACE_TRANSACTION = B_PACK_CHARS('_', 'N', 'T', 'F'),

        /// The caller does not wait, and no reply comes back.
        FLAG_ONEWAY = 0x00000001,
    };

    /// The implementation of interface `descriptor` in this very process, or null.
    virtual sp<IInterface> queryLocalInterface(const String16& descriptor);

    /// The name of the interface behind the binder. A proxy asks the remote side once.
    virtual const String16& getInterfaceDescriptor() const = 0;

    /// False once this process has noticed that the node is gone.
    virtual bool isBinderAlive() const = 0;
    /// Calls the node and does nothing there: `OK`, or why it cannot be reached.
    virtual status_t pingBinder() = 0;

    /// One call. The receiver reads `data` from its start. `reply` may be null; without
    /// `FLAG_ONEWAY` it holds the reply, to be read from its start. Errors are the runtime's, or
    /// what the receiver's `onTransact` returned.
    virtual status_t transact(uint32_t code, const Parcel& data, Parcel* reply,
                              uint32_t flags = 0) = 0;

    /// Notified once when a node has gone. The link does not keep the recipient alive.
    class DeathRecipient : public virtual RefBase {
    public:
        /// Called on: a binder thread. Locks: none.
        virtual void binderDied(const wp<IBinder>& who) = 0;
    };

    /// `OK`, also when the node has gone already: then the recipient is told at once, on a binder
    /// thread. `DEAD_OBJECT` when this proxy's links have been told already; `INVALID_OPERATION`
    /// for an object of this process.
    virtual status_t linkToDeath(const sp<DeathRecipient>& recipient, void* cookie = nullptr,
                                 uint32_t flags = 0) = 0;

    /// Takes back the link made with this recipient, or, where `recipient` is null, with this
    /// cookie, and these flags. `OK`, with the link's recipient in `*outRecipient` unless that is
    /// null; `NAME_NOT_FOUND` without such a link; `DEAD_OBJECT` when the links have been told;
    /// `INVALID_OPERATION` for an object of this process.
    virtual status_t unlinkToDeath(const wp<DeathRecipient>& recipient, void* cookie = nullptr,
                                   uint32_t flags = 0,
                                   wp<DeathRecipient>* outRecipient = nullptr) = 0;

    /// This object as what it is; null as the other.
    virtual BBinder* localBinder();
    virtual BpBinder* remoteBinder();

protected:
    ~IBinder() override = default;
};

}  // namespace android

#endif
