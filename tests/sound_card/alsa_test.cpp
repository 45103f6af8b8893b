// SPDX-License-Identifier: Apache-2.0
// The service plays on a sound card, whose other end listens.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>

#include "tests/sound_card/LoopbackCard.h"
#include "tests/support/Eventually.h"
#include "tests/voxtrelctl/Device.h"
#include "tests/voxtrelctl/Sound.h"
#include "voxtrel/Client.h"

using namespace voxtrel_test;

namespace {

constexpr const char* kSentence = "The last train had left the station an hour ago.";
constexpr const char* kLong =
    "A man in a grey coat stood on the platform and read the timetable once more, although he "
    "knew every line of it. Then it began to rain. He closed his umbrella, smiled, and walked home "
    "along the rails, counting the sleepers.";
constexpr const char* kAudioFailed = "the engine or the audio output failed";

/// What the service writes into files for the sentence, said so often. The engine makes a text a
/// sample longer or shorter by what it spoke before.
std::vector<std::vector<int16_t>> written(size_t times) {
    Device device;
    device.startService({"--sink", "wavdir:" + device.path("wav")});
    for (size_t said = 0; said < times; ++said) {
        EXPECT_EQ(device.ctl({"say", "--wait", kSentence}).status, 0);
    }
    device.stopService();
    std::vector<std::string> paths;
    for (const auto& entry : std::filesystem::directory_iterator(device.path("wav"))) {
        paths.push_back(entry.path().string());
    }
    std::sort(paths.begin(), paths.end());
    std::vector<std::vector<int16_t>> sounds;
    for (const std::string& path : paths) {
        sounds.push_back(soundOf(readSound(path).samples));
    }
    return sounds;
}

/// What the card hears of the sentence.
std::vector<int16_t> heard(Device& device) {
    Capture capture;
    const Outcome said = device.ctl({"say", "--wait", kSentence});
    EXPECT_EQ(said.status, 0) << said.err;
    EXPECT_TRUE(capture.awaitSilence());
    return soundOf(capture.samples());
}

class ASoundCard : public testing::Test {
protected:
    LoopbackCard card;
};

TEST_F(ASoundCard, HearsSentencesSampleBySample) {
    const auto expected = written(2);
    ASSERT_EQ(expected.size(), 2U);
    Device device;
    device.startService({"--sink", LoopbackCard::sink()});
    for (const std::vector<int16_t>& sentence : expected) {
        EXPECT_GT(sentence.size(), kCardRate);
        EXPECT_TRUE(heard(device) == sentence);
    }
}

TEST_F(ASoundCard, FallsSilentWithin50MsOfAStop) {
    constexpr size_t kLimit = kCardRate / 20;
    Device device;
    device.startService({"--sink", LoopbackCard::sink()});
    voxtrel::Client client;
    for (int round = 0; round < 5; ++round) {
        Capture capture;
        const voxtrel::Utterance utterance = client.say(kLong);
        ASSERT_TRUE(eventually([&] { return capture.now() > kCardRate && capture.hasSound(); }));
        const size_t asked = capture.now();
        client.stop();
        EXPECT_EQ(utterance.wait(std::chrono::minutes(1)).kind(), voxtrel::Outcome::Kind::Stopped);
        ASSERT_TRUE(capture.awaitSilence());
        EXPECT_LT(soundEnd(capture.samples()), asked + kLimit) << "in round " << round;
        EXPECT_GT(soundEnd(capture.samples()) + kCardRate / 2, asked) << "in round " << round;
    }
}

TEST_F(ASoundCard, ThatVanishesInMidSentenceIsPlayedOnWhenItIsBack) {
    Device device;
    device.startService({"--sink", LoopbackCard::sink()});
    const size_t length = heard(device).size();
    const auto speaker = device.start({"say", "--wait", kLong});
    {
        Capture capture;
        ASSERT_TRUE(eventually([&] { return capture.hasSound(); }));
    }
    ChildProcess removal = card.remove();
    const Outcome said = speaker->finish();
    EXPECT_EQ(said.status, 1);
    EXPECT_NE((said.out + said.err).find(kAudioFailed), std::string::npos) << said.out << said.err;
    const Outcome removed = removal.finish();
    EXPECT_EQ(removed.status, 0) << removed.err;

    const Outcome without = device.ctl({"say", "--wait", kSentence});
    EXPECT_EQ(without.status, 1);
    EXPECT_NE((without.out + without.err).find(kAudioFailed), std::string::npos) << without.err;

    card.add();
    EXPECT_NEAR(static_cast<double>(heard(device).size()), static_cast<double>(length),
                kCardRate / 100.0);
}

TEST_F(ASoundCard, ThatIsBusyIsNamedAtTheStart) {
    snd_pcm_t* other = nullptr;
    ASSERT_EQ(snd_pcm_open(&other, LoopbackCard::kPlayed, SND_PCM_STREAM_PLAYBACK, 0), 0);
    Device device;
    ChildProcess service({VOXTREL_SERVICE_PROGRAM, "--profile", device.path("voxtrel.ini"),
                          "--sink", LoopbackCard::sink()},
                         ChildProcess::Errors::Apart);
    const Outcome ended = service.finish();
    snd_pcm_close(other);
    EXPECT_EQ(ended.status, 1);
    EXPECT_NE(ended.err.find("no sound on the audio device 'hw:Loopback,0,0' (Device or resource "
                             "busy)"),
              std::string::npos)
        << ended.err;
    EXPECT_NO_THROW(device.startService({"--sink", LoopbackCard::sink()}));
}

}  // namespace
