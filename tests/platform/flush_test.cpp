// SPDX-License-Identifier: Apache-2.0
// What has left the process when flushCommands returns, and where it may be called.
#include <binder/IPCThreadState.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

#include "tests/platform/ProbeTest.h"

namespace {

using android::IBinder;
using android::IPCThreadState;
using android::OK;
using android::sp;
using probe::Call;
using voxtrel_test::ChildProcess;
using voxtrel_test::eventually;

using Flushing = probe::ProbeTest;

void makeCallAndLetGo(const sp<IBinder>& node) {
    Call make;
    ASSERT_EQ(OK, make.to(node, probe::kMake));
    const sp<IBinder> made = make.reply.readStrongBinder();
    Call add;
    ASSERT_EQ(OK, add.to(made, probe::kAdd));
}

TEST_F(Flushing, LeavesNothingHereOfAReferenceThatWasLetGo) {
    makeCallAndLetGo(mNode);
    const int before = probe::descriptors();
    for (int i = 0; i < 100; ++i) {
        makeCallAndLetGo(mNode);
        IPCThreadState::self()->flushCommands();
        ASSERT_EQ(before, probe::descriptors());
    }
    EXPECT_TRUE(eventually([this] { return probe::ask(mNode, probe::kLiving) == 0; }));
}

constexpr int kSent = 8;

// Sends one-way calls of all sizes, flushes and dies on the spot.
const voxtrel_test::Role kFlusher("flusher", [](const voxtrel_test::Arguments&) {
    const sp<IBinder> node = probe::find();
    for (int32_t i = 0; i < kSent; ++i) {
        if (probe::note(node, 1, i, i % 2 == 0 ? 4U : 100000U) != OK) {
            return 1;
        }
    }
    IPCThreadState::self()->flushCommands();
    (void)kill(getpid(), SIGKILL);
    return 1;
});

TEST_F(Flushing, LeavesWhatWasSentWithTheKernelThoughTheSenderDies) {
    // Nobody reads them while the sender lives.
    mServer.kill(SIGSTOP);
    ChildProcess flusher = ChildProcess::asRole("flusher");
    EXPECT_EQ(128 + SIGKILL, flusher.wait());
    mServer.kill(SIGCONT);
    EXPECT_TRUE(eventually([this] { return probe::ask(mNode, probe::kNotes) == kSent; }));
}

// Flushes before it uses the runtime in any other way.
const voxtrel_test::Role kEarly("early-flusher", [](const voxtrel_test::Arguments&) {
    IPCThreadState::self()->flushCommands();
    voxtrel_test::tell(probe::find() != nullptr ? "found" : "lost");
    IPCThreadState::self()->flushCommands();
    return 0;
});

TEST_F(Flushing, MayComeFirst) {
    ChildProcess early = ChildProcess::asRole("early-flusher");
    EXPECT_EQ("found", early.readLine());
    EXPECT_EQ(0, early.wait());
}

// Flushes while it serves.
class FlushingNode : public android::BBinder {
protected:
    android::status_t onTransact(uint32_t code, const android::Parcel& data, android::Parcel* reply,
                                 uint32_t flags) override {
        if (code != probe::kCallBack) {
            return BBinder::onTransact(code, data, reply, flags);
        }
        makeCallAndLetGo(data.readStrongBinder());
        IPCThreadState::self()->flushCommands();
        return reply->writeInt32(IPCThreadState::self()->getCallingPid());
    }
};

TEST_F(Flushing, DoesNotDisturbTheCallThatIsServed) {
    const sp<IBinder> own = new FlushingNode();
    for (int i = 0; i < 20; ++i) {
        Call call;
        call.data.writeStrongBinder(own);
        call.data.writeInt32(1);
        ASSERT_EQ(OK, call.to(mNode, probe::kCallBack));
        EXPECT_EQ(mServer.pid(), call.reply.readInt32() - 1) << "each call back counts one";
    }
}

TEST_F(Flushing, IsHarmlessInAForkedChild) {
    const pid_t child = fork();
    if (child == 0) {
        (void)alarm(60);
        IPCThreadState::self()->flushCommands();
        _exit(0);
    }
    int status = -1;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_EQ(0, status);
    EXPECT_EQ(OK, mNode->pingBinder());
}

}  // namespace
