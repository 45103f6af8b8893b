// SPDX-License-Identifier: Apache-2.0
// The beginning and the end of clients.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <future>
#include <memory>
#include <optional>
#include <thread>

#include "tests/support/ChildProcess.h"
#include "tests/support/Eventually.h"
#include "tests/support/Roles.h"
#include "tests/voxtrel_process/Machine.h"
#include "tests/voxtrel_process/Recorder.h"
#include "tests/voxtrel_process/Stopwatch.h"

using namespace voxtrel_test;
using voxtrel::Client;
using voxtrel::ClientOptions;
using voxtrel::Event;
using voxtrel::Milliseconds;
using voxtrel::Status;
using voxtrel::Utterance;

namespace {

constexpr const char* kLong =
    "The last train had left the station an hour ago. A man in a grey coat stood on the platform "
    "and read the timetable once more, although he knew every line of it.";

/// The runtime's threads, and what they hold, grow in number as it needs them, and not beyond this.
constexpr std::size_t kOfTheRuntime = 16;

std::size_t entriesOf(const char* folder) {
    const std::filesystem::directory_iterator entries(folder);
    return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

std::size_t threads() {
    return entriesOf("/proc/self/task");
}

std::size_t descriptors() {
    return entriesOf("/proc/self/fd");
}

ClientOptions shortOfTime() {
    ClientOptions options;
    options.deadline = Milliseconds(50);
    options.linger = Milliseconds(50);
    return options;
}

int sayAndLeave(const Arguments& arguments) {
    Client().say(arguments.at(0));
    return 0;
}

const Role kSayAndLeave("sayAndLeave", sayAndLeave);

TEST(WhoSaysSomethingAndLeavesAtOnce, IsHeard) {
    Machine machine;
    machine.startService({"--sink", "wavdir:" + machine.path("spoken")});
    EXPECT_TRUE(Client().waitUntilConnected(kLimit));  // nobody waits for one that is not there
    constexpr std::size_t kRounds = 100;
    for (std::size_t n = 0; n < kRounds; ++n) {
        Client().say("Hello.");
    }
    EXPECT_TRUE(eventually([&] { return machine.spokenFiles() == kRounds; }))
        << machine.spokenFiles();
}

TEST(AClientAfterAnother, IsNotToldOfWhatThatOneHasLeftToTheService) {
    Machine machine;
    machine.startService({"--sink", "wavdir:" + machine.path("spoken"), "--real-time"});
    {
        Client first;
        ASSERT_TRUE(first.waitUntilConnected(kLimit));
        first.say(kLong);
        first.say(kLong);
    }
    Recorder recorder;
    Client second;
    recorder.listenTo(second);
    const Utterance word = second.say("Hello.");
    EXPECT_EQ("finished", inWords(word.wait(kLimit)));
    EXPECT_EQ(3U, machine.spokenFiles()) << "it is told of its own end, after what was said before";
    EXPECT_EQ(1U, recorder.count(Event::Kind::Word));
}

TEST(WhoSaysSomethingAndLeavesAtOnce, IsHeardThoughItsProcessHasEnded) {
    Machine machine;
    machine.startService({"--sink", "wavdir:" + machine.path("spoken")});
    EXPECT_TRUE(Client().waitUntilConnected(kLimit));  // nobody waits for one that is not there
    constexpr std::size_t kRounds = 100;
    for (std::size_t n = 0; n < kRounds; ++n) {
        EXPECT_EQ(ChildProcess::asRole("sayAndLeave", {"Hello."}).wait(), 0);
    }
    EXPECT_TRUE(eventually([&] { return machine.spokenFiles() == kRounds; }))
        << machine.spokenFiles();
}

int stopAndLeave(const Arguments& /*arguments*/) {
    Recorder events;
    Client client;
    events.listenTo(client);
    std::string text;
    for (int n = 0; n < 6; ++n) {
        text += kLong;  // nearly a minute
    }
    (void)client.say(text.substr(0, 1000));
    const bool isSpoken = events.awaits(Event::Kind::Word);
    client.stop();
    return isSpoken ? 0 : 1;
}

const Role kStopAndLeave("stopAndLeave", stopAndLeave);

TEST(WhoStopsAndLeavesAtOnce, IsNotHeardOn) {
    Machine machine;
    machine.startService({"--sink", "wavdir:" + machine.path("spoken"), "--real-time"});
    EXPECT_EQ(ChildProcess::asRole("stopAndLeave").wait(), 0);
    EXPECT_EQ(inWords(Client().say("Hello.").wait(kLimit)), "finished");
    EXPECT_TRUE(eventually([&] { return machine.spokenFiles() == 2; }));
    machine.shutDownService();
    std::uintmax_t bytes = 0;
    for (const auto& file : std::filesystem::directory_iterator(machine.path("spoken"))) {
        bytes += file.file_size();
    }
    EXPECT_LT(bytes, 1'000'000U) << "of two and a half million for all of it";
}

TEST(TheEndOfAClient, GivesOutcomes) {
    Machine machine;
    machine.startService({"--real-time"});
    std::vector<Utterance> said;
    {
        Recorder events;
        Client client("", shortOfTime());
        events.listenTo(client);
        said = {client.say(kLong), client.say("Never waited for.")};
        ASSERT_TRUE(events.awaits(Event::Kind::Word));
    }
    EXPECT_EQ(inWords(said[0].wait(kLimit)), "lost -103");
    EXPECT_EQ(inWords(said[1].wait(kLimit)), "lost -103 unheard");
}

TEST(TheEndOfAClient, ComesInTimeWhateverTheServiceDoes) {
    Machine machine;
    const auto ends = [](const char* state) {
        Stopwatch watch;
        const Utterance said = Client("", shortOfTime()).say("Hello.");
        EXPECT_TRUE(watch.isWithin(shortOfTime().linger + shortOfTime().deadline)) << state;
        EXPECT_EQ(inWords(said.wait(kLimit)), "lost -103 unheard") << state;
    };
    ends("no service");
    machine.startService();
    {
        Client client("", shortOfTime());
        ASSERT_TRUE(client.waitUntilConnected(kLimit));
        machine.stopService();
        EXPECT_FALSE(client.settings());
        ends("the service is stopped");
    }
    ends("a service that was stopped before");
    machine.stopManager();
    ends("the manager is stopped, too");
    machine.killService();
    machine.continueManager();
    ends("the service is dead");
    machine.killManager();
    ends("no manager");
}

TEST(TheEndOfAClient, LeavesNothingBehind) {
    Machine machine;
    machine.startService();
    const auto round = [] {
        Client client;
        EXPECT_TRUE(client.waitUntilConnected(kLimit));
        EXPECT_EQ(inWords(client.say("x").wait(kLimit)), "finished");
    };
    for (int n = 0; n < 5; ++n) {
        round();
    }
    const std::size_t threadsBefore = threads();
    const std::size_t descriptorsBefore = descriptors();
    for (int n = 0; n < 200; ++n) {
        round();
    }
    EXPECT_TRUE(eventually([&] { return threads() <= threadsBefore + kOfTheRuntime; }))
        << threads();
    EXPECT_TRUE(eventually([&] { return descriptors() <= descriptorsBefore + kOfTheRuntime; }))
        << descriptors() << " instead of " << descriptorsBefore;
}

TEST(TheEndOfAClient, LeavesTwoThreadsBehindAtMostWhileTheServiceIsStopped) {
    Machine machine;
    machine.startService();
    {
        Client client("", shortOfTime());
        ASSERT_TRUE(client.waitUntilConnected(kLimit));
        machine.stopService();
    }
    const std::size_t before = threads();
    const std::size_t descriptorsBefore = descriptors();
    for (int n = 0; n < 30; ++n) {
        Client client("", shortOfTime());
        (void)client.say("Hello.");
        (void)client.settings();
    }
    EXPECT_LE(threads(), before + 2);
    EXPECT_LE(descriptors(), descriptorsBefore + 8);
    machine.continueService();
    Client client;
    EXPECT_EQ(inWords(client.say("Hello.").wait(kLimit)), "finished");
}

TEST(TheEndOfAClient, IsNotMixedUpWithTheBeginningOfTheNext) {
    Machine machine;
    machine.startService();
    for (int n = 0; n < 100; ++n) {
        auto first = std::make_unique<Client>();
        const Utterance one = first->say("One.");
        std::thread ends([&] { first.reset(); });
        Client second;
        const Utterance two = second.say("Two.");
        EXPECT_EQ(inWords(two.wait(kLimit)), "finished");
        ends.join();
        EXPECT_FALSE(one.outcome().isPending());
        EXPECT_TRUE(second.isConnected() || second.waitUntilConnected(kLimit));
    }
}

TEST(AClient, LeavesTheSignalsOfItsProcessToTheThreadThatWaitsForThem) {
    Machine machine;
    machine.startService();
    Client client;
    ASSERT_TRUE(client.waitUntilConnected(kLimit));
    ASSERT_EQ(inWords(client.say("Hello.").wait(kLimit)), "finished");
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGUSR1);
    ASSERT_EQ(pthread_sigmask(SIG_BLOCK, &signals, nullptr), 0);
    // Another thread that took it would end the process.
    ASSERT_EQ(kill(getpid(), SIGUSR1), 0);
    int came = 0;
    EXPECT_EQ(sigwait(&signals, &came), 0);
    EXPECT_EQ(came, SIGUSR1);
}

TEST(TheEndOfAClient, MayComeInItsOwnHandler) {
    Machine machine;
    machine.startService();
    for (int n = 0; n < 20; ++n) {
        std::optional<Client> client(std::in_place);
        std::promise<void> ended;
        client->onEvent([&](const Event& event) {
            if (event.kind == Event::Kind::Ended) {
                client.reset();
                ended.set_value();
            }
        });
        const Utterance said = client->say("x");
        EXPECT_EQ(ended.get_future().wait_for(kLimit), std::future_status::ready);
        EXPECT_EQ(inWords(said.outcome()), "finished");
    }
}

TEST(AHandler, MayCallEveryFunction) {
    Machine machine;
    machine.startService();
    Client client;
    std::promise<std::string> outcome;
    client.onEvent([&](const Event& event) {
        if (event.kind != Event::Kind::Started || event.utterance.number() != 1) {
            return;
        }
        EXPECT_TRUE(client.features(kLimit));
        EXPECT_TRUE(client.settings(kLimit));
        EXPECT_TRUE(client.lock(kLimit));
        EXPECT_TRUE(client.isOn(voxtrel::Switch::Speech, kLimit));
        EXPECT_TRUE(client.isConnected());
        const Utterance inner = client.say("Inside.");
        outcome.set_value(inWords(inner.wait(kLimit)));
        client.stop();
        client.onEvent({});
    });
    (void)client.say("Outside.");
    auto future = outcome.get_future();
    ASSERT_EQ(future.wait_for(kLimit), std::future_status::ready);
    EXPECT_EQ(future.get(), "finished");
    EXPECT_TRUE(client.waitForAll(kLimit));
}

TEST(AServiceThatIsRestartedAgainAndAgain, CostsNothing) {
    Machine machine;
    Recorder events;
    Client client;
    events.listenTo(client);
    std::size_t threadsBefore = 0;
    std::size_t descriptorsBefore = 0;
    for (std::size_t n = 1; n <= 50; ++n) {
        machine.startService();
        const Utterance said = client.say("Hello.");
        EXPECT_EQ(inWords(said.wait(kLimit)), "finished");
        machine.killService();
        ASSERT_TRUE(events.awaits(Event::Kind::Disconnected, n));
        if (n == 5) {
            threadsBefore = threads();
            descriptorsBefore = descriptors();
        }
    }
    EXPECT_EQ(events.count(Event::Kind::Connected), 50U);
    EXPECT_EQ(events.count(Event::Kind::Ended), 50U);
    EXPECT_TRUE(eventually([&] { return threads() <= threadsBefore + kOfTheRuntime; }))
        << threads();
    EXPECT_TRUE(eventually([&] { return descriptors() <= descriptorsBefore + kOfTheRuntime; }))
        << descriptors() << " instead of " << descriptorsBefore;
}

int endStatically(const Arguments& arguments) {
    static Client client("", shortOfTime());
    (void)client.say("Hello.");
    if (arguments.at(0) == "connected") {
        (void)client.waitUntilConnected(kLimit);
    }
    return 0;
}

const Role kEndStatically("endStatically", endStatically);

TEST(AStaticClient, EndsWithItsProcess) {
    Machine machine;
    EXPECT_EQ(ChildProcess::asRole("endStatically", {"absent"}).wait(), 0);
    machine.startService();
    EXPECT_EQ(ChildProcess::asRole("endStatically", {"connected"}).wait(), 0);
    machine.stopService();
    EXPECT_EQ(ChildProcess::asRole("endStatically", {"stopped"}).wait(), 0);
    machine.stopManager();
    EXPECT_EQ(ChildProcess::asRole("endStatically", {"stopped"}).wait(), 0);
}

TEST(AForkedChild, LetsTheClientsOfItsParentBe) {
    Machine machine;
    machine.startService();
    std::optional<Client> client(std::in_place);
    ASSERT_TRUE(client->waitUntilConnected(kLimit));
    const pid_t child = fork();
    if (child == 0) {
        client.reset();
        Client own("", shortOfTime());
        // The runtime does not work without running another program.
        _exit(own.settings() ? 1 : 0);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(inWords(client->say("Hello.").wait(kLimit)), "finished");
}

TEST(AProgramThatAClientStarts, HasAClientOfItsOwn) {
    Machine machine;
    machine.startService({"--sink", "wavdir:" + machine.path("spoken")});
    Client client;
    ASSERT_TRUE(client.waitUntilConnected(kLimit));
    EXPECT_EQ(ChildProcess::asRole("sayAndLeave", {"Hello."}).wait(), 0);
    EXPECT_TRUE(eventually([&] { return machine.spokenFiles() == 1; }));
    EXPECT_EQ(inWords(client.say("Hello.").wait(kLimit)), "finished");
}

}  // namespace
