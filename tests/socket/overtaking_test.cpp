// SPDX-License-Identifier: Apache-2.0
// In the manners of a driver a two-way call may overtake the one-way calls before it.
#include "support/Overtaking.h"

#include <chrono>
#include <string>

#include "tests/platform/Manners.h"

namespace {

using android::IBinder;
using android::OK;
using android::sp;
using android::transport::isToBeOvertaken;
using android::transport::Overtaking;
using probe::Call;
using voxtrel_test::ChildProcess;
using voxtrel_test::eventually;

std::string overtakenBy(uint32_t seed, uint32_t code) {
    std::string calls;
    for (uint32_t number = 1; number <= 32; ++number) {
        calls += isToBeOvertaken(seed, number, code) ? 'x' : '.';
    }
    return calls;
}

// Who repeats a failure with its seed may do so on another machine, and a year later.
TEST(ASeedOfADriversManners, NamesTheSameCallsForEver) {
    EXPECT_EQ("xxxx.x.xxx.....xxx.xx.....x.xx..", overtakenBy(7, probe::kNote));
    EXPECT_EQ("....x.x.x.xx....xx.xx.x..xxx.x..", overtakenBy(8, probe::kNote));
    EXPECT_EQ("...xx...xx...x..xxx....xxxx.xxx.", overtakenBy(7, probe::kAdd));
}

TEST(ASeedOfADriversManners, NamesAboutEveryOtherCall) {
    int named = 0;
    for (uint32_t number = 1; number <= 10000; ++number) {
        named += isToBeOvertaken(1, number, 1) ? 1 : 0;
    }
    EXPECT_GT(named, 4800);
    EXPECT_LT(named, 5200);
}

// One of the seed's calls is overtaken by what arrives within `kLongest`. What has taken longer was
// up to the machine, and says nothing.
class Round {
public:
    bool isQuick() const { return Clock::now() - mStart < Overtaking::kLongest; }

private:
    using Clock = std::chrono::steady_clock;
    const Clock::time_point mStart = Clock::now();
};

constexpr int kRounds = 20;
constexpr int32_t kMaxCalls = 10000;

bool isNamed(int32_t number) {
    return isToBeOvertaken(probe::kSeed, static_cast<uint32_t>(number), probe::kNote);
}

// Lets go of one call in kBlock with each line, as a caller of its own.
const voxtrel_test::Role kUnblocker("unblocker", [](const voxtrel_test::Arguments&) {
    const sp<IBinder> node = probe::find();
    do {
        voxtrel_test::tell(probe::ask(node, probe::kUnblock) == 0 ? "done" : "failed");
    } while (!voxtrel_test::hear().empty());
    return 0;
});

class ATwoWayCallToADriversNode : public probe::DriverTest {
protected:
    int notes() { return probe::ask(mNode, probe::kNotes); }
};

TEST_F(ATwoWayCallToADriversNode, OvertakesTheOneWayCallsThatTheSeedNames) {
    int named = 0;
    int others = 0;
    int othersInOrder = 0;
    for (int32_t number = 1; named < kRounds && number < kMaxCalls; ++number) {
        const Round round;
        ASSERT_EQ(OK, probe::note(mNode, 1, number - 1));
        const bool overtook = notes() < number;
        if (!isNamed(number)) {
            ++others;
            othersInOrder += overtook ? 0 : 1;
        } else if (round.isQuick()) {
            ++named;
            EXPECT_TRUE(overtook) << "one-way call " << number;
        }
        ASSERT_TRUE(eventually([&] { return notes() == number; }));
    }
    EXPECT_EQ(kRounds, named);
    EXPECT_GT(othersInOrder, others / 2);
}

// The end of one two-way call is no leave for the one-way call that comes right behind it.
TEST_F(ATwoWayCallToADriversNode, OvertakesThemAlsoWhereCallsFollowOnEachOther) {
    int named = 0;
    for (int32_t number = 1; named < 10 * kRounds && number < kMaxCalls; ++number) {
        const Round round;
        ASSERT_EQ(OK, probe::note(mNode, 1, number - 1));
        const bool overtook = notes() < number;
        if (isNamed(number) && round.isQuick()) {
            ++named;
            EXPECT_TRUE(overtook) << "one-way call " << number;
        }
    }
    EXPECT_EQ(10 * kRounds, named);
}

TEST_F(ATwoWayCallToADriversNode, OvertakesOnesThatCameWhileAnotherWasCarriedOut) {
    ChildProcess unblocker = ChildProcess::asRole("unblocker");
    ASSERT_EQ("done", unblocker.readLine());
    int rounds = 0;
    // Every second one-way call is a note.
    for (int32_t number = 2; rounds < kRounds && number < kMaxCalls; number += 2) {
        Call block;
        ASSERT_EQ(OK, block.to(mNode, probe::kBlock, IBinder::FLAG_ONEWAY));
        ASSERT_TRUE(eventually([this] { return probe::ask(mNode, probe::kBlocked) == 1; }));
        const Round round;
        ASSERT_EQ(OK, probe::note(mNode, 1, number / 2 - 1));
        ASSERT_EQ("done", unblocker.ask("unblock"));
        const bool overtook = notes() < number / 2;
        if (isNamed(number) && round.isQuick()) {
            ++rounds;
            EXPECT_TRUE(overtook) << "one-way call " << number;
        }
        ASSERT_TRUE(eventually([&] { return notes() == number / 2; }));
    }
    EXPECT_EQ(kRounds, rounds);
}

TEST_F(ATwoWayCallToADriversNode, LetsWhatItHasOvertakenGoOn) {
    bool wentOn = false;
    for (int32_t number = 1; !wentOn && number < kMaxCalls; ++number) {
        const Round round;
        ASSERT_EQ(OK, probe::note(mNode, 1, number - 1));
        const bool overtook = notes() < number;
        ASSERT_TRUE(eventually([&] { return notes() == number; }));
        wentOn = overtook && round.isQuick();
    }
    EXPECT_TRUE(wentOn);
}

TEST_F(ATwoWayCallToADriversNode, LeavesTheOrderOfTheOneWayCallsAsItIs) {
    constexpr int32_t kCalls = 2000;
    int overtaken = 0;
    for (int32_t number = 0; number < kCalls; ++number) {
        // Where the node's process gets no processor for too long, a call is refused, and not sent.
        android::status_t sent = OK;
        (void)eventually([&] {
            sent = probe::note(mNode, 1, number);
            return sent != android::FAILED_TRANSACTION;
        });
        ASSERT_EQ(OK, sent);
        if (number % 3 == 0) {
            overtaken += notes() <= number ? 1 : 0;
        }
    }
    EXPECT_TRUE(eventually([this] { return notes() == kCalls; }));
    Call notes;
    ASSERT_EQ(OK, notes.to(mNode, probe::kNotes));
    EXPECT_EQ(kCalls, notes.reply.readInt32());
    EXPECT_EQ(0, notes.reply.readInt32()) << "out of order";
    EXPECT_EQ(0, notes.reply.readInt32()) << "two at once";
    EXPECT_GT(overtaken, 0);
}

// Sends one one-way call, which the seed names, and nothing else.
const voxtrel_test::Role kOneNote("one-note", [](const voxtrel_test::Arguments&) {
    const sp<IBinder> node = probe::find();
    voxtrel_test::tell(isNamed(1) ? "named" : "");
    voxtrel_test::tell(probe::note(node, 1, 0) == OK ? "sent" : "failed");
    (void)voxtrel_test::hear();
    return 0;
});

using AOneWayCallToADriversNode = probe::DriverTest;

TEST_F(AOneWayCallToADriversNode, IsCarriedOutThoughNothingOvertakesIt) {
    ChildProcess sender = ChildProcess::asRole("one-note");
    ASSERT_EQ("named", sender.readLine());
    ASSERT_EQ("sent", sender.readLine());
    EXPECT_TRUE(eventually([this] { return probe::ask(mNode, probe::kNotes) == 1; }));
}

// It is on its way already, whatever becomes of its caller.
TEST_F(AOneWayCallToADriversNode, IsCarriedOutThoughItsCallerHasDied) {
    ChildProcess sender = ChildProcess::asRole("one-note");
    ASSERT_EQ("named", sender.readLine());
    ASSERT_EQ("sent", sender.readLine());
    sender.killNow();
    EXPECT_TRUE(eventually([this] { return probe::ask(mNode, probe::kNotes) == 1; }));
}

}  // namespace
