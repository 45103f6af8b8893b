// SPDX-License-Identifier: Apache-2.0
// The binder behind the service manager's interface: for links to its death, and to be called.
#include <binder/IPCThreadState.h>
#include <binder/ProcessState.h>
#include <gtest/gtest.h>

#include <string>

#include "servicemanager/Registry.h"
#include "tests/platform/ProbeTest.h"

namespace {

using android::IBinder;
using android::OK;
using android::ProcessState;
using android::sp;
using probe::CountingDeathRecipient;
using voxtrel_test::ChildProcess;
using voxtrel_test::eventually;

sp<IBinder> managersBinder() {
    return android::IInterface::asBinder(android::defaultServiceManager());
}

using TheManagersBinder = probe::ProbeTest;

TEST_F(TheManagersBinder, IsItsProxy) {
    const sp<IBinder> binder = managersBinder();
    ASSERT_TRUE(binder != nullptr);
    EXPECT_TRUE(binder->remoteBinder() != nullptr);
    EXPECT_TRUE(binder == ProcessState::self()->getContextObject(nullptr));
    EXPECT_EQ(OK, binder->pingBinder());
    const auto same = android::IServiceManager::asInterface(binder);
    EXPECT_TRUE(android::IInterface::asBinder(same) == binder);
    EXPECT_TRUE(same->getService(android::String16(probe::kName)) == mNode);
}

TEST_F(TheManagersBinder, TellsOfTheManagersDeathAndIsAnotherAfterwards) {
    const sp<IBinder> first = managersBinder();
    const sp<CountingDeathRecipient> recipient = new CountingDeathRecipient();
    ASSERT_EQ(OK, first->linkToDeath(recipient));
    mRuntime.killManager();
    EXPECT_TRUE(eventually([&] { return recipient->deaths() == 1; }));
    EXPECT_TRUE(managersBinder() == nullptr);
    mRuntime.startManager();
    const sp<IBinder> second = managersBinder();
    ASSERT_TRUE(second != nullptr);
    EXPECT_TRUE(second != first);
    EXPECT_EQ(OK, second->pingBinder());
}

// Becomes the service manager, and says what its manager's binder is to itself.
const voxtrel_test::Role kManager("becomes-manager", [](const voxtrel_test::Arguments&) {
    const sp<android::Registry> registry = new android::Registry([](auto, const auto&) {});
    android::IPCThreadState::self()->setTheContextObject(registry);
    if (!ProcessState::self()->becomeContextManager()) {
        return 1;
    }
    voxtrel_test::tell(managersBinder().get() == registry->localBinder() ? "itself" : "another");
    return 0;
});

TEST_F(TheManagersBinder, IsTheObjectItselfInTheManagersProcess) {
    mRuntime.killManager();
    EXPECT_EQ("itself", ChildProcess::asRole("becomes-manager").readLine());
}

}  // namespace
