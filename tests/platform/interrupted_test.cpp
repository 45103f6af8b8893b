// SPDX-License-Identifier: Apache-2.0
// A process that is showered with signals: each system call of the runtime may be interrupted.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/time.h>

#include <atomic>
#include <cstdint>
#include <string>

#include "tests/platform/ProbeTest.h"
#include "tests/support/Repeats.h"

namespace {

using android::IBinder;
using android::OK;
using android::sp;
using probe::Call;
using probe::CountingDeathRecipient;
using voxtrel_test::ChildProcess;
using voxtrel_test::eventually;

std::atomic<int> gSignals{0};

void count(int /*signal*/) {
    ++gSignals;
}

void everyMicroseconds(suseconds_t interval) {
    struct sigaction action = {};
    action.sa_handler = &count;  // and no SA_RESTART
    sigaction(SIGALRM, &action, nullptr);
    itimerval when = {};
    when.it_value.tv_usec = interval;
    when.it_interval.tv_usec = interval;
    setitimer(ITIMER_REAL, &when, nullptr);
}

const int kSmallCalls = voxtrel_test::repeats(5000);
const suseconds_t kShower = 200 * (5000 / kSmallCalls);  // a call that takes longer gets no more

// How many calls of each kind went wrong.
int wrongSmallCalls(const sp<IBinder>& node, int32_t count) {
    int wrong = 0;
    for (int32_t i = 0; i < count; ++i) {
        Call add;
        add.data.writeInt32(i);
        add.data.writeInt32(1);
        wrong += add.to(node, probe::kAdd) == OK && add.reply.readInt32() == i + 1 ? 0 : 1;
        wrong += probe::note(node, 1, i) == OK ? 0 : 1;
    }
    return wrong;
}

int wrongLargeCalls(const sp<IBinder>& node, int count) {
    int wrong = 0;
    for (int i = 0; i < count; ++i) {
        Call echo;
        echo.data.writeInplace(200000);
        wrong += echo.to(node, probe::kEcho) == OK && echo.reply.dataSize() == 200000 ? 0 : 1;
    }
    return wrong;
}

int wrongReferences(const sp<IBinder>& node, int count) {
    int wrong = 0;
    const sp<CountingDeathRecipient> recipient = new CountingDeathRecipient();
    for (int i = 0; i < count; ++i) {
        Call make;
        wrong += make.to(node, probe::kMake) == OK ? 0 : 1;
        const sp<IBinder> made = make.reply.readStrongBinder();
        wrong += made->linkToDeath(recipient) == OK ? 0 : 1;
        Call keep;
        keep.data.writeStrongBinder(made);
        wrong += keep.to(node, probe::kKeep) == OK ? 0 : 1;
        wrong += made->unlinkToDeath(recipient) == OK ? 0 : 1;
    }
    return wrong + recipient->deaths();
}

// Calls under the shower; says how many calls went wrong, and how many signals there were. Then
// waits, under it, for a death.
const voxtrel_test::Role kShowered("showered-caller", [](const voxtrel_test::Arguments&) {
    probe::startPool();
    const sp<IBinder> node = probe::find();
    const sp<IBinder> mortal = probe::find("mortal");
    const sp<CountingDeathRecipient> recipient = new CountingDeathRecipient();
    everyMicroseconds(kShower);
    int wrong = mortal->linkToDeath(recipient) == OK ? 0 : 1;
    wrong += wrongSmallCalls(node, kSmallCalls);
    wrong += wrongLargeCalls(node, voxtrel_test::repeats(300));
    wrong += wrongReferences(node, voxtrel_test::repeats(300));
    Call block;
    wrong += block.to(mortal, probe::kBlock) == android::DEAD_OBJECT ? 0 : 1;
    wrong += eventually([&] { return recipient->deaths() == 1; }) ? 0 : 1;
    everyMicroseconds(0);
    voxtrel_test::tell(std::to_string(wrong));
    voxtrel_test::tell(std::to_string(gSignals));
    return 0;
});

// Serves under the shower, which its main thread does not take part in.
const voxtrel_test::Role kShoweredServer("showered-server", [](const voxtrel_test::Arguments&) {
    probe::startPool();
    sigset_t alarm;
    sigemptyset(&alarm);
    sigaddset(&alarm, SIGALRM);
    pthread_sigmask(SIG_BLOCK, &alarm, nullptr);
    android::defaultServiceManager()->addService(android::String16("showered"), probe::makeNode());
    everyMicroseconds(kShower);
    voxtrel_test::tell("ready");
    (void)voxtrel_test::hear();
    voxtrel_test::tell(std::to_string(gSignals));
    return 0;
});

using AProcessShoweredWithSignals = probe::ProbeTest;

TEST_F(AProcessShoweredWithSignals, MakesEveryCallAndIsToldOfADeath) {
    ChildProcess mortal = ChildProcess::asRole("server", {"mortal"});
    ASSERT_EQ("ready", mortal.readLine());
    ChildProcess caller = ChildProcess::asRole("showered-caller");
    const sp<IBinder> watched = probe::find("mortal");
    ASSERT_TRUE(eventually([&] { return probe::ask(watched, probe::kBlocked) == 1; }));
    mortal.killNow();
    EXPECT_EQ("0", caller.readLine()) << "calls that went wrong";
    EXPECT_GT(std::stoi("0" + caller.readLine()), kSmallCalls / 50) << "signals";
    EXPECT_EQ(0, caller.wait());
    Call notes;
    ASSERT_EQ(OK, notes.to(mNode, probe::kNotes));
    EXPECT_EQ(kSmallCalls, notes.reply.readInt32());
    EXPECT_EQ(0, notes.reply.readInt32()) << "out of order";
}

TEST_F(AProcessShoweredWithSignals, ServesEveryCall) {
    ChildProcess server = ChildProcess::asRole("showered-server");
    ASSERT_EQ("ready", server.readLine());
    const sp<IBinder> node = probe::find("showered");
    EXPECT_EQ(0, wrongSmallCalls(node, kSmallCalls));
    EXPECT_EQ(0, wrongLargeCalls(node, voxtrel_test::repeats(300)));
    EXPECT_EQ(0, wrongReferences(node, voxtrel_test::repeats(300)));
    EXPECT_TRUE(eventually([&] { return probe::ask(node, probe::kNotes) == kSmallCalls; }));
    EXPECT_GT(std::stoi("0" + server.ask("signals")), kSmallCalls / 50);
}

}  // namespace
