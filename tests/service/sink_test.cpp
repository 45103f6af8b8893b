// SPDX-License-Identifier: Apache-2.0
#include "service/SinkFactory.h"

#include <gtest/gtest.h>
#include <sndfile.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <thread>
#include <vector>

#include "service/PacedSink.h"
#include "service/WavSink.h"
#include "tests/service/Fakes.h"
#include "tests/support/TempFolder.h"

namespace voxtreld {
namespace {

using voxtrel_test::TempFolder;

constexpr unsigned kRate = 22050;
const Cancel kNotCancelled;

/// What a reader of a sound file finds; a rate of 0 if it is no sound file.
struct Heard {
    int rate = 0;
    int channels = 0;
    std::vector<int16_t> samples;
};

Heard hear(const std::string& path) {
    SF_INFO info = {};
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    if (file == nullptr) {
        return {};
    }
    Heard heard = {info.samplerate, info.channels, {}};
    heard.samples.resize(static_cast<size_t>(info.frames));
    sf_read_short(file, heard.samples.data(), info.frames);
    sf_close(file);
    return heard;
}

void writeUtterance(Sink& sink, uint32_t id, const std::vector<int16_t>& samples) {
    ASSERT_TRUE(sink.begin(77, id));
    ASSERT_TRUE(sink.write(samples.data(), samples.size(), kNotCancelled));
    ASSERT_TRUE(sink.end(kNotCancelled));
}

TEST(AWavSink, WritesAllUtterancesIntoOneFile) {
    const TempFolder folder;
    const std::string path = folder.path("all.wav");
    std::string error;
    WavSink sink(path);
    ASSERT_TRUE(sink.open(kRate, error)) << error;
    writeUtterance(sink, 1, {1, 2, 3});
    writeUtterance(sink, 2, {-4, 5});
    const Heard heard = hear(path);
    EXPECT_EQ(22050, heard.rate);
    EXPECT_EQ(1, heard.channels);
    EXPECT_EQ((std::vector<int16_t>{1, 2, 3, -4, 5}), heard.samples);
}

TEST(AWavSink, LosesAtMostTheLastUtteranceWhenItsProcessIsKilled) {
    const TempFolder folder;
    const std::string path = folder.path("killed.wav");
    const pid_t child = fork();
    if (child == 0) {
        std::string error;
        WavSink sink(path);
        const std::vector<int16_t> samples(1000, 11);
        if (sink.open(kRate, error) && sink.begin(1, 1) &&
            sink.write(samples.data(), samples.size(), kNotCancelled) && sink.end(kNotCancelled) &&
            sink.begin(1, 2) && sink.write(samples.data(), samples.size(), kNotCancelled)) {
            raise(SIGKILL);
        }
        _exit(1);
    }
    int status = 0;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    ASSERT_TRUE(WIFSIGNALED(status)) << "the child could not write";
    const Heard heard = hear(path);
    EXPECT_EQ(22050, heard.rate);
    ASSERT_GE(heard.samples.size(), 1000U);
    EXPECT_EQ(11, heard.samples[999]);
}

TEST(AWavSink, SaysWhichFileItCannotWrite) {
    std::string error;
    WavSink sink("/nowhere/at/all.wav");
    EXPECT_FALSE(sink.open(kRate, error));
    EXPECT_NE(std::string::npos, error.find("'/nowhere/at/all.wav'")) << error;
}

TEST(AWavFolderSink, WritesAFileForEachUtterance) {
    const TempFolder folder;
    const std::string path = folder.path("made/for/it");
    std::string error;
    WavFolderSink sink(path);
    ASSERT_TRUE(sink.open(kRate, error)) << error;
    writeUtterance(sink, 5, {1, 2});
    writeUtterance(sink, 6, {3});
    EXPECT_EQ((std::vector<int16_t>{1, 2}), hear(path + "/000001-77-5.wav").samples);
    EXPECT_EQ((std::vector<int16_t>{3}), hear(path + "/000002-77-6.wav").samples);
}

TEST(AWavFolderSink, NeverReusesANumberThatTheFolderHas) {
    const TempFolder folder;
    for (const uint32_t id : {1U, 2U}) {
        std::string error;
        WavFolderSink sink(folder.path("."));
        ASSERT_TRUE(sink.open(kRate, error)) << error;
        writeUtterance(sink, id, {static_cast<int16_t>(id)});
    }
    EXPECT_EQ((std::vector<int16_t>{1}), hear(folder.path("000001-77-1.wav")).samples);
    EXPECT_EQ((std::vector<int16_t>{2}), hear(folder.path("000002-77-2.wav")).samples);
}

TEST(AWavFolderSink, FailsForOneUtteranceWhenTheFolderIsGone) {
    std::string error;
    const TempFolder folder;
    const std::string path = folder.path("sub");
    WavFolderSink sink(path);
    ASSERT_TRUE(sink.open(kRate, error)) << error;
    std::filesystem::remove_all(path);
    EXPECT_FALSE(sink.begin(1, 1));
    std::filesystem::create_directory(path);
    EXPECT_TRUE(sink.begin(1, 2));
}

TEST(AnAlsaSink, SaysWhatToDoWhenThereIsNoSuchDevice) {
    std::string error;
    const auto sink = makeSink("alsa:no_such_card", false, error);
    ASSERT_NE(nullptr, sink);
    EXPECT_FALSE(sink->open(kRate, error));
    EXPECT_NE(std::string::npos, error.find("'no_such_card'")) << error;
    EXPECT_NE(std::string::npos, error.find("--sink wav:FILE")) << error;
    EXPECT_FALSE(sink->begin(1, 1));
}

/// ALSA's own "null" device plays at once into nothing, so the whole path runs without a card.
TEST(AnAlsaSink, PlaysThroughADeviceThatIsThere) {
    std::string error;
    const auto sink = makeSink("alsa:null", false, error);
    ASSERT_NE(nullptr, sink);
    ASSERT_TRUE(sink->open(kRate, error)) << error;
    const std::vector<int16_t> samples(5000, 100);
    writeUtterance(*sink, 1, samples);
    writeUtterance(*sink, 2, samples);
    Cancel cancelled;
    cancelled.set();
    ASSERT_TRUE(sink->begin(1, 3));
    EXPECT_TRUE(sink->write(samples.data(), samples.size(), cancelled));
    EXPECT_TRUE(sink->end(cancelled));
}

TEST(ASinkName, ThatIsUnknownIsAnsweredWithTheOnesThatExist) {
    for (const char* name : {"", "wav", "wav:", "wavdir:", "speaker", "alsa:", "none:1"}) {
        std::string error;
        EXPECT_EQ(nullptr, makeSink(name, false, error)) << name;
        EXPECT_NE(std::string::npos, error.find("use wav:FILE, wavdir:FOLDER, alsa")) << error;
    }
}

TEST(ASinkName, SelectsTheSink) {
    for (const char* name : {"wav:x", "wavdir:x", "none", "alsa", "alsa:hw:0"}) {
        std::string error;
        EXPECT_NE(nullptr, makeSink(name, true, error)) << name;
    }
}

TEST(APacedSink, TakesAsLongAsTheSoundLasts) {
    std::string error;
    const auto sink = makeSink("none", true, error);
    ASSERT_TRUE(sink->open(kRate, error));
    const auto begin = std::chrono::steady_clock::now();
    writeUtterance(*sink, 1, std::vector<int16_t>(kRate / 10, 1));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(100));
}

TEST(APacedSink, DoesNotHoldBackTheFirstSound) {
    auto inner = std::make_unique<RecordingSink>();
    const RecordingSink& recorded = *inner;
    PacedSink sink(std::move(inner));
    std::string error;
    ASSERT_TRUE(sink.open(kRate, error));
    ASSERT_TRUE(sink.begin(1, 1));
    const std::vector<int16_t> longSound(3600 * kRate / 100, 1);
    EXPECT_TRUE(sink.write(longSound.data(), longSound.size(), kNotCancelled));
    EXPECT_EQ(longSound, recorded.samples());
}

TEST(APacedSink, GivesUpAtOnceWhenCancelled) {
    PacedSink sink(std::make_unique<RecordingSink>());
    std::string error;
    ASSERT_TRUE(sink.open(kRate, error));
    ASSERT_TRUE(sink.begin(1, 1));
    const std::vector<int16_t> longSound(3600 * kRate / 100, 1);
    Cancel cancel;
    EXPECT_TRUE(sink.write(longSound.data(), longSound.size(), cancel));
    std::thread canceller([&] { cancel.set(); });
    EXPECT_TRUE(
        sink.write(longSound.data(), longSound.size(), cancel));  // would wait for 36 seconds
    EXPECT_TRUE(sink.end(cancel));
    canceller.join();
}

TEST(ACancel, CanBeUsedAgainOnceCleared) {
    Cancel cancel;
    for (int round = 0; round < 3; ++round) {
        EXPECT_FALSE(cancel.sleepUntil(std::chrono::steady_clock::now()));
        cancel.set();
        EXPECT_TRUE(cancel.sleepUntil(std::chrono::steady_clock::time_point::max()));
        cancel.clear();
        EXPECT_FALSE(cancel);
    }
}

}  // namespace
}  // namespace voxtreld
