// SPDX-License-Identifier: Apache-2.0
// What handlers may do, and when they run.
#include <poll.h>

#include <atomic>
#include <future>
#include <memory>
#include <thread>

#include "tests/voxtrel/ClientTest.h"

namespace {

using namespace voxtrel;
using namespace voxtrel_test;
using Kind = Event::Kind;

class AHandler : public ClientTest, public ::testing::WithParamInterface<HandlerThread> {
protected:
    ClientOptions chosen() {
        ClientOptions chosen = options();
        chosen.handlerThread = GetParam();
        return chosen;
    }

    /// Dispatches, where that is the application's, until `isDone`.
    void runUntil(Client& client, const std::function<bool()>& isDone) {
        ASSERT_TRUE(eventually([&] {
            if (GetParam() == HandlerThread::OfTheApplication) {
                client.dispatch();
            }
            return isDone();
        }));
    }
};

INSTANTIATE_TEST_SUITE_P(Runs, AHandler,
                         ::testing::Values(HandlerThread::OfTheLibrary,
                                           HandlerThread::OfTheApplication),
                         [](const auto& each) {
                             return each.param == HandlerThread::OfTheLibrary
                                        ? "OnTheLibrarysThread"
                                        : "OnTheApplicationsThread";
                         });

TEST_P(AHandler, MayCallEverything) {
    Client client("test", chosen());
    std::atomic<bool> isDone{false};
    Utterance within;
    client.onEvent([&](const Event& event) {
        if (event.kind != Kind::Started || event.utterance.number() != 1) {
            return;
        }
        within = client.say("Within.");
        client.pause(1ms);
        EXPECT_TRUE(client.features(kLong));
        EXPECT_TRUE(client.settings(kLong));
        EXPECT_TRUE(client.turn(Switch::Speed, true, kLong));
        EXPECT_TRUE(client.isOn(Switch::Speech, kLong).value());
        EXPECT_TRUE(client.lock(kLong));
        EXPECT_TRUE(client.waitUntilConnected(kLong));
        EXPECT_TRUE(client.isConnected());
        EXPECT_TRUE(within.wait(kLong));
        EXPECT_TRUE(client.waitForAll(kLong));
        EXPECT_EQ(0U, client.dispatch());
        Client other("other", options());
        EXPECT_TRUE(other.say("Another's.").wait(kLong));
        client.say("Stopped.");
        client.stop();
        EXPECT_TRUE(client.stopEverybody(kLong));
        client.setDefaults(client.defaults());
        client.onEvent([&](const Event&) { isDone = true; });
    });
    client.say("First.");
    runUntil(client, [&] { return isDone.load(); });
}

TEST_P(AHandler, MayDestroyItsClient) {
    auto client = std::make_unique<Client>("test", chosen());
    Client other("other", options());
    Client* const still = client.get();
    std::atomic<int> callsAfterwards{0};
    std::atomic<bool> isGone{false};
    client->onEvent([&](const Event& event) {
        if (isGone) {
            ++callsAfterwards;
        } else if (event.kind == Kind::Started) {
            client.reset();
            isGone = true;
        }
    });
    const Utterance utterance = still->say("One two three.");
    if (GetParam() == HandlerThread::OfTheApplication) {
        ASSERT_TRUE(utterance.wait(kLong));
        EXPECT_GE(still->dispatch(), 1U);
    }
    ASSERT_TRUE(eventually([&] { return isGone.load(); }));
    EXPECT_FALSE(utterance.outcome().isPending());
    EXPECT_TRUE(other.say("Other's.").wait(kLong));
    EXPECT_EQ(0, callsAfterwards);
}

TEST_P(AHandler, MayDestroyTheLastClient) {
    auto client = std::make_unique<Client>("test", chosen());
    Client* const still = client.get();
    std::atomic<bool> isGone{false};
    client->onEvent([&](const Event& event) {
        if (event.kind == Kind::Started) {
            client.reset();
            isGone = true;
        }
    });
    const Utterance utterance = still->say("One two three.");
    if (GetParam() == HandlerThread::OfTheApplication) {
        ASSERT_TRUE(utterance.wait(kLong));
        still->dispatch();
    }
    ASSERT_TRUE(eventually([&] { return isGone.load(); }));
    Client next("next", options());
    EXPECT_TRUE(next.say("Next.").wait(kLong));
}

TEST_P(AHandler, MayThrow) {
    Client client("test", chosen());
    std::atomic<int> calls{0};
    client.onEvent([&](const Event&) {
        ++calls;
        throw 1;
    });
    client.say("One.");
    runUntil(client, [&] { return calls >= 3; });
}

TEST_P(AHandler, HearsOfEachUtteranceInOrder) {
    Notes notes;
    Client client("test", chosen());
    client.onEvent(notes.taker());
    std::vector<Utterance> said;
    for (int n = 0; n < 100; ++n) {
        said.push_back(client.say("One two."));
    }
    runUntil(client, [&] { return notes.count(Kind::Ended) == 100; });
    for (const Utterance& utterance : said) {
        EXPECT_EQ(1U, notes.ended(utterance));
    }
    std::uint64_t last = 0;
    for (const Event& event : notes.all()) {
        if (event.utterance.number() != 0) {
            EXPECT_LE(last, event.utterance.number());
            last = event.utterance.number();
        }
    }
}

TEST_F(ClientTest, TheDestructorWaitsForAHandlerThatRunsElsewhere) {
    auto client = std::make_unique<Client>("test", options());
    std::promise<void> isInside;
    std::promise<void> mayGo;
    std::atomic<bool> hasLeft{false};
    client->onEvent([&, first = true](const Event& event) mutable {
        if (event.kind == Kind::Started && first) {
            first = false;
            isInside.set_value();
            mayGo.get_future().wait();
            hasLeft = true;
        }
    });
    client->say("One.");
    isInside.get_future().wait();
    std::promise<void> begins;
    std::thread destroying([&] {
        begins.set_value();
        client.reset();
        EXPECT_TRUE(hasLeft);
    });
    begins.get_future().wait();
    mayGo.set_value();
    destroying.join();
}

TEST_F(ClientTest, AHandlerThatStaysDoesNotHoldUpSpeech) {
    Client client("test", options());
    Client other("other", options());
    std::promise<void> isInside;
    std::promise<void> mayGo;
    client.onEvent([&, first = true](const Event&) mutable {
        if (first) {
            first = false;
            isInside.set_value();
            mayGo.get_future().wait();
        }
    });
    const Utterance own = client.say("Own.");
    isInside.get_future().wait();
    EXPECT_TRUE(own.wait(kLong));
    EXPECT_TRUE(client.say("More.").wait(kLong));
    EXPECT_TRUE(other.say("Other's.").wait(kLong));
    EXPECT_TRUE(client.settings(kLong));
    mayGo.set_value();
}

TEST_F(ClientTest, WhatTheThreadOfTheLibraryHandlesIsNotHandledElsewhere) {
    Client client("test", options());
    Client other("other", options());
    std::atomic<bool> isHandledHere{false};
    Notes notes;
    client.onEvent([&, here = std::this_thread::get_id()](const Event& event) {
        isHandledHere = isHandledHere || std::this_thread::get_id() == here;
        notes.take(event);
    });
    std::promise<void> isInside;
    std::promise<void> mayGo;
    other.onEvent([&](const Event& event) {
        if (event.kind == Kind::Started) {
            isInside.set_value();
            mayGo.get_future().wait();
        }
    });
    other.say("One.");
    isInside.get_future().wait();
    EXPECT_TRUE(client.say("Two.").wait(kLong));
    EXPECT_EQ(0U, client.dispatch());
    mayGo.set_value();
    EXPECT_TRUE(notes.waitFor(Kind::Ended));
    EXPECT_FALSE(isHandledHere);
}

TEST_F(ClientTest, TheDescriptorIsReadableWhileThereIsSomethingToDispatch) {
    Notes notes;
    Client client("test", polled());
    const auto isReadable = [&](int milliseconds) {
        pollfd look = {client.fd(), POLLIN, 0};
        return ::poll(&look, 1, milliseconds) == 1;
    };
    client.onEvent(notes.taker());
    ASSERT_TRUE(client.waitUntilConnected(kLong));
    client.dispatch();
    EXPECT_FALSE(isReadable(0));
    const Utterance utterance = client.say("One.");
    EXPECT_TRUE(isReadable(60000));
    ASSERT_TRUE(utterance.wait(kLong));
    EXPECT_EQ(0U, notes.ended(utterance)) << "nothing is handled elsewhere";
    ASSERT_TRUE(eventually([&] {
        while (isReadable(0)) {
            EXPECT_EQ(1U, client.dispatch(1));
        }
        return notes.ended(utterance) == 1;
    }));
    EXPECT_EQ(0U, client.dispatch());
    EXPECT_EQ(-1, Client("other", options()).fd());
}

}  // namespace
