// SPDX-License-Identifier: Apache-2.0
// Whatever the service and the manager do, a call comes back.
#include <gtest/gtest.h>

#include <thread>

#include "tests/support/Eventually.h"
#include "tests/voxtrel_process/Calls.h"
#include "tests/voxtrel_process/Machine.h"
#include "tests/voxtrel_process/Recorder.h"
#include "tests/voxtrel_process/Stopwatch.h"

using namespace voxtrel_test;
using voxtrel::Client;
using voxtrel::Error;
using voxtrel::Milliseconds;
using voxtrel::Status;

namespace {

constexpr Milliseconds kDeadline(150);

/// For an answer that says what is waited for.
constexpr Milliseconds kLongEnough(800);

class ACall : public ::testing::TestWithParam<Call> {
protected:
    Error make(Client& client, Milliseconds deadline = kDeadline) {
        Stopwatch watch;
        const Error error = GetParam().make(client, deadline);
        EXPECT_TRUE(watch.isWithin(deadline));
        return error;
    }

    bool asksTheService() const {
        const std::string name = GetParam().name;
        return name != "features" && name != "waitUntilConnected";
    }

    Machine machine;
};

TEST_P(ACall, IsDoneWhenThereIsAService) {
    machine.startService();
    Client client;
    EXPECT_TRUE(client.waitUntilConnected(kLimit));
    const Error error = GetParam().make(client, kLimit);
    EXPECT_EQ(error.status, Status::Ok) << error.message;
}

TEST_P(ACall, EndsWithoutAService) {
    Client client;
    EXPECT_EQ(make(client).status, Status::ServiceNotFound);
}

TEST_P(ACall, EndsWithoutAServiceManager) {
    machine.killManager();
    Client client;
    const Error error = make(client, kLongEnough);
    EXPECT_TRUE(error.status == Status::ServiceNotFound || error.status == Status::Unresponsive)
        << error.message;
    EXPECT_NE(error.message.find("service manager"), std::string::npos) << error.message;
}

TEST_P(ACall, EndsWhenTheServiceManagerIsStopped) {
    machine.stopManager();
    Client client;
    const Error error = make(client, kLongEnough);
    EXPECT_EQ(error.status, Status::Unresponsive);
    EXPECT_NE(error.message.find("the service manager does not answer"), std::string::npos);
    machine.continueManager();
    machine.startService();
    EXPECT_TRUE(client.waitUntilConnected(kLimit));
}

TEST_P(ACall, EndsWhenTheServiceWasStoppedBefore) {
    machine.startService();
    EXPECT_TRUE(Client().waitUntilConnected(kLimit));
    machine.stopService();
    Client client;
    const Error error = make(client, kLongEnough);
    EXPECT_EQ(error.status, Status::Unresponsive);
    EXPECT_NE(error.message.find("the service does not answer"), std::string::npos);
    machine.continueService();
    EXPECT_TRUE(client.waitUntilConnected(kLimit));
}

TEST_P(ACall, EndsWhenTheServiceIsStoppedMeanwhile) {
    machine.startService();
    Client client;
    ASSERT_TRUE(client.waitUntilConnected(kLimit));
    machine.stopService();
    const Error first = make(client);
    EXPECT_EQ(first.status, asksTheService() ? Status::TimedOut : Status::Ok) << first.message;
    // The first may have come to the service late, on a machine that is busy.
    EXPECT_TRUE(!asksTheService() ||
                eventually([&] { return make(client).status == Status::Unresponsive; }));
    machine.continueService();
    EXPECT_TRUE(eventually([&] { return GetParam().make(client, kLimit).status == Status::Ok; }));
}

TEST_P(ACall, EndsWhenTheServiceHasDied) {
    machine.startService();
    Recorder events;
    Client client;
    events.listenTo(client);
    ASSERT_TRUE(client.waitUntilConnected(kLimit));
    machine.killService();
    ASSERT_TRUE(events.awaits(Recorder::Kind::Disconnected));
    const Error error = make(client);
    EXPECT_TRUE(error.status == Status::NoService || error.status == Status::ServiceNotFound)
        << error.message;
}

TEST_P(ACall, IsNoSuccessWhenTheServiceDiesInIt) {
    machine.startService();
    Client client;
    ASSERT_TRUE(client.waitUntilConnected(kLimit));
    machine.stopService();
    Error error;
    std::thread caller([&] { error = GetParam().make(client, std::chrono::seconds(10)); });
    EXPECT_FALSE(client.settings(kLongEnough)) << "it is behind the other call";
    machine.killService();
    caller.join();
    if (asksTheService()) {
        EXPECT_TRUE(error.status == Status::NoService || error.status == Status::ServiceNotFound)
            << static_cast<int>(error.status) << error.message;
    }
}

TEST_P(ACall, EndsWhileTheServiceLoadsItsVoices) {
    machine.startOther({VOXTREL_MUTE_SERVICE});
    Client client;
    const Error error = make(client, kLongEnough);
    EXPECT_EQ(error.status, Status::NoService);
    EXPECT_NE(error.message.find("is loading its voices"), std::string::npos) << error.message;
}

TEST(AServiceThatIsStoppedWhileItLoadsItsVoices, IsSaidNotToAnswer) {
    Machine machine;
    machine.startOther({VOXTREL_MUTE_SERVICE});
    Client client;
    const auto says = [&client](const char* what) {
        return std::string(client.features(Milliseconds(100)).message()).find(what) !=
               std::string::npos;
    };
    EXPECT_TRUE(eventually([&] { return says("is loading its voices"); }));
    machine.stopService();
    EXPECT_TRUE(eventually([&] { return says("the service does not answer"); }));
    EXPECT_EQ(client.settings(kDeadline).status(), Status::Unresponsive);
    machine.continueService();
    EXPECT_TRUE(eventually([&] { return says("is loading its voices"); }));
}

INSTANTIATE_TEST_SUITE_P(OfTheClient, ACall, ::testing::ValuesIn(waitingCalls()),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
