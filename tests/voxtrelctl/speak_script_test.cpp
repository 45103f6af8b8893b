// SPDX-License-Identifier: Apache-2.0
// The script behind `./dev speak`, and the example that a newcomer builds.
#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "tests/voxtrelctl/Device.h"
#include "tests/voxtrelctl/Sound.h"

using namespace voxtrel_test;

namespace {

/// The command lines of the processes that have `text` among their arguments.
std::string processesNaming(const std::string& text) {
    std::string found;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        std::ifstream file(entry.path() / "cmdline", std::ios::binary);
        std::string line;
        std::getline(file, line);
        if (line.find(text) != std::string::npos) {
            found += line + "\n";
        }
    }
    return found;
}

/// Runs the script with a folder of its own for everything temporary.
class TheSpeakScript : public ::testing::Test {
protected:
    TheSpeakScript() {
        std::filesystem::create_directory(mFolder.path("tmp"));
        setenv("TMPDIR", mFolder.path("tmp").c_str(), 1);
    }

    std::unique_ptr<ChildProcess> speak(const ChildProcess::Words& arguments) {
        // A process group of its own, as a terminal gives a command.
        ChildProcess::Words words = {"setsid", "bash", VOXTREL_SPEAK_SCRIPT, VOXTREL_BUILD_FOLDER};
        words.insert(words.end(), arguments.begin(), arguments.end());
        return std::make_unique<ChildProcess>(words, "");
    }

    /// Neither a file nor a process of the run is left.
    void expectNothingLeft() {
        EXPECT_TRUE(std::filesystem::is_empty(mFolder.path("tmp")));
        EXPECT_EQ(processesNaming(mFolder.path("tmp")), "");
    }

    const TempFolder mFolder;
};

TEST_F(TheSpeakScript, WritesAWavAndSaysWhatIsInIt) {
    const std::string wav = mFolder.path("hello.wav");
    const Outcome outcome = speak({"-o", wav, "Hello, world."})->finish();
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_NE(outcome.out.find("word 1 at 7: world.\nfinished 1\n"), std::string::npos)
        << outcome.out;
    EXPECT_NE(outcome.out.find(wav), std::string::npos);
    const Sound sound = readSound(wav);
    EXPECT_FALSE(sound.isSilent());
    char length[32];
    std::snprintf(length, sizeof(length), "length %.2f s at %d Hz", sound.seconds(), sound.rate);
    EXPECT_NE(outcome.out.find(length), std::string::npos) << outcome.out;
    EXPECT_NE(outcome.out.find("dBFS"), std::string::npos);
    expectNothingLeft();
}

TEST_F(TheSpeakScript, SpeaksTheLanguageAskedFor) {
    const std::string wav = mFolder.path("fr.wav");
    EXPECT_EQ(speak({"--lang", "fr_FR", "Bonjour tout le monde.", "-o", wav})->finish().status, 0);
    EXPECT_NEAR(readSound(wav).seconds(),
                engineAlone("Bonjour tout le monde.", "fr", 300).seconds(), 0.5);
}

TEST_F(TheSpeakScript, FailsWithTheReason) {
    const Outcome outcome = speak({"--lang", "xx_XX", "-o", mFolder.path("a.wav"), "x"})->finish();
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.err.find("voxtrelctl: -3 bad parameter: there is no language"),
              std::string::npos)
        << outcome.err;
    expectNothingLeft();
    EXPECT_EQ(speak({})->finish().status, 2);
}

TEST_F(TheSpeakScript, StopsWhatItStartedOnCtrlC) {
    std::string text;
    while (text.size() < 100'000) {
        text += "A sentence that nobody will hear to its end. ";
    }
    const auto run = speak({"-o", mFolder.path("long.wav"), text});
    ASSERT_TRUE(run->awaitOutput("word 1 at "));
    kill(-run->pid(), SIGINT);
    EXPECT_EQ(run->finish().status, 130);
    expectNothingLeft();
}

TEST(TheExample, SpeaksItsSentence) {
    Device device;
    device.startService();
    const Outcome outcome = ChildProcess({VOXTREL_EXAMPLE_PROGRAM}, "").finish();
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    EXPECT_EQ(outcome.out, "spoken\n");
    device.stopService();
    EXPECT_FALSE(readSound(device.wavPath()).isSilent());
}

TEST(TheExample, SaysWhyItIsRefused) {
    Device device;
    device.startService({"--sink", "none"});
    EXPECT_EQ(device.ctl({"disable"}).status, 0);
    const Outcome outcome = ChildProcess({VOXTREL_EXAMPLE_PROGRAM}, "").finish();
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "hello: the service refuses with -1\n");
}

}  // namespace
