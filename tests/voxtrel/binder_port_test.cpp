// SPDX-License-Identifier: Apache-2.0
// The service and its owner, as service managers of other ages, and failing ones, tell them.
#include "voxtrel/session/BinderPort.h"

#include <binder/IPCThreadState.h>
#include <binder/ProcessState.h>
#include <binder/ServiceOwner.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>

#include "tests/support/TempFolder.h"

namespace voxtrel {
namespace {

using android::sp;
using android::status_t;

/// A service of this process, whose links to its death are refused unless a test says otherwise.
class Linked : public android::BBinder {
public:
    std::atomic<status_t> answer{android::INVALID_OPERATION};

    status_t linkToDeath(const sp<DeathRecipient>& /*recipient*/, void* /*cookie*/,
                         uint32_t /*flags*/) override {
        return answer;
    }
};

/// Knows a service of any name, and answers the question for its owner with a status alone.
class UnownedServices : public android::BnInterface<android::IServiceManager> {
public:
    std::atomic<status_t> answer{android::UNKNOWN_TRANSACTION};
    const sp<Linked> service = new Linked();

    sp<android::IBinder> getService(const android::String16& /*name*/) const override {
        return nullptr;
    }
    sp<android::IBinder> checkService(const android::String16& /*name*/) const override {
        return service;
    }
    status_t addService(const android::String16& /*name*/, const sp<android::IBinder>& /*service*/,
                        bool /*allowIsolated*/) override {
        return android::INVALID_OPERATION;
    }
    android::Vector<android::String16> listServices() override { return {}; }

protected:
    status_t onTransact(uint32_t code, const android::Parcel& data, android::Parcel* reply,
                        uint32_t flags) override {
        switch (code) {
            case android::GET_OWNED_SERVICE_TRANSACTION:
                return answer;
            case CHECK_SERVICE_TRANSACTION:
                return reply->writeStrongBinder(service);
            default:
                return BnInterface::onTransact(code, data, reply, flags);
        }
    }
};

class ABinderPort : public testing::Test {
protected:
    // A process is the service manager for good.
    static void SetUpTestSuite() {
        static const voxtrel_test::TempFolder folder;
        setenv("VOXTREL_BINDER_SOCKET", folder.path("binder").c_str(), 1);
        manager() = new UnownedServices();
        android::IPCThreadState::self()->setTheContextObject(manager());
        ASSERT_TRUE(android::ProcessState::self()->becomeContextManager());
    }

    static sp<UnownedServices>& manager() {
        static sp<UnownedServices> object;
        return object;
    }

    static Port::Found find(BinderPort port) {
        return port.find([] {});
    }
};

// Of our own kind but older, and of the kind in C that devices have, which says -1.
constexpr status_t kUnknownQuestion[] = {android::UNKNOWN_TRANSACTION, -1};

TEST_F(ABinderPort, TakesTheServiceOfAManagerThatCannotTellItsOwner) {
    for (const status_t answer : kUnknownQuestion) {
        manager()->answer = answer;
        const Port::Found found = find(BinderPort({}));
        EXPECT_EQ(Reach::Connected, found.reach) << answer;
        EXPECT_TRUE(found.service != nullptr) << answer;
        EXPECT_FALSE(found.peer.user) << answer;
    }
}

TEST_F(ABinderPort, LooksAgainForAServiceWhoseDeathItCannotWatch) {
    for (const status_t refusal : {android::DEAD_OBJECT, android::NO_MEMORY}) {
        manager()->service->answer = refusal;
        EXPECT_EQ(Reach::NoService, find(BinderPort({})).reach) << refusal;
    }
    manager()->service->answer = android::INVALID_OPERATION;
    EXPECT_EQ(Reach::Connected, find(BinderPort({})).reach);
}

TEST_F(ABinderPort, DoesNotTrustAServiceWhoseOwnerIsUnknown) {
    for (const status_t answer : kUnknownQuestion) {
        manager()->answer = answer;
        EXPECT_EQ(Reach::NotTrusted, find(BinderPort(BinderPort::Users())).reach) << answer;
    }
}

// Over the driver a device's service manager, which decides who may register, tells no owners.
TEST(AnOwnerThatIsNotTold, IsTrustedWhereTheManagerTellsNone) {
    const std::optional<BinderPort::Users> nobodyElse = BinderPort::Users();
    EXPECT_FALSE(BinderPort::isTrusted(nobodyElse, Peer(), true));
    EXPECT_TRUE(BinderPort::isTrusted(nobodyElse, Peer(), false));
    EXPECT_TRUE(BinderPort::isTrusted(std::nullopt, Peer(), true));
}

TEST(AnOwnerThatIsTold, IsTrustedByItsUserWhateverTheManager) {
    const uint32_t stranger = getuid() + 1;
    Peer owner;
    for (const bool tellsOwners : {false, true}) {
        owner.user = stranger;
        EXPECT_FALSE(BinderPort::isTrusted(BinderPort::Users(), owner, tellsOwners));
        EXPECT_TRUE(BinderPort::isTrusted(BinderPort::Users{stranger}, owner, tellsOwners));
        EXPECT_TRUE(BinderPort::isTrusted(std::nullopt, owner, tellsOwners));
        owner.user = getuid();
        EXPECT_TRUE(BinderPort::isTrusted(BinderPort::Users(), owner, tellsOwners));
    }
}

TEST_F(ABinderPort, TakesNoServiceWithoutItsOwnerFromAManagerThatFails) {
    for (const status_t failure :
         {android::FAILED_TRANSACTION, android::DEAD_OBJECT, android::NO_MEMORY}) {
        manager()->answer = failure;
        const Port::Found found = find(BinderPort({}));
        EXPECT_EQ(Reach::NoService, found.reach) << failure;
        EXPECT_TRUE(found.service == nullptr) << failure;
    }
}

}  // namespace
}  // namespace voxtrel
