// SPDX-License-Identifier: Apache-2.0
// Until when a client waits that only wants its speech to be in good hands.
#include "tests/voxtrel/ClientTest.h"

namespace {

using namespace voxtrel;
using namespace voxtrel_test;

using WhatIsTaken = ClientTest;

TEST_F(WhatIsTaken, NeedNotBeSpoken) {
    Client client("test", options());
    service.hold();
    const Utterance spoken = client.say("Held.");
    const Utterance queued = client.say("Behind it.");
    EXPECT_TRUE(client.waitUntilTaken());
    EXPECT_TRUE(spoken.outcome().isPending());
    EXPECT_TRUE(queued.outcome().isPending());
    service.goOn();
    EXPECT_EQ("finished", textOf(queued.wait(kLong)));
}

TEST_F(WhatIsTaken, HasItsOutcomeWhereItIsRefused) {
    Client client("test", options());
    service.refuseNext(Status::QueueFull);
    const Utterance refused = client.say("No.");
    EXPECT_TRUE(client.waitUntilTaken());
    EXPECT_EQ(Outcome::Kind::Refused, refused.outcome().kind());
    EXPECT_EQ(Status::QueueFull, refused.outcome().status());
}

TEST_F(WhatIsTaken, IsNotWaitedForBeyondTheDeadline) {
    Client client("test", options());
    ASSERT_TRUE(client.waitUntilConnected());
    service.freeze();
    (void)client.say("Frozen.");
    EXPECT_EQ(Status::TimedOut, client.waitUntilTaken(20ms).status());
    service.thaw();
    EXPECT_TRUE(eventually([&] { return static_cast<bool>(client.waitUntilTaken()); }));
}

TEST_F(WhatIsTaken, IsNothingWithoutAService) {
    service.die();
    Client client("test", options());
    (void)client.say("Where to?");
    EXPECT_EQ(Status::ServiceNotFound, client.waitUntilTaken(50ms).status());
}

TEST_F(WhatIsTaken, IsALongTextWhenOnlyItsEndIsLeft) {
    Client client("test", options());
    service.hold();
    std::string text;
    while (text.size() < 200'000) {
        text += "It rains. ";
    }
    const Utterance book = client.say(text);
    EXPECT_EQ(Status::TimedOut, client.waitUntilTaken(100ms).status());
    service.goOn();
    EXPECT_TRUE(client.waitUntilTaken());
    EXPECT_EQ("finished", textOf(book.wait(kLong)));
}

}  // namespace
