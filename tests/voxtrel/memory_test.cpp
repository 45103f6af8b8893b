// SPDX-License-Identifier: Apache-2.0
// Memory that runs out ends neither the program nor the session, and leaves no utterance without an
// outcome.
#ifndef VOXTREL_TESTS_SANITIZED  // which have an allocator of their own
#include <atomic>
#include <limits>
#include <memory>
#include <new>
#include <optional>

#include "tests/voxtrel/ClientTest.h"
#include "tests/voxtrel/CountedNew.h"
#include "vocabulary/Events.h"
#include "voxtrel/session/Session.h"
#include "voxtrel/testing/FakeRemote.h"
#include "voxtrel/testing/FakeSession.h"

namespace {

using namespace voxtrel;
using namespace voxtrel_test;
using voxtrel::testing::FakeRemote;
using voxtrel::testing::FakeState;
using Clock = std::chrono::steady_clock;

/// More often than anything here asks for memory.
constexpr int kEnough = 200;

/// The calling thread gets no memory.
class Scarcity {
public:
    Scarcity() { failAllocationsOfThisThread(0, std::numeric_limits<int>::max()); }
    ~Scarcity() { failAllocationsOfThisThread(0, 0); }
    Scarcity(const Scarcity&) = delete;
    Scarcity& operator=(const Scarcity&) = delete;
};

class AQueueWithoutMemory : public ::testing::Test {
protected:
    std::shared_ptr<Speech> say(OnLoss onLoss = OnLoss::Report) {
        auto speech = std::make_shared<Speech>();
        speech->client = client;
        speech->state = std::make_shared<UtteranceState>(1);
        speech->text = "Hello.";
        speech->options.onLoss = onLoss;
        queue.add(speech);
        return speech;
    }
    void send() {
        while (queue.next(now)) {
        }
    }

    const Clock::time_point now = Clock::now();
    const std::shared_ptr<Mailbox> client = std::make_shared<Mailbox>(false);
    const SpeechQueue::Teller tell = [](Mailbox& to, Event&& event) { to.put(std::move(event)); };
    SpeechQueue queue{tell};
};

TEST_F(AQueueWithoutMemory, StopsWhatWaits) {
    const auto first = say();
    const auto second = say();
    {
        const Scarcity scarcity;
        queue.stop(*client).end(tell);
    }
    EXPECT_EQ("stopped by client", textOf(first->state->outcome()));
    EXPECT_EQ("stopped by client", textOf(second->state->outcome()));
}

TEST_F(AQueueWithoutMemory, DropsWhatWaitsForEverybody) {
    const auto first = say();
    const auto second = say();
    {
        const Scarcity scarcity;
        queue.dropWaiting(*client).end(tell);
    }
    EXPECT_EQ("stopped by client", textOf(first->state->outcome()));
    EXPECT_EQ("stopped by client", textOf(second->state->outcome()));
}

TEST_F(AQueueWithoutMemory, FindsWhatALaterOneOvertakes) {
    const auto first = say();
    const auto second = say();
    send();
    {
        const Scarcity scarcity;
        queue.onEvent(TTS::EVENT_STARTED, 2, 0, now);
        queue.onEvent(TTS::EVENT_FINISHED, 2, 0, now);
    }
    EXPECT_EQ("lost -102", textOf(first->state->outcome()));
    EXPECT_EQ("finished", textOf(second->state->outcome()));
}

TEST_F(AQueueWithoutMemory, ReportsWhatItCannotSayAgain) {
    const auto again = say(OnLoss::SayAgain);
    send();
    {
        const Scarcity scarcity;
        queue.lose(Status::NoService);
    }
    EXPECT_EQ("lost -5", textOf(again->state->outcome()));
}

TEST_F(AQueueWithoutMemory, KeepsWhatItCouldNotSend) {
    auto before = say();
    send();
    int failures = 0;
    for (int n = 0; n < 100; ++n) {
        const auto speech = say();
        std::optional<SpeechRequest> request;
        try {
            const Scarcity scarcity;
            request = queue.next(now);
        } catch (const std::bad_alloc&) {
            ++failures;
        }
        request = request ? request : queue.next(now);
        ASSERT_TRUE(request);
        EXPECT_EQ(speech, request->speech);
        queue.onEvent(TTS::EVENT_STARTED, request->number, 0, now);
        EXPECT_EQ("lost -102", textOf(before->state->outcome()));
        before = speech;
    }
    EXPECT_LT(0, failures) << "most find room";
}

TEST(AMailboxWithoutMemory, LosesTheEventAndTakesTheNext) {
    Mailbox mailbox(false);
    std::size_t taken = 0;
    mailbox.setHandler([&taken](const Event&) { ++taken; });
    std::size_t put = 0;
    for (int n = 0; n < 5000; ++n) {
        const Scarcity scarcity;
        put += mailbox.put(Event()) ? 1 : 0;
    }
    EXPECT_LT(0U, put);
    EXPECT_GT(5000U, put);
    EXPECT_TRUE(mailbox.put(Event()));
    mailbox.dispatch();
    EXPECT_EQ(put + 1, taken);
}

/// A client, and the session that it shares.
class ASessionWithoutMemory : public ClientTest {
protected:
    ASessionWithoutMemory() { EXPECT_TRUE(client.waitUntilConnected(kLong)); }
    ~ASessionWithoutMemory() override { session->leave(mailbox, Clock::now()); }

