// SPDX-License-Identifier: Apache-2.0
// A service that does not answer.
#include <algorithm>
#include <functional>
#include <future>
#include <memory>

#include "tests/voxtrel/ClientTest.h"
#include "voxtrel/testing/FakeSession.h"

namespace {

using namespace voxtrel;
using namespace voxtrel_test;
using Clock = std::chrono::steady_clock;

/// A frozen service lets nobody go by itself, so a call that waits for it never returns, and one
/// with a deadline of a minute that returns sooner has not waited.
class AFrozenService : public ClientTest {
protected:
    using Request = std::function<Status(Client&, Milliseconds)>;

    const std::vector<Request> kRequests = {
        [](Client& client, Milliseconds time) { return client.settings(time).status(); },
        [](Client& client, Milliseconds time) {
            GlobalSettings settings;
            settings.verbosity = 1;
            return client.change(settings, time).status();
        },
        [](Client& client, Milliseconds time) {
            return client.isOn(Switch::Speech, time).status();
        },
        [](Client& client, Milliseconds time) {
            return client.turn(Switch::Pitch, true, time).status();
        },
        [](Client& client, Milliseconds time) { return client.resetSettings(time).status(); },
        [](Client& client, Milliseconds time) { return client.lock(time).status(); },
        [](Client& client, Milliseconds time) { return client.stopEverybody(time).status(); },
    };

