// SPDX-License-Identifier: Apache-2.0
// In the manners of a driver, what a process has not read yet of its one-way calls has a limit.
#include <linux/sockios.h>
#include <sys/ioctl.h>

#include <chrono>
#include <sstream>
#include <string>

#include "tests/platform/Manners.h"
#include "tests/socket/RawWire.h"

namespace {

using android::IBinder;
using android::OK;
using android::sp;
using android::status_t;
using probe::Call;
using voxtrel_test::ChildProcess;
using voxtrel_test::eventually;

constexpr int kBudget = 520192;
constexpr int kSize = 512;
constexpr int kFits = kBudget / kSize;

// How so many calls of so many bytes went: taken, and refused for want of room.
std::string send(const sp<IBinder>& node, int count, size_t size) {
    int taken = 0;
    int refused = 0;
    for (int i = 0; i < count; ++i) {
        Call call;
        (void)call.data.writeInplace(size);
        const status_t status = call.to(node, probe::kNote, IBinder::FLAG_ONEWAY);
        if (status == android::DEAD_OBJECT) {
            return "dead";
        }
        taken += status == OK ? 1 : 0;
        refused += status == android::FAILED_TRANSACTION ? 1 : 0;
    }
    return std::to_string(taken) + " taken, " + std::to_string(refused) + " refused";
}

// Does what it is told: "COUNT SIZE", or the same to "other", another object of that process.
const voxtrel_test::Role kSender("budget-sender", [](const voxtrel_test::Arguments&) {
    const sp<IBinder> node = probe::find();
    Call make;
    (void)make.to(node, probe::kMake);
    const sp<IBinder> other = make.reply.readStrongBinder();
    voxtrel_test::tell(other != nullptr ? "ready" : "failed");
    for (std::string line; !(line = voxtrel_test::hear()).empty();) {
        std::istringstream words(line);
        std::string whom;
        int count = 0;
        size_t size = 0;
        words >> whom >> count >> size;
        voxtrel_test::tell(send(whom == "other" ? other : node, count, size));
    }
    return 0;
});

std::string taken(int count, int refused) {
    return std::to_string(count) + " taken, " + std::to_string(refused) + " refused";
}

class TheBudgetOfADriversProcess : public probe::DriverTest {
protected:
    // The whole budget is free then, or will be once the node has served its next call.
    ChildProcess sender() {
        ChildProcess process = ChildProcess::asRole("budget-sender");
        EXPECT_EQ("ready", process.readLine());
        EXPECT_TRUE(takesInTheEnd(process, "node 1 520192"));
        ++mNotes;
        EXPECT_TRUE(eventually([this] { return probe::ask(mNode, probe::kNotes) == mNotes; }));
        return process;
    }

    static bool takesInTheEnd(ChildProcess& sender, const std::string& call) {
        return eventually([&] { return sender.ask(call) == taken(1, 0); });
    }

    void block() {
        Call call;
        ASSERT_EQ(OK, call.to(mNode, probe::kBlock, IBinder::FLAG_ONEWAY));
        ASSERT_TRUE(eventually([this] { return probe::ask(mNode, probe::kBlocked) == 1; }));
    }

    void unblock(int more) {
        probe::ask(mNode, probe::kUnblock);
        mNotes += more;
        EXPECT_TRUE(eventually([this] { return probe::ask(mNode, probe::kNotes) == mNotes; }));
    }

