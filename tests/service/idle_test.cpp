// SPDX-License-Identifier: Apache-2.0
// When nobody needs the service any more.
#include <gtest/gtest.h>

#include "tests/service/ServiceFixture.h"

namespace voxtreld {
namespace {

using Duration = VoxtrelService::Duration;

constexpr Duration kNone = Duration::zero();
constexpr Duration kShort = std::chrono::nanoseconds(1);

using AnIdleService = ServiceFixture;

TEST_F(AnIdleService, IsOneWithoutClientsAndWithoutAnythingToSay) {
    EXPECT_GT(service->idleTime(), kNone);
    const auto callback = join(kAnn);
    EXPECT_EQ(kNone, service->idleTime());
    Utterance utterance;
    utterance.pid = kAnn;
    ASSERT_EQ(TTS::STATUS_OK, queue->push(utterance));
    EXPECT_EQ(0, service->deregisterCallback(kAnn));
    EXPECT_EQ(kNone, service->idleTime()) << "what the client said is still to be spoken";
    startSpeech();
    stopSpeech();
    EXPECT_GT(service->idleTime(), kNone);
}

TEST_F(AnIdleService, HasBeenIdleOnlySinceTheLastRequest) {
    while (service->idleTime() < std::chrono::milliseconds(50)) {
        std::this_thread::yield();
    }
    const auto asked = std::chrono::steady_clock::now();
    android::Parcel data;
    android::Parcel reply;
    (void)service->onTransact(9999, data, &reply, 0);  // unknown, but somebody is there
    const Duration idle = service->idleTime();
    EXPECT_LE(idle, std::chrono::steady_clock::now() - asked);
    EXPECT_FALSE(service->closeIfIdle(std::chrono::minutes(1)));
}

TEST_F(AnIdleService, TakesNoClientOnceItIsToEnd) {
    service->announceVoices(engine.voices());
    EXPECT_TRUE(service->closeIfIdle(kShort));
    from(kAnn);
    EXPECT_NE(0, service->registerCallback(kAnn, new RecordingCallback(kAnn)));
    TTS::Capabilities capabilities;
    EXPECT_EQ(0, service->getCapabilities(capabilities));
    EXPECT_FALSE(capabilities.ready);
}

TEST_F(AnIdleService, DoesNotEndOnceAClientHasCome) {
    const auto callback = join(kAnn);
    EXPECT_FALSE(service->closeIfIdle(kShort));
    service->announceVoices(engine.voices());
    TTS::Capabilities capabilities;
    EXPECT_EQ(0, service->getCapabilities(capabilities));
    EXPECT_TRUE(capabilities.ready);
}

}  // namespace
}  // namespace voxtreld
