// SPDX-License-Identifier: Apache-2.0
// Several clients of one service: who is heard, who stops whom, who holds the
// lock.
#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>

#include "tests/voxtrelctl/Device.h"
#include "tests/voxtrelctl/Sound.h"

using namespace voxtrel_test;

namespace {

constexpr const char* kLong =
    "The last train had left the station an hour "
    "ago. A man in a grey coat stood on the platform "
    "and read the timetable once more, although he "
    "knew every line of it. Then it began to rain. "
    "He closed his umbrella, smiled, and walked home "
    "along the rails, counting the sleepers.";

constexpr const char* kLockedLine =
    "voxtrelctl: -7 the service is locked by another client: wait until that "
    "client unlocks or "
    "leaves; voxtrelctl monitor shows when\n";

std::vector<Sound> soundsIn(const std::string& folder) {
    std::vector<std::string> paths;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        paths.push_back(entry.path().string());
    }
    std::sort(paths.begin(), paths.end());
    std::vector<Sound> sounds;
    for (const std::string& path : paths) {
        sounds.push_back(readSound(path));
    }
    return sounds;
}

TEST(TwoClients, AreHeardOneAfterTheOther) {
    Device device;
    device.startService({"--sink", "wavdir:" + device.path("wav")});
    const auto english = device.start({"say", "--wait", "--speed", "200", kLong});
    const auto french =
        device.start({"say", "--wait", "--speed", "200", "--lang", "fr_FR", "Il pleut."});
    EXPECT_EQ(english->finish().status, 0);
    EXPECT_EQ(french->finish().status, 0);
    device.stopService();
    std::vector<Sound> sounds = soundsIn(device.path("wav"));
    ASSERT_EQ(sounds.size(), 2U);
    std::sort(sounds.begin(), sounds.end(),
              [](const Sound& a, const Sound& b) { return a.samples.size() > b.samples.size(); });
    // The engine pauses a little longer or shorter after a text, by what it spoke
    // before.
    EXPECT_NEAR(sounds[0].seconds(), engineAlone(kLong, "en-us", 200).seconds(), 0.5);
    EXPECT_NEAR(sounds[1].seconds(), engineAlone("Il pleut.", "fr", 200).seconds(), 0.5);
}

TEST(Stop, CutsSpeechInTheMiddle) {
    Device device;
    device.startService({"--real-time"});
    const auto speaker = device.start({"say", "--wait", "--speed", "200", kLong});
    ASSERT_TRUE(speaker->awaitOutput("word 1 at 9: train"));
    const Outcome stopped = device.ctl({"stop"});
    EXPECT_EQ(stopped.status, 0) << stopped.err;
    const Outcome said = speaker->finish();
    EXPECT_EQ(said.status, 0) << said.err;
    EXPECT_NE(said.out.find("stopped 1 (flushed)\n"), std::string::npos) << said.out;
    device.stopService();
    const double alone = engineAlone(kLong, "en-us", 200).seconds();
    EXPECT_LT(readSound(device.wavPath()).seconds(), alone / 2);
}

TEST(Stop, EndsATextThatIsHandedOverPieceByPiece) {
    Device device;
    device.startService({"--real-time"});
    std::string book;
    while (book.size() < 200'000) {
        book += kLong;
        book += "\n";
    }
    std::ofstream(device.path("book.txt")) << book;
    const auto speaker = device.start({"say", "--wait", "--file", device.path("book.txt")});
    ASSERT_TRUE(speaker->awaitOutput("word 1 at 9: train"));
    EXPECT_EQ(device.ctl({"stop"}).status, 0);
    const Outcome said = speaker->finish();
    EXPECT_EQ(said.status, 0) << said.err;
    EXPECT_NE(said.out.find("stopped 1 (flushed)\n"), std::string::npos) << said.out;
    EXPECT_EQ(said.out.find("finished"), std::string::npos) << "no further page after the stop";
}

TEST(Stop, OfOneProcessLeavesTheOthersAlone) {
    Device device;
    device.startService({"--real-time"});
    const auto first = device.start({"say", "--wait", "--speed", "200", kLong});
    ASSERT_TRUE(first->awaitOutput("word 1 at 9: train"));
    const auto second = device.start({"say", "--wait", "--speed", "400", "And now the weather."});
    const std::string process = std::to_string(first->pid());
    EXPECT_EQ(device.ctl({"stop", "--process", process}).status, 0);
    EXPECT_NE(first->finish().out.find("stopped 1 (flushed)\n"), std::string::npos);
    EXPECT_NE(second->finish().out.find("finished 1\n"), std::string::npos);
}

TEST(Stop, OfAProcessThatHasLeftEndsWhatItSaid) {
    Device device;
    device.startService({"--real-time"});
    const auto first = device.start({"say", "--speed", "100", kLong, kLong, kLong});
    const std::string process = std::to_string(first->pid());
    EXPECT_EQ(first->finish().status, 0);
    EXPECT_EQ(device.ctl({"stop", "--process", process}).status, 0);
    EXPECT_EQ(device.ctl({"silence", "--wait", "1"}).status, 0);
    device.stopService();
    const double alone = engineAlone(kLong, "en-us", 100).seconds();
    EXPECT_LT(readSound(device.wavPath()).seconds(), alone);
}

