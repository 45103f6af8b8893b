// SPDX-License-Identifier: Apache-2.0
// The defaults of a client in a profile.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <thread>

#include "profile/TtsSetting.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/OtherUser.h"
#include "tests/support/Roles.h"
#include "tests/support/TempFolder.h"
#include "tests/voxtrel_process/Machine.h"
#include "tests/voxtrel_process/Recorder.h"

using namespace voxtrel_test;
using voxtrel::Client;
using voxtrel::SpeechOptions;
using voxtrel::Status;

namespace {

class AProfile : public ::testing::Test {
protected:
    /// What TtsSetting reads.
    TTS::TtsSetting contents() {
        TTS::TtsSetting setting("");
        testing::internal::CaptureStdout();
        EXPECT_TRUE(setting.deserialize(path.c_str()));
        (void)testing::internal::GetCapturedStdout();
        return setting;
    }

    static SpeechOptions usual() {
        SpeechOptions options;
        options.language = "fr";
        options.voice = "2";
        options.speed = 250;
        options.pitch = 50.0F;
        options.volume = 80.0F;
        options.speechVolume = 70;
        options.mediaVolume = 10;
        return options;
    }

    std::ptrdiff_t filesInFolder() const {
        const std::filesystem::directory_iterator files(folder.path("."));
        return std::distance(begin(files), end(files));
    }