    int mNotes = 0;
};

TEST_F(TheBudgetOfADriversProcess, IsUsedUpByAllItsSendersTogetherAndTheRestFailsAtOnce) {
    ChildProcess first = sender();
    ChildProcess second = sender();
    block();
    EXPECT_EQ(taken(kFits / 2, 0), first.ask("node " + std::to_string(kFits / 2) + " 512"));
    EXPECT_EQ(taken(kFits / 2, 50), second.ask("node " + std::to_string(kFits / 2 + 50) + " 512"));
    EXPECT_EQ(taken(0, 1), first.ask("node 1 4"));
    EXPECT_EQ(OK, mNode->pingBinder()) << "a two-way call has room of its own";
    unblock(kFits);
    EXPECT_EQ(taken(1, 0), first.ask("node 1 4"));
}

TEST_F(TheBudgetOfADriversProcess, RefusesWithoutWaiting) {
    ChildProcess process = sender();
    block();
    EXPECT_EQ(taken(1, 0), process.ask("node 1 520192"));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(taken(0, 1000), process.ask("node 1000 4"));
    // A sender that waits does so for 100 ms a call.
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(50));
    unblock(1);
}

TEST_F(TheBudgetOfADriversProcess, IsThatOfAllItsObjects) {
    ChildProcess process = sender();
    block();
    EXPECT_EQ(taken(1, 0), process.ask("node 1 520192"));
    EXPECT_EQ(taken(0, 1), process.ask("other 1 4"));
    unblock(1);
    EXPECT_TRUE(takesInTheEnd(process, "other 1 4"));
}

TEST_F(TheBudgetOfADriversProcess, CountsASmallCallAs128Bytes) {
    ChildProcess process = sender();
    block();
    EXPECT_EQ(taken(kBudget / 128, 1),
              process.ask("node " + std::to_string(kBudget / 128 + 1) + " 4"));
    unblock(kBudget / 128);
}

TEST_F(TheBudgetOfADriversProcess, IsWholeAgainWhenTheCallsOfADeadSenderAreDone) {
    ChildProcess victim = sender();
    block();
    EXPECT_EQ(taken(kFits, 0), victim.ask("node " + std::to_string(kFits) + " 512"));
    victim.killNow();
    unblock(kFits);
    ChildProcess heir = ChildProcess::asRole("budget-sender");
    EXPECT_EQ("ready", heir.readLine());
    EXPECT_TRUE(takesInTheEnd(heir, "node 1 520192"));
}

TEST_F(TheBudgetOfADriversProcess, HidesItsDeathFromNobody) {
    ChildProcess process = sender();
    block();
    EXPECT_EQ(taken(1, 0), process.ask("node 1 520192"));
    mServer.killNow();
    EXPECT_TRUE(eventually([&process] { return process.ask("node 1 4") == "dead"; }));
}

// Bytes that the other side has not taken.
int unread(int socket) {
    int bytes = 0;
    EXPECT_EQ(0, ioctl(socket, SIOCOUTQ, &bytes));
    return bytes;
}

using ACallThatSaysItIsCounted = probe::ProbeTest;

// Else it would get round what limits a connection there.
TEST_F(ACallThatSaysItIsCounted, IsLikeAnyOtherInTheDefaultManners) {
    const raw::Fd manager = raw::connectTo(mRuntime.socket());
    const raw::Fd control = raw::controlOf(manager.get(), probe::kName);
    const raw::Fd calls = raw::openCalls(control.get());
    Call block;
    ASSERT_EQ(OK, block.to(mNode, probe::kBlock, IBinder::FLAG_ONEWAY));
    ASSERT_TRUE(eventually([this] { return probe::ask(mNode, probe::kBlocked) == 1; }));
    raw::Words counted;
    counted.kind = raw::kOneWay;
    counted.code = probe::kNote;
    counted.flags = 1;
    counted.options = 2;
    for (int i = 0; i < 100; ++i) {
        ASSERT_TRUE(raw::send(calls.get(), raw::packet(counted)));
    }
    for (int i = 0; i < 1000; ++i) {
        ASSERT_EQ(OK, mNode->pingBinder());
    }
    EXPECT_GT(unread(calls.get()), 0) << "16 of a connection wait at a busy object, and no more";
    probe::ask(mNode, probe::kUnblock);
    EXPECT_TRUE(eventually([this] { return probe::ask(mNode, probe::kNotes) == 100; }));
}

}  // namespace
