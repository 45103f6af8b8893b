// SPDX-License-Identifier: Apache-2.0
// What a client sees when the service is killed in the middle of a sentence.
#include <gtest/gtest.h>

#include <binder/IServiceManager.h>
#include <binder/ProcessState.h>
#include <atomic>
#include <csignal>
#include <filesystem>
#include <memory>

#include "client/TTSClientPrivate.h"
#include "ipc/ITextToSpeechFestival.h"
#include "tests/support/Eventually.h"
#include "tests/voxtrelctl/Device.h"
#include "vocabulary/Events.h"

using namespace voxtrel_test;

namespace {

constexpr const char* kLong =
    "The last train had left the station an hour "
    "ago. A man in a grey coat stood on the platform "
    "and read the timetable once more, although he "
    "knew every line of it. Then it began to rain.";

TEST(AServiceKilledInMidSpeech, EndsSayWithMinusFive) {
    Device device;
    device.startService({"--real-time"});
    const auto speaker = device.start({"say", "--wait", "--speed", "150", kLong});
    ASSERT_TRUE(speaker->awaitOutput("word 1 at 4: last"));
    device.killService();
    const Outcome said = speaker->finish();
    EXPECT_EQ(said.status, 1);
    EXPECT_EQ(said.err,
              "voxtrelctl: -5 no connection to the service: it died "
              "while speaking: it went away; "
              "start voxtreld again and repeat the command\n");
}

TEST(AServiceKilledInMidSpeech, ComesBackWithItsSettings) {
    Device device;
    device.startService({"--real-time"});
    EXPECT_EQ(device.ctl({"set", "speed", "150"}).status, 0);
    EXPECT_EQ(device.ctl({"set", "language", "pt_PT"}).status, 0);
    const auto speaker = device.start({"say", "--wait", kLong});
    ASSERT_TRUE(speaker->awaitOutput("started 1"));
    device.killService();
    const Outcome said = speaker->finish();
    EXPECT_EQ(said.status, 1) << said.err;
    device.startService({"--sink", "none"});
    EXPECT_EQ(settingOf(device, "speed"), "150");
    EXPECT_EQ(settingOf(device, "language"), "pt_PT");
    EXPECT_EQ(device.ctl({"say", "--wait", "Hello again."}).status, 0);
}

constexpr const char* kShutdownLine =
    "-14 the service has been shut down: start voxtreld again and repeat the command";

TEST(AServiceShutDownInMidSpeech, EndsSayWithItsReason) {
    Device device;
    device.startService({"--real-time"});
    const auto speaker = device.start({"say", "--wait", "--speed", "150", kLong});
    ASSERT_TRUE(speaker->awaitOutput("word 1 at 4: last"));
    device.stopService();
    const Outcome said = speaker->finish();
    EXPECT_EQ(said.status, 1);
    EXPECT_EQ(said.err, std::string("voxtrelctl: ") + kShutdownLine + "\n");
    EXPECT_NE(said.out.find("stopped 1 (-14 the service has been shut down)\n"), std::string::npos)
        << said.out;
}

/// The example of the README in the middle of a long sentence.
class TheExampleInMidSpeech : public ::testing::Test {
protected:
    TheExampleInMidSpeech() {
        device.startService({"--sink", "wavdir:" + device.path("spoken"), "--real-time"});
        example =
            std::make_unique<ChildProcess>(ChildProcess::Words{VOXTREL_EXAMPLE_PROGRAM, kLong}, "");
        EXPECT_TRUE(eventually([&] { return !std::filesystem::is_empty(device.path("spoken")); }));
    }

    Device device;
    std::unique_ptr<ChildProcess> example;
};

TEST_F(TheExampleInMidSpeech, EndsWhenTheServiceDies) {
    device.killService();
    const Outcome outcome = example->finish();
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.out.find("the service has died\n"), std::string::npos) << outcome.out;
}

TEST_F(TheExampleInMidSpeech, EndsWhenTheServiceIsShutDown) {
    device.stopService();
    const Outcome outcome = example->finish();
    EXPECT_EQ(outcome.status, 1);
    // The event and the news of the death come on threads of their own.
    EXPECT_TRUE(outcome.out.find("stopped\n") != std::string::npos ||
                outcome.out.find("the service has died\n") != std::string::npos)
        << outcome.out;
}

