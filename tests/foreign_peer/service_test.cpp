// SPDX-License-Identifier: Apache-2.0
// A service of another runtime that our service manager has and our clients find.
#include <binder/IPCThreadState.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <memory>
#include <thread>

#include "tests/foreign_peer/ForeignPeer.h"
#include "tests/platform/Probe.h"
#include "tests/support/Eventually.h"
#include "tests/support/PrivateRuntime.h"

namespace {

using namespace voxtrel_test;
using android::IBinder;
using android::OK;
using android::sp;
using android::String16;
using probe::Call;

constexpr const char* kName = "foreign";
// Of the peer's nodes.
enum Code : uint32_t { kNotify = 1, kNest = 7, kSum = 10, kFail = 11, kHang = 12 };

std::unique_ptr<PrivateRuntime> gRuntime;

class AForeignService : public testing::TestWithParam<const char*> {
protected:
    static void SetUpTestSuite() {
        gRuntime = std::make_unique<PrivateRuntime>(VOXTREL_SERVICEMANAGER);
        probe::startPool();
    }
    static void TearDownTestSuite() { gRuntime.reset(); }

    void SetUp() override {
        ASSERT_EQ("reply i:0",
                  mService.askManager(kAddService, "i",
                                      std::string("s:") + kName + " n:1 " + GetParam()));
        mNode = look();
        ASSERT_TRUE(mNode != nullptr);
    }

    static sp<IBinder> look() {
        return android::defaultServiceManager()->checkService(String16(kName));
    }

    ForeignPeer mService;
    sp<IBinder> mNode;
};

TEST_P(AForeignService, IsListed) {
    const auto names = android::defaultServiceManager()->listServices();
    ASSERT_EQ(1U, names.size());
    EXPECT_TRUE(names[0] == String16(kName));
    EXPECT_EQ(std::string("reply s:") + kName, mService.askManager(kListServices, "s", "i:0"));
    EXPECT_EQ(0U, mService.askManager(kListServices, "s", "i:1").find("status"));
}

TEST_P(AForeignService, AnswersACallAndSeesWhoCalls) {
    Call call;
    call.data.writeInt32(2);
    call.data.writeInt32(3);
    EXPECT_EQ(OK, call.to(mNode, kSum));
    EXPECT_EQ(5, call.reply.readInt32());
    EXPECT_EQ("called 1 10 two-way pid " + std::to_string(getpid()) + " uid 0: i:2 i:3",
              mService.event("called"));
}

TEST_P(AForeignService, TakesAOneWayCallFromNobodysProcess) {
    Call call;
    call.data.writeInt32(5);
    EXPECT_EQ(OK, call.to(mNode, kNotify, IBinder::FLAG_ONEWAY));
    EXPECT_EQ("called 1 1 one-way pid 0 uid 0: i:5", mService.event("called"));
}

TEST_P(AForeignService, IsPingedAndTellsItsInterface) {
    EXPECT_EQ(OK, mNode->pingBinder());
    EXPECT_TRUE(mNode->getInterfaceDescriptor() == String16("foreign.INode"));
}

TEST_P(AForeignService, TellsAStatus) {
    EXPECT_EQ(-42, Call().to(mNode, kFail));
    EXPECT_EQ(android::UNKNOWN_TRANSACTION, Call().to(mNode, 99));
}

TEST_P(AForeignService, CallsBackWhileItIsCalled) {
    Call call;
    call.data.writeStrongBinder(probe::makeNode());
    call.data.writeInt32(7);
    EXPECT_EQ(OK, call.to(mNode, kNest));
    EXPECT_EQ(7, call.reply.readInt32());
}

TEST_P(AForeignService, CallsBackLater) {
    Call call;
    const sp<IBinder> node = probe::makeNode();
    call.data.writeStrongBinder(node);
    EXPECT_EQ(OK, call.to(mNode, kNotify, IBinder::FLAG_ONEWAY));
    const std::string called = mService.event("called 1 1 one-way pid 0 uid 0: h:");
    const std::string handle = called.substr(called.rfind(':') + 1);
    EXPECT_EQ("reply " + mService.pidItem() + " i:0 i:" + std::to_string(getpid()),
              mService.ask("call " + handle + ' ' + std::to_string(probe::kWho) + " 0 iii"));
}

TEST_P(AForeignService, HasNoRoomForMoreThanItsMapping) {
    Call call;
    (void)call.data.writeInplace(size_t{300} * 1024);
    EXPECT_EQ(android::FAILED_TRANSACTION, call.to(mNode, kNotify));
    EXPECT_EQ(OK, mNode->pingBinder());
}

TEST_P(AForeignService, ThatDiesInACallEndsItForTheCaller) {
    android::status_t status = OK;
    std::thread caller([&] { status = Call().to(mNode, kHang); });
    EXPECT_NE("", mService.event("called 1 12"));
    mService.killNow();
    caller.join();
    EXPECT_EQ(android::DEAD_OBJECT, status);
}

TEST_P(AForeignService, IsMissedWhenItDies) {
    const sp<probe::CountingDeathRecipient> recipient = new probe::CountingDeathRecipient();
    EXPECT_EQ(OK, mNode->linkToDeath(recipient));
    mService.killNow();
    EXPECT_TRUE(eventually([&] { return recipient->deaths() == 1; }));
    EXPECT_EQ(android::DEAD_OBJECT, mNode->pingBinder());
    EXPECT_TRUE(eventually([] { return look() == nullptr; }));
}

INSTANTIATE_TEST_SUITE_P(OfAnAge, AForeignService,
                         testing::Values("i:0", "i:0 i:8", "i:12 i:0 i:8"));

}  // namespace
