// SPDX-License-Identifier: Apache-2.0
// Whether a service tells anything at all; and the rate, which it keeps beside its other settings.
#include <future>

#include "tests/voxtrel/ClientTest.h"

namespace {

using namespace voxtrel;
using namespace voxtrel_test;

using TheEvents = ClientTest;

TEST_F(TheEvents, AreThoseOfAServiceInOrder) {
    Client client("test", options());
    EXPECT_TRUE(client.checkEvents());
    EXPECT_TRUE(client.checkEvents()) << "and once more";
    EXPECT_TRUE(service.spoken().empty());
}

TEST_F(TheEvents, AreWaitedForOnceMoreByTheNextCall) {
    Client client("test", options());
    ASSERT_TRUE(client.waitUntilConnected());
    service.freeze();
    EXPECT_EQ(Status::TimedOut, client.checkEvents(20ms).status());
    EXPECT_EQ(Status::TimedOut, client.checkEvents(0ms).status());
    service.thaw();
    EXPECT_TRUE(client.checkEvents());
}

TEST_F(TheEvents, AreSeenByTheNextCallWhenTheyComeBetweenTwo) {
    Client client("test", options());
    ASSERT_TRUE(client.waitUntilConnected());
    service.freeze();
    EXPECT_EQ(Status::TimedOut, client.checkEvents(0ms).status());
    service.thaw();
    EXPECT_TRUE(eventually([&] { return static_cast<bool>(client.checkEvents(0ms)); }));
}

TEST_F(TheEvents, AreSeenByAllWhoWaitForThem) {
    Client client("test", options());
    ASSERT_TRUE(client.waitUntilConnected());
    service.freeze();
    const auto check = [&] { return static_cast<bool>(client.checkEvents(kLong)); };
    std::future<bool> one = std::async(std::launch::async, check);
    std::future<bool> other = std::async(std::launch::async, check);
    EXPECT_EQ(Status::TimedOut, client.checkEvents(50ms).status());  // time for both to wait
    service.thaw();
    EXPECT_TRUE(one.get());
    EXPECT_TRUE(other.get());
}

TEST_F(TheEvents, DoNotHoldUpWhatIsSaid) {
    Client client("test", options());
    ASSERT_TRUE(client.waitUntilConnected());
    service.hold();
    const Utterance said = client.say("Held.");
    EXPECT_TRUE(client.checkEvents());
    service.goOn();
    EXPECT_EQ("finished", textOf(said.wait(kLong)));
}

TEST_F(TheEvents, DoNotComeWithoutAService) {
    service.die();
    Client client("test", options());
    EXPECT_EQ(Status::ServiceNotFound, client.checkEvents(50ms).status());
}

TEST_F(TheEvents, EndWithTheService) {
    Client client("test", options());
    ASSERT_TRUE(client.waitUntilConnected());
    service.freeze();
    EXPECT_EQ(Status::TimedOut, client.checkEvents(20ms).status());
    service.die();
    EXPECT_TRUE(eventually([&] { return !client.isConnected(); }));
    service.comeBack();
    EXPECT_TRUE(client.checkEvents());
}

using TheRate = ClientTest;

TEST_F(TheRate, IsASettingOfTheService) {
    Client client("test", options());
    GlobalSettings rate;
    rate.rate = 250;
    EXPECT_TRUE(client.change(rate));
    EXPECT_EQ(250U, client.settings().value().rate);
    EXPECT_EQ(250U, client.settings().value().speed) << "this service has one of them";
    rate.rate = 901;
    EXPECT_EQ(Status::BadParameter, client.change(rate).status());
}

}  // namespace
