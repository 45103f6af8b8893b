// SPDX-License-Identifier: Apache-2.0
// Several clients, several processes.
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <optional>
#include <thread>
#include <vector>

#include "tests/support/ChildProcess.h"
#include "tests/support/Eventually.h"
#include "tests/support/Roles.h"
#include "tests/voxtrel_process/Machine.h"
#include "tests/voxtrel_process/Recorder.h"

using namespace voxtrel_test;
using voxtrel::Client;
using voxtrel::Event;
using voxtrel::Milliseconds;
using voxtrel::Status;
using voxtrel::Utterance;

namespace {

constexpr const char* kLong =
    "The last train had left the station an hour ago. A man in a grey coat stood on the platform "
    "and read the timetable once more, although he knew every line of it.";

/// Another process: takes the lock, gives it back, stops everybody, when it is told to.
int beAnother(const Arguments& /*arguments*/) {
    Client client;
    tell(client.waitUntilConnected(kLimit) ? "connected" : "not connected");
    std::optional<voxtrel::Lock> lock;
    for (std::string wish = hear(); !wish.empty(); wish = hear()) {
        if (wish == "lock") {
            auto taken = client.lock(kLimit);
            tell(taken ? "locked" : taken.message());
            lock.emplace(std::move(taken).value());
        } else if (wish == "unlock") {
            lock.reset();
            tell("unlocked");
        } else if (wish == "stop") {
            const auto stopped = client.stopEverybody(kLimit);
            tell(stopped ? "stopped" : stopped.message());
        }
    }
    return 0;
}

const Role kAnother("another", beAnother);

class TwoProcesses : public ::testing::Test {
protected:
    TwoProcesses() : child(start()) {
        events.listenTo(client);
        EXPECT_TRUE(client.waitUntilConnected(kLimit));
        EXPECT_EQ(child.readLine(), "connected");
    }

    ChildProcess start() {
        machine.startService({"--real-time"});
        return ChildProcess::asRole("another");
    }

    Machine machine;
    ChildProcess child;
    Recorder events;
    Client client;
};

TEST_F(TwoProcesses, StopEachOther) {
    const Utterance first = client.say(kLong);
    const Utterance second = client.say("Never.");
    ASSERT_TRUE(events.awaits(Event::Kind::Word));
    EXPECT_EQ(child.ask("stop"), "stopped");
    EXPECT_EQ(inWords(first.wait(kLimit)), "stopped by somebody");
    EXPECT_EQ(inWords(second.wait(kLimit)), "stopped by somebody unheard");
}

TEST_F(TwoProcesses, LockEachOtherOut) {
    EXPECT_EQ(child.ask("lock"), "locked");
    EXPECT_EQ(client.lock(kLimit).status(), Status::Locked);
    EXPECT_EQ(inWords(client.say("x").wait(kLimit)), "refused -7 unheard");
    EXPECT_EQ(client.turn(voxtrel::Switch::Speed, true, kLimit).status(), Status::Locked);
    EXPECT_EQ(client.stopEverybody(kLimit).status(), Status::Locked);
    EXPECT_EQ(child.ask("unlock"), "unlocked");
    ASSERT_TRUE(eventually([&] { return bool(client.lock(kLimit)); }));
    EXPECT_EQ(inWords(client.say("x").wait(kLimit)), "finished");
}

TEST_F(TwoProcesses, FreeTheLockWhenTheyDie) {
    EXPECT_EQ(child.ask("lock"), "locked");
    child.killNow();
    ASSERT_TRUE(eventually([&] { return bool(client.lock(kLimit)); }));
}

TEST_F(TwoProcesses, HearOfTheLockAndOfWhatChanges) {
    EXPECT_EQ(child.ask("lock"), "locked");
    EXPECT_EQ(child.ask("unlock"), "unlocked");
    const auto holders = [&] {
        std::vector<std::uint32_t> found;
        for (const Event& event : events.all(Event::Kind::Changed)) {
            if (event.setting == Event::Setting::Lock) {
                found.push_back(event.value);
            }
        }
        return found;
    };
    const std::vector<std::uint32_t> expected = {static_cast<std::uint32_t>(child.pid()), 0};
    EXPECT_TRUE(eventually([&] { return holders() == expected; }));
}

class ALock : public ::testing::Test {
protected:
    ALock() {
        machine.startService();
        events.listenTo(client);
        EXPECT_TRUE(client.waitUntilConnected(kLimit));
    }

    Machine machine;
    Recorder events;
    Client client;
    Client other;
};

TEST_F(ALock, IsOneForTheProcess) {
    auto lock = client.lock(kLimit);
    ASSERT_TRUE(lock) << lock.message();
    EXPECT_TRUE(lock->isHeld());
    const auto second = other.lock(kLimit);
    EXPECT_EQ(second.status(), Status::Locked);
    EXPECT_STREQ(second.message(), "another client of this process holds the lock");
    EXPECT_EQ(inWords(other.say("x").wait(kLimit)), "finished") << "the process speaks";
    lock->release();
    EXPECT_FALSE(lock->isHeld());
    EXPECT_TRUE(other.lock(kLimit));
}

TEST_F(ALock, IsGivenBackWithItsClient) {
    auto ending = std::make_unique<Client>();
    const auto lock = ending->lock(kLimit);
    ASSERT_TRUE(lock);
    ending.reset();
    EXPECT_FALSE(lock->isHeld());
    EXPECT_TRUE(other.lock(kLimit));
}

TEST_F(ALock, EndsWithTheServiceAndCanBeTakenAgain) {
    const auto first = client.lock(kLimit);
    ASSERT_TRUE(first);
    machine.killService();
    ASSERT_TRUE(events.awaits(Event::Kind::Disconnected));
    EXPECT_FALSE(first->isHeld());
    machine.startService();
    {
        const auto second = client.lock(kLimit);
        ASSERT_TRUE(second) << second.message();
        EXPECT_TRUE(second->isHeld());
        EXPECT_FALSE(first->isHeld());
    }
    EXPECT_TRUE(other.lock(kLimit));
}

TEST_F(ALock, IsNotHeldByACallThatGaveUp) {
    machine.stopService();
    EXPECT_FALSE(client.lock(Milliseconds(50)));
    machine.continueService();
    // Were it held, who has it would be this process, and nobody in it.
    ASSERT_TRUE(eventually([&] { return bool(other.lock(kLimit)); }));
    const auto lock = client.lock(kLimit);
    EXPECT_TRUE(lock) << lock.message();
}

TEST(SeveralClients, DoNotKnowOfEachOther) {
    Machine machine;
    machine.startService();
    std::vector<std::thread> threads;
    std::atomic<int> finished{0};
    for (int n = 0; n < 8; ++n) {
        threads.emplace_back([&] {
            Recorder events;
            Client client;
            events.listenTo(client);
            std::vector<Utterance> said;
            for (int m = 0; m < 20; ++m) {
                said.push_back(client.say("Hello."));
            }
            EXPECT_TRUE(client.waitForAll(kLimit));
            for (const Utterance& each : said) {
                finished += each.outcome() ? 1 : 0;
            }
            EXPECT_TRUE(events.awaits(Event::Kind::Ended, 20));
            EXPECT_EQ(events.count(Event::Kind::Ended), 20U);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(finished, 160);
}

}  // namespace