TEST(CtrlC, FlushesTheOwnSpeechAndNoOther) {
    Device device;
    device.startService({"--real-time"});
    const auto first = device.start({"say", "--wait", "--speed", "200", kLong});
    ASSERT_TRUE(first->awaitOutput("started 1"));
    const auto second = device.start({"say", "--wait", "--speed", "400", "And now the weather."});
    ASSERT_TRUE(first->awaitOutput("word 1 at 9: train"));
    first->kill(SIGINT);
    const Outcome cut = first->finish();
    EXPECT_EQ(cut.status, 1);
    EXPECT_EQ(cut.err, "voxtrelctl: interrupted\n");
    EXPECT_NE(cut.out.find("stopped 1 (flushed)\n"), std::string::npos) << cut.out;
    const Outcome heard = second->finish();
    EXPECT_EQ(heard.status, 0) << heard.err;
    EXPECT_NE(heard.out.find("finished 1\n"), std::string::npos) << heard.out;
}

TEST(AKilledClient, LeavesNothingBehind) {
    Device device;
    device.startService({"--real-time"});
    const auto speaker = device.start({"say", "--wait", "--speed", "100", kLong, kLong, kLong});
    ASSERT_TRUE(speaker->awaitOutput("word 1 at 9: train"));
    speaker->kill(SIGKILL);
    EXPECT_EQ(speaker->finish().status, 128 + SIGKILL);
    EXPECT_EQ(device.ctl({"silence", "--wait", "1"}).status, 0);
    device.stopService();
    const double alone = engineAlone(kLong, "en-us", 100).seconds();
    EXPECT_LT(readSound(device.wavPath()).seconds(), alone / 2);
}

TEST(Lock, PassesTheExitStatusOn) {
    Device device;
    device.startService({"--sink", "none"});
    EXPECT_EQ(device.ctl({"lock", "--", "true"}).status, 0);
    EXPECT_EQ(device.ctl({"lock", "--", "sh", "-c", "exit 7"}).status, 7);
    EXPECT_EQ(device.ctl({"lock", "--", "sh", "-c", "kill -9 $$"}).status, 137);
    EXPECT_EQ(device.ctl({"lock", "--", "echo", "--json"}).out, "--json\n");
}

TEST(Lock, OfACommandThatThereIsNotSaysSo) {
    Device device;
    device.startService({"--sink", "none"});
    const Outcome absent = device.ctl({"lock", "--", "/nowhere/at/all"});
    EXPECT_EQ(absent.status, 127);
    EXPECT_EQ(absent.err, "voxtrelctl: /nowhere/at/all: No such file or directory\n");
    EXPECT_EQ(device.ctl({"lock", "--", "/etc/passwd"}).status, 126);
    EXPECT_EQ(device.ctl({"say", "free again"}).status, 0);
}

/// Every command that changes something, and the two that look at the lock.
TEST(ALockedService, RefusesEveryChangeOfOthers) {
    Device device;
    device.startService({"--sink", "none"});
    ASSERT_EQ(ChildProcess({"mkfifo", device.path("gate")}, "").finish().status, 0);
    const auto holder =
        device.start({"lock", "--", "sh", "-c", "echo held; read line <" + device.path("gate")});
    ASSERT_TRUE(holder->awaitOutput("held"));
    const std::vector<Device::Words> refused = {
        {"say", "hi"},
        {"say", "--wait", "hi"},
        {"silence", "1"},
        {"stop"},
        {"lock", "--", "true"},
        {"set", "speed", "200"},
        {"set", "rate", "200"},
        {"set", "verbosity", "1"},
        {"disable"},
        {"disable", "pitch"},
    };
    for (const Device::Words& words : refused) {
        const Outcome outcome = device.ctl(words);
        EXPECT_EQ(outcome.status, 1) << words.front();
        EXPECT_EQ(outcome.err.rfind("voxtrelctl: -7 the service is locked by another client: ", 0),
                  0U)
            << words.front() << ": " << outcome.err;
    }
    EXPECT_EQ(device.ctl({"say", "hi"}).err, kLockedLine);
    EXPECT_NE(device.ctl({"status"}).out.find("held by another client"), std::string::npos);
    const Outcome doctor = device.ctl({"doctor"});
    EXPECT_EQ(doctor.status, 1);
    EXPECT_NE(doctor.out.find("!!  lock"), std::string::npos) << doctor.out;
    EXPECT_EQ(settingOf(device, "speed"), "300") << "reading is allowed";

    writeFile(device.path("gate"), "\n");
    EXPECT_EQ(holder->finish().status, 0);
    EXPECT_EQ(device.ctl({"say", "hi"}).status, 0);
    EXPECT_NE(device.ctl({"status"}).out.find("lock     free"), std::string::npos);
}

TEST(ALock, EndsWithItsHolder) {
    Device device;
    device.startService({"--sink", "none"});
    const auto holder =
        device.start({"lock", "--", "sh", "-c", "echo held; exec tail -f /dev/null"});
    ASSERT_TRUE(holder->awaitOutput("held"));
    const auto monitor = device.start({"monitor"});
    ASSERT_TRUE(monitor->awaitOutput("connected"));
    holder->kill(SIGTERM);
    EXPECT_EQ(holder->finish().status, 128 + SIGTERM) << "the signal is passed on to the command";
    EXPECT_TRUE(monitor->awaitOutput("lock: free"));
}

}  // namespace
