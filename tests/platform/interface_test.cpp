// SPDX-License-Identifier: Apache-2.0
#include <binder/BinderService.h>
#include <binder/IInterface.h>
#include <binder/Parcel.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

namespace sample {

using android::IBinder;
using android::Parcel;
using android::sp;
using android::status_t;
using android::String16;

class IEcho : public android::IInterface {
public:
    DECLARE_META_INTERFACE(Echo)
    virtual int32_t echo(int32_t value) = 0;
};

class BpEcho : public android::BpInterface<IEcho> {
public:
    explicit BpEcho(const sp<IBinder>& remote) : BpInterface<IEcho>(remote) {}
    int32_t echo(int32_t value) override {
        Parcel data;
        Parcel reply;
        data.writeInt32(value);
        remote()->transact(1, data, &reply, 0);
        return reply.readInt32();
    }
    bool hasRemote() const { return remote() != nullptr; }
};

IMPLEMENT_META_INTERFACE(Echo, "sample.IEcho")

class Echo : public android::BnInterface<IEcho>, public android::BinderService<Echo> {
public:
    int32_t echo(int32_t value) override { return value + 1; }

protected:
    status_t onTransact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) override {
        if (code != 1) {
            return BBinder::onTransact(code, data, reply, flags);
        }
        return reply->writeInt32(echo(data.readInt32()));
    }
};

// Slot of a virtual member function in its class's table, from the bits of its pointer: the Itanium
// C++ ABI stores offset + 1 in the first word, its ARM variant the offset, marked in the second.
template <typename T>
size_t slotOf(T member) {
    uintptr_t words[2] = {};
    static_assert(sizeof(member) == sizeof(words), "two words");
    std::memcpy(words, &member, sizeof(words));
    return (words[0] & ~uintptr_t{1}) / sizeof(void*);
}

TEST(AnInterface, HasDestructorsBinderAndDescriptorInItsFirstSlots) {
    EXPECT_EQ(3U, slotOf(&IEcho::getInterfaceDescriptor));
    EXPECT_EQ(4U, slotOf(&IEcho::echo));
}

TEST(AsInterface, GivesTheLocalImplementationItself) {
    const sp<Echo> service = new Echo();
    const sp<IBinder> binder = android::IInterface::asBinder(service);
    EXPECT_TRUE(binder == service);
    EXPECT_TRUE(IEcho::asInterface(binder) == service);
}

TEST(AsInterface, GivesNullForNull) {
    EXPECT_TRUE(IEcho::asInterface(nullptr) == nullptr);
    EXPECT_TRUE(android::IInterface::asBinder(static_cast<IEcho*>(nullptr)) == nullptr);
    EXPECT_TRUE(android::IInterface::asBinder(sp<IEcho>()) == nullptr);
}

class Plain : public android::BBinder {
protected:
    status_t onTransact(uint32_t code, const Parcel& data, Parcel* reply,
                        uint32_t /*flags*/) override {
        return reply->writeInt32(data.readInt32() * static_cast<int32_t>(code + 1));
    }
};

TEST(AsInterface, WrapsABinderThatIsNotTheInterface) {
    const sp<IBinder> binder = new Plain();
    const sp<IEcho> proxy = IEcho::asInterface(binder);
    EXPECT_TRUE(android::IInterface::asBinder(proxy) == binder);
    EXPECT_EQ(42, proxy->echo(21));
}

TEST(AProxy, MayHaveNoRemote) {
    const sp<BpEcho> proxy = new BpEcho(nullptr);
    EXPECT_FALSE(proxy->hasRemote());
}

TEST(AnImplementation, AnswersItsDescriptorAndRefusesOtherCodes) {
    const sp<IBinder> binder = new Echo();
    Parcel data;
    Parcel reply;
    EXPECT_EQ(android::OK, binder->transact(IBinder::INTERFACE_TRANSACTION, data, &reply));
    EXPECT_EQ(String16("sample.IEcho"), reply.readString16());
    EXPECT_EQ(android::UNKNOWN_TRANSACTION, binder->transact(9, data, &reply));
    EXPECT_EQ(android::OK, binder->transact(IBinder::PING_TRANSACTION, data, &reply));
    EXPECT_EQ(String16("sample.IEcho"), binder->getInterfaceDescriptor());
}

TEST(ALocalBinder, FillsTheReplyOfAOneWayCall) {
    const sp<IBinder> binder = new Echo();
    Parcel data;
    Parcel reply;
    data.writeInt32(4);
    EXPECT_EQ(android::OK, binder->transact(1, data, &reply, IBinder::FLAG_ONEWAY));
    EXPECT_EQ(5, reply.readInt32());
}

class Recipient : public IBinder::DeathRecipient {
public:
    void binderDied(const android::wp<IBinder>& /*who*/) override {}
};

TEST(ALocalBinder, RefusesDeathLinks) {
    const sp<IBinder> binder = new Echo();
    const sp<Recipient> recipient = new Recipient();
    EXPECT_EQ(android::INVALID_OPERATION, binder->linkToDeath(recipient));
    EXPECT_EQ(android::INVALID_OPERATION, binder->unlinkToDeath(recipient, nullptr, 0, nullptr));
    EXPECT_TRUE(binder->isBinderAlive());
    EXPECT_TRUE(binder->localBinder() != nullptr);
    EXPECT_TRUE(binder->remoteBinder() == nullptr);
}

}  // namespace sample
