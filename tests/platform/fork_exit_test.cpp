// SPDX-License-Identifier: Apache-2.0
// A child that was forked from a process with the runtime and ends as programs do: with the
// destructors of static objects, references among them.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "tests/platform/ProbeTest.h"
#include "tests/platform/SanitizerOptions.h"
#include "tests/support/Repeats.h"

namespace {

using android::IBinder;
using android::OK;
using android::sp;
using probe::Call;
using probe::CountingDeathRecipient;
using voxtrel_test::ChildProcess;
using voxtrel_test::eventually;

// All that a program may hold until its end.
struct Holdings {
    sp<IBinder> service;              // of another process
    std::vector<sp<IBinder>> made;    // also, each held by nobody else
    sp<IBinder> exported;             // of this process, held by the other
    std::vector<sp<IBinder>> unused;  // of this process, held by nobody
    sp<CountingDeathRecipient> recipient;
};

Holdings& holdings() {
    static Holdings all;
    return all;
}

void gather() {
    Holdings& all = holdings();
    all.service = probe::find();
    for (int i = 0; i < 5; ++i) {
        Call make;
        (void)make.to(all.service, probe::kMake);
        all.made.push_back(make.reply.readStrongBinder());
        (void)all.made.back()->pingBinder();
        all.unused.push_back(probe::makeNode());
    }
    all.recipient = new CountingDeathRecipient();
    (void)all.service->linkToDeath(all.recipient);
    all.exported = probe::makeNode();
    Call keep;
    keep.data.writeStrongBinder(all.exported);
    (void)keep.to(all.service, probe::kKeep);
}

bool note(int32_t number) {
    return probe::note(holdings().service, 1, number) == OK;
}

// The status of a child that does nothing but end; -1 when it does not.
int endOfAChild() {
    const pid_t child = fork();
    if (child == 0) {
        (void)alarm(60);
        std::exit(0);
    }
    int status = -1;
    return waitpid(child, &status, 0) == child ? status : -1;
}

int failedCalls() {
    int failed = 0;
    for (const sp<IBinder>& made : holdings().made) {
        failed += made->pingBinder() == OK ? 0 : 1;
    }
    return failed;
}

// Forks children that exit, says how each ended and how its own calls went; in the end it waits to
// be told of the death of what it called.
const voxtrel_test::Role kForkingParent("forking-parent", [](const voxtrel_test::Arguments&) {
    probe::startPool();
    gather();
    int32_t notes = 0;
    while (voxtrel_test::hear() == "fork") {
        bool noted = note(notes++);
        const int ended = endOfAChild();
        noted = note(notes++) && noted;
        voxtrel_test::tell(std::to_string(ended) + " " + std::to_string(failedCalls()) +
                           (noted ? " noted" : " lost"));
    }
    const bool told = eventually([] { return holdings().recipient->deaths() != 0; });
    voxtrel_test::tell(told ? std::to_string(holdings().recipient->deaths()) : "untold");
    (void)voxtrel_test::hear();
    return 0;
});

class AForkedChildThatExits : public probe::ProbeTest {
private:
    const probe::SanitizersLetChildrenExit mOptions{};
};

TEST_F(AForkedChildThatExits, TakesNothingFromItsParent) {
    constexpr int kForks = 20;
    ChildProcess parent = ChildProcess::asRole("forking-parent");
    for (int i = 0; i < kForks; ++i) {
        ASSERT_EQ("0 0 noted", parent.ask("fork")) << "status of the child, failed calls, notes";
        // What the parent exported answers, and what it holds is still held.
        Call give;
        ASSERT_EQ(OK, give.to(mNode, probe::kGive));
        EXPECT_EQ(OK, give.reply.readStrongBinder()->pingBinder());
        EXPECT_EQ(5, probe::ask(mNode, probe::kLiving));
    }
    EXPECT_TRUE(eventually([this] { return probe::ask(mNode, probe::kNotes) == 2 * kForks; }));
    mServer.killNow();
    EXPECT_EQ("1", parent.ask("end")) << "deaths that the parent was told of";
}

// One-way calls that nobody has taken yet when the child ends.
TEST_F(AForkedChildThatExits, LosesNoneOfItsParentsOneWayCalls) {
    ChildProcess parent = ChildProcess::asRole("forking-parent");
    ASSERT_EQ("0 0 noted", parent.ask("fork"));
    // Calls of another process may overtake them.
    ASSERT_TRUE(eventually([this] { return probe::ask(mNode, probe::kNotes) == 2; }));
    Call block;
    ASSERT_EQ(OK, block.to(mNode, probe::kBlock, IBinder::FLAG_ONEWAY));
    ASSERT_TRUE(eventually([this] { return probe::ask(mNode, probe::kBlocked) == 1; }));
    for (int i = 0; i < 3; ++i) {
        ASSERT_EQ("0 0 noted", parent.ask("fork"));
    }
    EXPECT_EQ(2, probe::ask(mNode, probe::kNotes));
    probe::ask(mNode, probe::kUnblock);
    EXPECT_TRUE(eventually([this] { return probe::ask(mNode, probe::kNotes) == 8; }));
    Call notes;
    ASSERT_EQ(OK, notes.to(mNode, probe::kNotes));
    (void)notes.reply.readInt32();
    EXPECT_EQ(0, notes.reply.readInt32()) << "out of order";
}

// Forks while its other threads make and let go of references of all kinds.
const voxtrel_test::Role kBusyForker("busy-forker", [](const voxtrel_test::Arguments& arguments) {
    probe::startPool();
    gather();
    std::atomic<bool> over{false};
    std::atomic<int> failed{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([&] {
            while (!over) {
                Call call;
                call.data.writeStrongBinder(probe::makeNode());
                call.data.writeInt32(2);
                failed += call.to(holdings().service, probe::kCallBack) == OK ? 0 : 1;
                Call make;
                failed += make.to(holdings().service, probe::kMake) == OK ? 0 : 1;
                failed += make.reply.readStrongBinder()->linkToDeath(holdings().recipient);
            }
        });
    }
    int badEnds = 0;
    const int forks = std::stoi(arguments[0]);
    for (int i = 0; i < forks && badEnds == 0; ++i) {
        badEnds += endOfAChild() == 0 ? 0 : 1;
    }
    over = true;
    for (std::thread& thread : threads) {
        thread.join();
    }
    voxtrel_test::tell(std::to_string(badEnds) + " " + std::to_string(failed));
    return 0;
});

TEST_F(AForkedChildThatExits, EndsWhateverItsParentsThreadsWereDoing) {
    ChildProcess forker =
        ChildProcess::asRole("busy-forker", {std::to_string(voxtrel_test::repeats(200))});
    EXPECT_EQ("0 0", forker.readLine()) << "children that did not end well, failed calls";
    EXPECT_EQ(0, forker.wait());
}

}  // namespace