    void connect(Client& client) { ASSERT_TRUE(client.waitUntilConnected(kLong)); }
};

TEST_F(AFrozenService, KeepsNoRequestBeyondItsDeadline) {
    for (const Request& request : kRequests) {
        service.thaw();
        Client client("test", options());
        connect(client);
        ASSERT_TRUE(eventually([&] { return client.settings(kLong).status() == Status::Ok; }));
        service.freeze();
        const auto before = Clock::now();
        EXPECT_EQ(Status::TimedOut, request(client, 20ms)) << &request - kRequests.data();
        EXPECT_LE(20ms, Clock::now() - before);
        service.thaw();
    }
}

TEST_F(AFrozenService, KeepsNoRequestBeyondTheDeadlineOfItsClient) {
    Client client("test", options(20ms));
    connect(client);
    service.freeze();
    EXPECT_EQ(Status::TimedOut, client.settings().status());
}

TEST_F(AFrozenService, GrantsTheLockToWhoTakesItAgainAfterGivingUp) {
    Client client("test", options(20ms));
    connect(client);
    for (int round = 0; round < 20; ++round) {  // what is told of the first may come meanwhile
        service.freeze();
        EXPECT_EQ(Status::TimedOut, client.lock().status());
        auto thawing = std::async(std::launch::async, [this] { service.thaw(); });
        Result<Lock> lock = Error{};
        EXPECT_TRUE(eventually([&] {
            lock = client.lock(kLong);
            return lock.status() != Status::Unresponsive;
        }));
        ASSERT_TRUE(lock) << lock.message();
        EXPECT_TRUE(client.isOn(Switch::Speech, kLong));
        EXPECT_TRUE(lock->isHeld());
    }
}

TEST_F(AFrozenService, IsNotAskedAgainBeforeItHasAnswered) {
    Client client("test", options(20ms));
    Client other("other", options(20ms));
    connect(client);
    service.freeze();
    ASSERT_TRUE(eventually([&] { return client.settings().status() == Status::Unresponsive; }));
    const auto before = Clock::now();
    for (const Request& request : kRequests) {
        EXPECT_EQ(Status::Unresponsive, request(client, kLong));
        EXPECT_EQ(Status::Unresponsive, request(other, kLong));
    }
    EXPECT_GT(kLong, Clock::now() - before);
    service.thaw();
    for (const Request& request : kRequests) {
        EXPECT_TRUE(eventually([&] { return request(client, kLong) == Status::Ok; }));
    }
}

TEST_F(AFrozenService, NeverHoldsUpSpeechNorAsksAboutIt) {
    Notes notes;
    Client client("test", options());
    client.onEvent(notes.taker());
    connect(client);
    service.freeze();
    std::vector<Utterance> said;
    for (int n = 0; n < 200; ++n) {
        said.push_back(client.say("Hello."));
        said.push_back(client.pause(1ms));
    }
    EXPECT_TRUE(said.back().outcome().isPending());
    EXPECT_TRUE(said.back().wait(1ms).isPending());
    EXPECT_EQ(Status::TimedOut, client.waitForAll(1ms).status());
    EXPECT_TRUE(client.isConnected());
    EXPECT_TRUE(client.features(kLong));
    service.thaw();
    for (const Utterance& utterance : said) {
        EXPECT_EQ("finished", textOf(utterance.wait(kLong)));
    }
}

TEST_F(AFrozenService, StopsWhatItHasNotGotAtOnceAndTheRestLater) {
    Client client("test", options());
    connect(client);
    service.freeze();
    std::vector<Utterance> said;
    for (int n = 0; n < 100; ++n) {
        said.push_back(client.say("Hello."));
    }
    client.stop();
    EXPECT_EQ("stopped by client", textOf(said.back().outcome()));
    const Utterance after = client.say("After.");
    service.thaw();
    for (const Utterance& utterance : said) {
        EXPECT_FALSE(utterance.wait(kLong).isPending());
    }
    EXPECT_EQ("finished", textOf(after.wait(kLong)));
}

TEST_F(AFrozenService, IsNotStoppedByWhoCouldNotAskIt) {
    Notes notes;
    Client client("test", options());
    client.onEvent(notes.taker());
    const Utterance held = speakAndHold(client, notes);
    service.freeze();
    ASSERT_TRUE(eventually([&] { return client.settings(20ms).status() == Status::Unresponsive; }));
    EXPECT_EQ(Status::Unresponsive, client.stopEverybody(kLong).status());
    service.thaw();
    service.stopByAnother();
    EXPECT_EQ("stopped by somebody", textOf(held.wait(kLong)));
}

TEST_F(AFrozenService, IsAskedOnceToStopHoweverOftenAClientWantsIt) {
    Notes notes;
    Client client("test", options());
    client.onEvent(notes.taker());
    const Utterance held = speakAndHold(client, notes);
    service.freeze();
    for (int n = 0; n < 1000; ++n) {
        client.stop();
    }
    service.thaw();
    EXPECT_EQ("stopped by client", textOf(held.wait(kLong)));
    EXPECT_TRUE(client.settings(kLong)) << "it has got what came before";
    const std::vector<std::string> requests = service.requests();
    // The first may be on its way before the others are wanted.
    EXPECT_GE(2, std::count(requests.begin(), requests.end(), "stop own"));
}

TEST_F(AFrozenService, ThatNeverRegistersTheClientIsSaidNotToAnswer) {
    service.freeze();
    Client client("test", options());
    EXPECT_TRUE(eventually(
        [&] { return client.waitUntilConnected(10ms).status() == Status::Unresponsive; }));
    EXPECT_EQ(Status::Unresponsive, client.settings(10ms).status());
    EXPECT_STREQ("the service does not answer: it may be stopped", client.features(10ms).message());
    const Utterance early = client.say("Early.");
    service.thaw();
    EXPECT_TRUE(client.waitUntilConnected(kLong));
    EXPECT_EQ("finished", textOf(early.wait(kLong)));
}

TEST_F(AFrozenService, LetsAClientEnd) {
    auto client = std::make_unique<Client>("test", options(20ms));
    connect(*client);
    service.freeze();
    const Utterance lost = client->say("Lost.");
    EXPECT_EQ(Status::TimedOut, client->settings().status());
    client.reset();
    EXPECT_EQ("lost -103", textOf(lost.outcome()));
    {
        Client next("next", options(20ms));
        EXPECT_TRUE(next.say("Lost too.").outcome().isPending());
    }
    Client last("last", options());
    const Utterance spoken = last.say("Spoken.");
    service.thaw();
    EXPECT_EQ("finished", textOf(spoken.wait(kLong)));
}

TEST_F(AFrozenService, KeepsTheEndOfAClientNoLongerThanThatIsGiven) {
    ClientOptions unhurried = options(3h);
    unhurried.linger = 3h;
    Client client("test", unhurried);
    connect(client);
    service.freeze();
    const Utterance lost = client.say("Lost.");
    client.close(20ms);
    EXPECT_EQ("lost -103", textOf(lost.outcome()));
    client.close(20ms);  // has nothing to do
    client = Client("next", options(20ms));
    EXPECT_TRUE(client.say("Lost too.").outcome().isPending());
}

TEST_F(AFrozenService, ThatIsKilledIsNoServiceAndTheNextOneServes) {
    Client client("test", options());
    connect(client);
    service.freeze();
    const Utterance lost = client.say("Lost.");
    EXPECT_EQ(Status::TimedOut, client.settings(20ms).status());
    service.die();
    service.comeBack();
    EXPECT_FALSE(lost.wait(kLong).isPending());
    EXPECT_EQ("finished", textOf(client.say("Next.").wait(kLong)));
    EXPECT_TRUE(client.settings(kLong));
}

TEST(AFrozenServiceThatIsDestroyed, LetsThreadsOfItsClientsGo) {
    auto service = std::make_unique<voxtrel::testing::FakeService>();
    ClientOptions options;
    options.fake = service.get();
    options.deadline = options.linger = 20ms;
    {
        Client client("test", options);
        ASSERT_TRUE(client.waitUntilConnected(kLong));
        service->freeze();
        client.say("Lost.");
        EXPECT_EQ(Status::TimedOut, client.settings().status());
    }
    service.reset();
}

TEST_F(ClientTest, ARequestWithASlowAnswerIsDoneAllTheSame) {
    Client client("test", options());
    ASSERT_TRUE(client.waitUntilConnected(kLong));
    service.answerAfter(1500ms);
    EXPECT_EQ(Status::TimedOut, client.turn(Switch::Speed, false, 1000ms).status());
    service.answerAfter(0ms);
    ASSERT_TRUE(
        eventually([&] { return client.isOn(Switch::Speed, kLong).status() == Status::Ok; }));
    EXPECT_FALSE(client.isOn(Switch::Speed, kLong).value());
}

TEST_F(ClientTest, AShortDeadlineOfOneCallIsNoReasonForTheNextToFail) {
    Client client("test", options());
    ASSERT_TRUE(client.waitUntilConnected(kLong));
    service.answerAfter(100ms);
    for (int n = 0; n < 5; ++n) {
        EXPECT_EQ(Status::TimedOut, client.settings(0ms).status());
        EXPECT_TRUE(client.isOn(Switch::Speed, kLong));
    }
}

TEST_F(ClientTest, AServiceThatHasJustDiedIsNotSaidNotToAnswer) {
    for (int n = 0; n < 5; ++n) {
        Client client("test", options());
        ASSERT_TRUE(client.waitUntilConnected(kLong));
        service.answerAfter(300ms);
        EXPECT_TRUE(client.isOn(Switch::Speech, kLong)) << "it was found a while ago";
        service.answerAfter(0ms);
        service.die();
        const Status status = client.settings(0ms).status();
        EXPECT_TRUE(status == Status::NoService || status == Status::ServiceNotFound)
            << static_cast<int>(status);
        service.comeBack();
    }
}

TEST_F(ClientTest, AServiceThatDiesInARequestHasNotDoneIt) {
    Client client("test", options());
    ASSERT_TRUE(client.waitUntilConnected(kLong));
    const auto mailbox = std::make_shared<Mailbox>(false);
    const auto session = voxtrel::testing::sessionOf(service, mailbox);
    const auto dying = [&](Session::Service& remote) {
        service.die();
        return remote.enabled() ? 1 : 0;
    };
    EXPECT_EQ(Status::NoService, session->request(dying, Clock::now() + kLong).status());
    session->leave(mailbox, Clock::now());
}

}  // namespace