    static Clock::time_point deadline() { return Clock::now() + kLong; }

    /// The session's sender gets memory so many times more, and then twice none.
    void failSender(int after) {
        EXPECT_TRUE(session->request(
            [after](Session::Service&) {
                failAllocationsOfThisThread(after, 2);
                return 0;
            },
            deadline()));
    }

    Notes notes;
    Client client{"test", options()};
    const std::shared_ptr<Mailbox> mailbox = std::make_shared<Mailbox>(true);
    const std::shared_ptr<Session> session = voxtrel::testing::sessionOf(service, mailbox);
};

TEST_F(ASessionWithoutMemory, GivesEachUtteranceItsOutcomeAndGoesOn) {
    std::vector<Utterance> said;
    for (int after = 0; after < 40; ++after) {
        failSender(after);
        said.push_back(client.say("Hello."));
        said.push_back(client.say(std::string(3000, 'a')));
    }
    EXPECT_EQ("finished", textOf(client.say("There is memory again.").wait(kLong)));
    for (const Utterance& each : said) {
        EXPECT_FALSE(each.wait(kLong).isPending()) << each.number();
    }
}

TEST_F(ASessionWithoutMemory, StopsOnceThereIsMemoryAgain) {
    client.onEvent(notes.taker());
    for (int after = 0; after < 3; ++after) {  // what it takes to remember it
        const Utterance held = speakAndHold(client, notes);
        failSender(after);
        client.stop();
        EXPECT_EQ("stopped by client", textOf(held.wait(kLong))) << after;
    }
}

TEST_F(ASessionWithoutMemory, TellsWhoAskedIt) {
    const auto ask = [](Session::Service&) -> int { throw std::bad_alloc(); };
    EXPECT_THROW((void)session->request(ask, deadline()), std::bad_alloc);
    EXPECT_TRUE(client.settings(kLong));
}

TEST_F(ASessionWithoutMemory, SendsSpeechAfterACallThatFailed) {
    const std::function<void()> calls[] = {
        [&] { EXPECT_TRUE(session->stopProcess(4711, deadline())); },
        [&] { EXPECT_TRUE(session->stopEverybody(mailbox, deadline())); },
        [&] { EXPECT_TRUE(session->checkEvents(deadline())); },
        [&] { EXPECT_TRUE(client.lock(kLong)); },
        [&] { EXPECT_TRUE(client.waitUntilTaken(kLong)); },
    };
    for (const auto& call : calls) {
        int left = 0;
        for (bool isDone = false; !isDone && left < kEnough; ++left) {
            const Utterance before = client.say("Before.");
            failAllocationsOfThisThread(left);
            try {
                call();
                isDone = true;
            } catch (const std::bad_alloc&) {
            }
            failAllocationsOfThisThread(0, 0);
            EXPECT_FALSE(before.wait(kLong).isPending());
            EXPECT_EQ("finished", textOf(client.say("After.").wait(kLong))) << left;
        }
        EXPECT_GT(kEnough, left) << &call - calls;
    }
}

/// Whoever searches by it gets no memory once, later each time.
class ScarcePort : public Port {
public:
    explicit ScarcePort(std::shared_ptr<FakeState> service) : mService(std::move(service)) {}

    Found find(std::function<void()> /*died*/) override {
        Found found = {new FakeRemote(mService, kFirstLife)};
        failAllocationsOfThisThread(mSearches++);
        return found;
    }
    int searches() const { return mSearches; }

private:
    static constexpr std::uint64_t kFirstLife = 1;
    const std::shared_ptr<FakeState> mService;
    std::atomic<int> mSearches{0};
};

TEST(ASearchWithoutMemory, IsMadeAgainUntilItSucceeds) {
    const auto service = std::make_shared<FakeState>();
    const auto client = std::make_shared<Mailbox>(true);
    std::weak_ptr<Session> place;
    ScarcePort* port = nullptr;
    const auto session = Session::joinAt(
        place,
        [&] {
            auto scarce = std::make_unique<ScarcePort>(service);
            port = scarce.get();
            return std::make_shared<Session>(std::move(scarce));
        },
        client);
    EXPECT_TRUE(session->waitUntilConnected(Clock::now() + kLong));
    EXPECT_LT(1, port->searches());
    session->leave(client, Clock::now() + kLong);
    service->end();
}

}  // namespace
#endif
