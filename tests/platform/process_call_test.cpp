// SPDX-License-Identifier: Apache-2.0
#include <binder/BpBinder.h>
#include <binder/ProcessState.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <thread>
#include <vector>

#include "tests/platform/Probe.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Eventually.h"
#include "tests/support/PrivateRuntime.h"

namespace {

using android::DEAD_OBJECT;
using android::IBinder;
using android::OK;
using android::sp;
using probe::Call;
using voxtrel_test::ChildProcess;
using voxtrel_test::eventually;
using voxtrel_test::PrivateRuntime;

class AcrossProcesses : public testing::Test {
protected:
    void SetUp() override {
        ASSERT_EQ("ready", mServer.readLine());
        mNode = probe::find();
        ASSERT_TRUE(mNode != nullptr);
        android::ProcessState::self()->startThreadPool();
    }

    PrivateRuntime mRuntime{VOXTREL_SERVICEMANAGER};
    ChildProcess mServer = ChildProcess::asRole("server");
    sp<IBinder> mNode;
};

TEST_F(AcrossProcesses, ACallCarriesItsValuesThereAndBack) {
    Call call;
    call.data.writeInt32(40);
    call.data.writeInt32(2);
    EXPECT_EQ(OK, call.to(mNode, probe::kAdd));
    EXPECT_EQ(42, call.reply.readInt32());
    EXPECT_EQ(4U, call.reply.dataSize());
}

TEST_F(AcrossProcesses, TheCallerIsWhoTheKernelSaysItIs) {
    Call call;
    ASSERT_EQ(OK, call.to(mNode, probe::kWho));
    EXPECT_EQ(getpid(), call.reply.readInt32());
    EXPECT_EQ(static_cast<int32_t>(getuid()), call.reply.readInt32());
    EXPECT_EQ(mServer.pid(), call.reply.readInt32());
}

TEST_F(AcrossProcesses, AFailedCallGivesItsStatusAndAnEmptyReply) {
    Call call;
    EXPECT_EQ(-42, call.to(mNode, probe::kFail));
    EXPECT_EQ(0U, call.reply.dataSize());
    EXPECT_EQ(android::UNKNOWN_TRANSACTION, call.to(mNode, 9999));
    EXPECT_EQ(OK, mNode->pingBinder());
}

TEST_F(AcrossProcesses, ADeadNodeIsNoticedAtOnce) {
    mServer.killNow();
    EXPECT_EQ(DEAD_OBJECT, mNode->pingBinder());
    EXPECT_FALSE(mNode->isBinderAlive());
    EXPECT_EQ(DEAD_OBJECT, mNode->pingBinder());
}

}  // namespace