/// One operation of a client after another, none of which may reach a service.
void expectNoService(TTS::TTSClientPrivate& client) {
    uint32_t number = 200;
    float real = 50.0F;
    bool flag = false;
    EXPECT_EQ(client.say(1, "x"), -5);
    EXPECT_EQ(client.silence(1, 1), -5);
    EXPECT_EQ(client.stopAndFlush(0), -5);
    EXPECT_EQ(client.setEnable(true), -5);
    EXPECT_EQ(client.setVerbosity(1), -5);
    EXPECT_EQ(client.setGlobalRate(200), -5);
    EXPECT_EQ(client.lock(), -5);
    EXPECT_EQ(client.unlock(), -5);
    EXPECT_EQ(client.setGlobalConfig(GCONF_SPEED, &number), -5);
    EXPECT_EQ(client.globalConfig(GCONF_SPEED, &number), -5);
    EXPECT_EQ(client.setEnable2(GCONF_SPEED_ENABLE, true), -5);
    EXPECT_EQ(client.enabled2(GCONF_SPEED_ENABLE, &flag), -5);
    EXPECT_EQ(client.setSpeed(&number), -5);
    EXPECT_EQ(client.setVolume(&real), -5);
    EXPECT_EQ(client.factoryReset(nullptr), -5);
    EXPECT_EQ(client.disconnect(), -5);
    EXPECT_FALSE(client.enabled());
    EXPECT_EQ(client.locked(), 1);
}

/// What the function of a client was told.
struct Told {
    static void take(unsigned first, unsigned, unsigned) { mask |= 1U << first; }
    static bool has(TTS::Event event) { return (mask & (1U << event)) != 0; }
    static std::atomic<unsigned> mask;
};
std::atomic<unsigned> Told::mask{0};

/// Told of a death behind the client, which has asked for it before: what a client does with the
/// news is not locked against its own calls.
class Watch : public android::IBinder::DeathRecipient {
public:
    void binderDied(const android::wp<android::IBinder>&) override { isTold = true; }
    std::atomic<bool> isTold{false};
};

TEST(AClientOfAKilledService, GetsMinusFiveAndThenANewConnection) {
    Device device;
    device.startService({"--real-time"});
    android::ProcessState::self()->startThreadPool();
    TTS::TTSClientPrivate client("test", &Told::take);
    ASSERT_EQ(client.connect(), 0);
    ASSERT_EQ(client.say(1, kLong), 0);
    ASSERT_TRUE(eventually([] { return Told::has(TTS::EVENT_STARTED); }));
    const android::sp<Watch> watch = new Watch;
    const android::sp<android::IBinder> service =
        android::defaultServiceManager()->checkService(TTS::ITextToSpeechFestival::descriptor);
    ASSERT_EQ(service->linkToDeath(watch), android::OK);
    device.killService();
    ASSERT_TRUE(eventually([&] { return watch->isTold.load(); }));
    EXPECT_EQ(client.say(2, "x"), -5);
    expectNoService(client);

    device.startService({"--sink", "none"});
    EXPECT_EQ(client.connect(), 0);
    ASSERT_EQ(client.say(2, "Hello again."), 0);
    EXPECT_TRUE(eventually([] { return Told::has(TTS::EVENT_FINISHED); }));
    EXPECT_EQ(client.disconnect(), 0);
}

TEST(AServiceManagerThatDies, DoesNotDisturbThoseWhoFoundEachOther) {
    Device device;
    device.startService({"--real-time"});
    const auto speaker = device.start({"say", "--wait", "--speed", "400", kLong});
    ASSERT_TRUE(speaker->awaitOutput("word 1 at 4: last"));
    device.killServiceManager();
    const Outcome said = speaker->finish();
    EXPECT_EQ(said.status, 0) << said.err;
    EXPECT_NE(said.out.find("finished 1\n"), std::string::npos);
}

}  // namespace
