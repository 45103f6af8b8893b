// SPDX-License-Identifier: Apache-2.0
// What a client costs its process. Each in a process of its own.
#include <algorithm>
#include <filesystem>
#include <memory>

#include "tests/voxtrel/ClientTest.h"
#include "tests/voxtrel/CountedNew.h"
#include "vocabulary/Events.h"
#include "voxtrel/testing/FakeSession.h"

namespace {

using namespace voxtrel;
using namespace voxtrel_test;
using ThreadsOfClients = ClientTest;

std::ptrdiff_t threads() {
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return std::distance(begin(tasks), end(tasks));
}

TEST_F(ThreadsOfClients, AreTwoAndAThirdForHandlers) {
    const std::ptrdiff_t before = threads();
    {
        Client client("test", options());
        Client polling("polling", polled());
        ASSERT_TRUE(client.say("One.").wait(kLong));
        EXPECT_EQ(before + 2, threads());
        polling.onEvent([](const Event&) {});
        EXPECT_EQ(before + 2, threads());
        client.onEvent([](const Event&) {});
        ASSERT_TRUE(client.say("Two.").wait(kLong));
        Client other("other", options());
        other.onEvent([](const Event&) {});
        ASSERT_TRUE(other.say("Three.").wait(kLong));
        EXPECT_EQ(before + 3, threads());
    }
    // The system lists a thread for a moment after it has been joined.
    EXPECT_TRUE(eventually([&] { return threads() == before; }));
}

TEST_F(ThreadsOfClients, AreNoMoreThoughAServiceDoesNotAnswer) {
    const std::ptrdiff_t before = threads();
    {
        Client client("test", options(10ms));
        ASSERT_TRUE(client.waitUntilConnected(kLong));
        service.freeze();
        EXPECT_EQ(Status::TimedOut, client.settings().status());
    }
    for (int n = 0; n < 10; ++n) {
        Client client("test", options(10ms));
        client.say("Lost.");
        (void)client.settings();
    }
    EXPECT_GE(before + 2, threads());
    service.thaw();
    EXPECT_TRUE(eventually([&] { return threads() == before; }));
}

#ifndef VOXTREL_TESTS_SANITIZED  // which have an allocator of their own
TEST_F(ThreadsOfClients, AskForNoMemoryForAWord) {
    Client client("test", polled());
    std::size_t words = 0;
    client.onEvent([&](const Event& event) { words += event.kind == Event::Kind::Word ? 1 : 0; });
    ASSERT_TRUE(client.waitUntilConnected(kLong));
    service.hold();
    client.say(std::string(1000, 'a'));
    ASSERT_TRUE(eventually([&] { return service.requests().size() == 2; }));
    const auto mailbox = std::make_shared<Mailbox>(true);
    const std::shared_ptr<Session> session = voxtrel::testing::sessionOf(service, mailbox);
    const auto aWord = [&](unsigned n) {
        session->onNotify(TTS::EVENT_WORD, 1, n % 1000);
        return client.dispatch();
    };
    while (aWord(0) == 0) {
    }
    words = 0;
    const std::size_t before = allocationsOfThisThread();
    for (unsigned n = 0; n < 5000; ++n) {
        aWord(n);
    }
    EXPECT_EQ(before, allocationsOfThisThread());
    EXPECT_EQ(5000U, words);
    session->leave(mailbox, std::chrono::steady_clock::now());
}
#endif

TEST_F(ThreadsOfClients, PrintNothing) {
    ::testing::internal::CaptureStdout();
    ::testing::internal::CaptureStderr();
    {
        Client client("test", options());
        client.onEvent([](const Event&) { throw 1; });
        EXPECT_TRUE(client.say("One.").wait(kLong));
        client.say("\xFF");
        service.die();
        (void)client.settings(10ms);
        service.comeBack();
        EXPECT_TRUE(client.say("Two.").wait(kLong));
        (void)client.loadProfile("/nowhere/at/all");
        service.freeze();
        (void)client.settings(10ms);
        service.thaw();
        service.shutDown();
    }
    EXPECT_EQ("", ::testing::internal::GetCapturedStderr());
    EXPECT_EQ("", ::testing::internal::GetCapturedStdout());
}

}  // namespace
