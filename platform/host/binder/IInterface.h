// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BINDER_IINTERFACE_H
#define VOXTREL_BINDER_IINTERFACE_H

#include "binder/Binder.h"

namespace android {

/// Base of every interface: what proxy and implementation have in common.
class IInterface : public virtual RefBase {
public:
    IInterface() = default;
    IInterface(const IInterface&) = delete;
    IInterface& operator=(const IInterface&) = delete;

    /// The binder behind an interface; null for null.
    static sp<IBinder> asBinder(const IInterface* interface);
    static sp<IBinder> asBinder(const sp<IInterface>& interface);

protected:
    ~IInterface() override = default;
    virtual IBinder* onAsBinder() = 0;
};

/// The implementing side of INTERFACE.
template <typename INTERFACE>
class BnInterface : public INTERFACE, public BBinder {
public:
    sp<IInterface> queryLocalInterface(const String16& name) override {
        const String16& own = INTERFACE::descriptor;
        if (strzcmp16(name, name.size(), own, own.size()) == 0) {
            return sp<IInterface>(this);
        }
        return nullptr;
    }
    const String16& getInterfaceDescriptor() const override {
        return INTERFACE::getInterfaceDescriptor();
    }

protected:
    using BaseInterface = INTERFACE;
    IBinder* onAsBinder() override { return this; }
};

/// The calling side of INTERFACE.
template <typename INTERFACE>
class BpInterface : public INTERFACE, public BpRefBase {
public:
    explicit BpInterface(const sp<IBinder>& remote) : BpRefBase(remote) {}

protected:
    using BaseInterface = INTERFACE;
    IBinder* onAsBinder() override { return BpRefBase::remote(); }
};

}  // namespace android

/// Inside class I##INTERFACE; no semicolon after it.
#define DECLARE_META_INTERFACE(INTERFACE)                                                         \
public:                                                                                           \
    static const ::android::String16 descriptor;                                                  \
    static ::android::sp<I##INTERFACE> asInterface(const ::android::sp<::android::IBinder>& obj); \
    virtual const ::android::String16& getInterfaceDescriptor() const;                            \
    I##INTERFACE();                                                                               \
    ~I##INTERFACE() override;

/// In the namespace of I##INTERFACE, where Bp##INTERFACE is complete; NAME is a narrow literal; no
/// semicolon after it.
#define IMPLEMENT_META_INTERFACE(INTERFACE, NAME)                             \
    const ::android::String16 I##INTERFACE::descriptor(NAME);                 \
    const ::android::String16& I##INTERFACE::getInterfaceDescriptor() const { \
        return I##INTERFACE::descriptor;                                      \
    }                                                                         \
    ::android::sp<I##INTERFACE> I##INTERFACE::asInterface(                    \
        const ::android::sp<::android::IBinder>& obj) {                       \
        if (obj == nullptr) {                                                 \
            return nullptr;                                                   \
        }                                                                     \
        const ::android::sp<::android::IInterface> local =                    \
            obj->queryLocalInterface(I##INTERFACE::descriptor);               \
        if (local != nullptr) {                                               \
            return static_cast<I##INTERFACE*>(local.get());                   \
        }                                                                     \
        return new Bp##INTERFACE(obj);                                        \
    }                                                                         \
    I##INTERFACE::I##INTERFACE() = default;                                   \
    I##INTERFACE::~I##INTERFACE() = default;

#endif