    Machine machine;
    const TempFolder folder;
    const std::string path = folder.path("p.ini");
    Client client;
};

TEST_F(AProfile, IsWhatTheContractsClassReads) {
    client.setDefaults(usual());
    const auto saved = client.saveProfile(path);
    ASSERT_TRUE(saved) << saved.message();
    const TTS::TtsSetting setting = contents();
    EXPECT_EQ(setting.mLang, "fr_FR");
    EXPECT_EQ(setting.mVoice, 2U);
    EXPECT_EQ(setting.mSpeed, 250U);
    EXPECT_EQ(setting.mPitch, 50.0F);
    EXPECT_EQ(setting.mVolume, 80.0F);
    EXPECT_EQ(setting.mTtsVolume, 70U);
    EXPECT_EQ(setting.mMediaVolume, 10U);
}

TEST_F(AProfile, GivesTheDefaultsBack) {
    client.setDefaults(usual());
    ASSERT_TRUE(client.saveProfile(path));
    SpeechOptions others;
    others.onLoss = voxtrel::OnLoss::SayAgain;
    others.speed = 1;
    client.setDefaults(others);
    ASSERT_TRUE(client.loadProfile(path));
    const SpeechOptions read = client.defaults();
    EXPECT_EQ(read.language, "fr-FR");
    EXPECT_EQ(read.voice, "2");
    EXPECT_EQ(read.speed, 250U);
    EXPECT_EQ(read.pitch, 50.0F);
    EXPECT_EQ(read.volume, 80.0F);
    EXPECT_EQ(read.speechVolume, 70U);
    EXPECT_EQ(read.mediaVolume, 10U);
    EXPECT_EQ(read.onLoss, voxtrel::OnLoss::SayAgain) << "is no part of it";
}

TEST_F(AProfile, LeavesUnsetWhatItDoesNotSet) {
    client.setDefaults({});
    ASSERT_TRUE(client.saveProfile(path));
    client.setDefaults(usual());
    ASSERT_TRUE(client.loadProfile(path));
    const SpeechOptions read = client.defaults();
    EXPECT_FALSE(read.language || read.voice || read.speed || read.pitch || read.volume ||
                 read.speechVolume || read.mediaVolume);
}

TEST_F(AProfile, HasTheNumberOfAVoiceThatIsNamed) {
    SpeechOptions options;
    options.language = "en";
    machine.startService();
    const auto features = client.features(kLimit);
    ASSERT_TRUE(features);
    for (const auto& voice : features->voices) {
        if (voice.language == "en-US" && voice.number == 2) {
            options.voice = voice.name;
        }
    }
    client.setDefaults(options);
    ASSERT_TRUE(client.saveProfile(path));
    EXPECT_EQ(contents().mVoice, 2U);
}

TEST_F(AProfile, TellsThatAVoiceCannotBeLookedUp) {
    SpeechOptions options;
    options.voice = "Anna";
    client.setDefaults(options);
    const auto saved = client.saveProfile(path);
    EXPECT_FALSE(saved);
    EXPECT_NE(std::string(saved.message()).find("the number of the voice 'Anna'"),
              std::string::npos);
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(AProfile, RefusesWhatItCannotHold) {
    SpeechOptions options;
    options.volume = 1234567.0F;  // it would be read as 1
    client.setDefaults(options);
    EXPECT_EQ(client.saveProfile(path).status(), Status::BadParameter);
    options = {};
    options.speed = 4'000'000'000;
    client.setDefaults(options);
    EXPECT_EQ(client.saveProfile(path).status(), Status::BadParameter);
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(AProfile, TellsWhyItCannotBeWritten) {
    const std::string missing = folder.path("none/p.ini");
    const auto saved = client.saveProfile(missing);
    EXPECT_EQ(saved.status(), Status::ProfileError);
    EXPECT_EQ(std::string(saved.message()),
              "the profile '" + missing + "' cannot be written: No such file or directory");
    EXPECT_EQ(std::string(client.saveProfile(folder.path("")).message()),
              "the profile '" + folder.path("") + "' cannot be written: Is a directory");
    EXPECT_EQ(std::string(client.saveProfile("/dev/full").message()),
              "the profile '/dev/full' cannot be written: Invalid argument");
}

TEST_F(AProfile, TellsWhyItCannotBeRead) {
    const auto read = client.loadProfile(path);
    EXPECT_EQ(read.status(), Status::ProfileError);
    EXPECT_EQ(std::string(read.message()),
              "the profile '" + path + "' cannot be read: No such file or directory");
    EXPECT_EQ(client.loadProfile(folder.path("")).status(), Status::ProfileError);
    ASSERT_EQ(mkfifo(folder.path("fifo").c_str(), 0600), 0);
    EXPECT_EQ(client.loadProfile(folder.path("fifo")).status(), Status::ProfileError);
}

TEST_F(AProfile, StaysAsItWasWhenTheDiskIsFull) {
    client.setDefaults(usual());
    ASSERT_TRUE(client.saveProfile(path));
    const std::string before = readFile(path);
    SpeechOptions others = usual();
    others.speed = 100;
    client.setDefaults(others);
    // A limit on files is told as a full disk is.
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit = {};
    getrlimit(RLIMIT_FSIZE, &limit);
    const rlimit small = {16, limit.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    const auto saved = client.saveProfile(path);
    setrlimit(RLIMIT_FSIZE, &limit);
    EXPECT_EQ(saved.status(), Status::ProfileError);
    EXPECT_EQ(std::string(saved.message()),
              "the profile '" + path + "' cannot be written: File too large");
    EXPECT_EQ(readFile(path), before);
    EXPECT_EQ(filesInFolder(), 1);
}

TEST_F(AProfile, TakesNoFileBesideItForItsOwn) {
    const std::string beside = folder.path("beside");
    std::ofstream(beside) << "somebody's";
    for (const char* end : {".new", ".tmp", "~"}) {
        std::filesystem::create_symlink(beside, path + end);
    }
    client.setDefaults(usual());
    const auto saved = client.saveProfile(path);
    ASSERT_TRUE(saved) << saved.message();
    EXPECT_FALSE(std::filesystem::is_symlink(path));
    EXPECT_EQ(std::filesystem::file_size(beside), 10U);
    EXPECT_EQ(contents().mSpeed, 250U);
}

TEST_F(AProfile, IsOneOfThoseThatSeveralSaveAtOnce) {
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([this, thread] {
            Client own;
            SpeechOptions options;
            options.speed = thread % 2 == 0 ? 100 : 1000;
            own.setDefaults(options);
            for (int n = 0; n < 50; ++n) {
                const auto saved = own.saveProfile(path);
                EXPECT_TRUE(saved) << saved.message();
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_TRUE(contents().mSpeed == 100 || contents().mSpeed == 1000);
    EXPECT_EQ(filesInFolder(), 1);
}

TEST_F(AProfile, LeavesTheLinkThatLeadsToIt) {
    writeFile(folder.path("real.ini"), "");
    std::filesystem::create_symlink(folder.path("real.ini"), path);
    ASSERT_TRUE(client.saveProfile(path));
    EXPECT_TRUE(std::filesystem::is_symlink(path));
    EXPECT_NE(readFile(folder.path("real.ini")), "");
}

int saveProfileAt(const Arguments& arguments) {
    Client client;
    tell(client.saveProfile(arguments.at(0)).message());
    return 0;
}

const Role kSaveProfileAt("saveProfileAt", saveProfileAt);

TEST_F(AProfile, TellsThatItsFolderIsNotWritable) {
    if (!canBeOthers()) {
        ASSERT_EQ(chmod(folder.path("").c_str(), 0555), 0);
    } else {
        ASSERT_EQ(chmod(folder.path("").c_str(), 0755), 0);
    }
    ChildProcess process(asUser(otherUser(), {ownPath(), "--role=saveProfileAt", path}), "");
    const auto outcome = process.finish();
    ASSERT_EQ(chmod(folder.path("").c_str(), 0755), 0);
    EXPECT_EQ(outcome.out, "the profile '" + path + "' cannot be written: Permission denied\n")
        << outcome.err;
}

}  // namespace
