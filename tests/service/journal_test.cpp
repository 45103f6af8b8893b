// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "service/ProfileStore.h"
#include "service/SettingsJournal.h"
#include "tests/support/TempFolder.h"

namespace voxtreld {
namespace {

using voxtrel_test::readFile;
using voxtrel_test::writeFile;

constexpr size_t kSlot = 512;

TTS::TtsSetting withSpeed(uint32_t speed) {
    TTS::TtsSetting settings("voxtrel");
    settings.mSpeed = speed;
    return settings;
}

class AJournal : public testing::Test {
protected:
    void write(SettingsJournal& journal, uint32_t speed) {
        std::string error;
        EXPECT_TRUE(journal.write(withSpeed(speed), error)) << error;
    }
    /// What a new start reads.
    std::optional<uint32_t> speedRead() const {
        const auto settings = SettingsJournal(path).read();
        return settings ? std::optional<uint32_t>(settings->mSpeed) : std::nullopt;
    }
    /// The bytes that these states leave.
    std::string bytesOf(const std::vector<uint32_t>& speeds) {
        SettingsJournal journal(path);
        for (const uint32_t speed : speeds) {
            write(journal, speed);
        }
        const std::string bytes = readFile(path);
        unlink(path.c_str());
        return bytes;
    }

    voxtrel_test::TempFolder folder;
    const std::string path = folder.path("voxtrel.ini.journal");
};

TEST_F(AJournal, HasTheNewestStateAndDoesNotGrow) {
    SettingsJournal journal(path);
    EXPECT_FALSE(speedRead());
    for (uint32_t speed = 100; speed < 150; ++speed) {
        write(journal, speed);
        ASSERT_EQ(speed, speedRead());
        ASSERT_LE(std::filesystem::file_size(path), 2 * kSlot);
    }
}

TEST_F(AJournal, KeepsEveryFieldWithItsFraction) {
    TTS::TtsSetting settings("voxtrel");
    settings.mSpeed = 123;
    settings.mVolume = 100.0F / 3.0F;
    settings.mPitch = 0.00001F;
    settings.mMediaVolume = 4;
    settings.mTtsVolume = 5;
    settings.mVoice = 6;
    settings.mLang = "pt_PT";
    settings.mVerbosity = 1;
    settings.mEnable = settings.mSpeedEnable = settings.mPitchEnable = settings.mVoiceEnable =
        settings.mVolumeEnable = settings.mMediaVolumeEnable = settings.mTtsVolumeEnable = 0;
    std::string error;
    ASSERT_TRUE(SettingsJournal(path).write(settings, error)) << error;
    const auto read = SettingsJournal(path).read();
    ASSERT_TRUE(read);
    EXPECT_EQ(123U, read->mSpeed);
    EXPECT_EQ(settings.mVolume, read->mVolume);
    EXPECT_EQ(settings.mPitch, read->mPitch);
    EXPECT_EQ(4U, read->mMediaVolume);
    EXPECT_EQ(5U, read->mTtsVolume);
    EXPECT_EQ(6U, read->mVoice);
    EXPECT_EQ("pt_PT", read->mLang);
    EXPECT_EQ(1, read->mVerbosity);
    EXPECT_EQ(0, read->mEnable + read->mSpeedEnable + read->mPitchEnable + read->mVoiceEnable +
                     read->mVolumeEnable + read->mMediaVolumeEnable + read->mTtsVolumeEnable);
}

TEST_F(AJournal, FallsBackToTheStateBeforeWhereverTheNewestIsTorn) {
    const std::string before = bytesOf({100, 200});
    const std::string whole = bytesOf({100, 200, 300});  // the third goes where the first was
    for (size_t cut = 0; cut < kSlot; ++cut) {
        writeFile(path, whole.substr(0, cut) + before.substr(cut));
        // Behind its check line a record is padding, the same in both.
        const auto speed = speedRead();
        const bool isWhole = readFile(path) == whole;
        ASSERT_EQ(isWhole ? 300U : 200U, speed) << cut;
    }
}

TEST_F(AJournal, IgnoresARecordWithAnyByteChanged) {
    const std::string whole = bytesOf({100, 200});
    for (size_t i = kSlot; i < whole.size() && whole[i] != '\0'; ++i) {
        std::string damaged = whole;
        damaged[i] = static_cast<char>(damaged[i] ^ 0x11);
        writeFile(path, damaged);
        ASSERT_EQ(100U, speedRead()) << i;
    }
}

TEST_F(AJournal, IgnoresWhatItDidNotWrite) {
    const std::string record = bytesOf({100});
    const std::vector<std::string> foreign = {
        "",
        "\n",
        "revision=1\nspeed=200\n",
        "revision=1\nspeed=200\ncheck=0000000000000000\n",
        std::string(4096, '\xff'),
        std::string(4096, '\0'),
        std::string(kSlot, '\0') + record,  // a record in the other's place
        std::string(64, 'x') + record};
    for (const std::string& content : foreign) {
        writeFile(path, content);
        EXPECT_FALSE(speedRead()) << content.substr(0, 60);
    }
    writeFile(path, record + std::string(100'000, 'x'));
    EXPECT_EQ(100U, speedRead()) << "what follows is not looked at";
}

TEST_F(AJournal, GoesOnAfterTheStateThatItFound) {
    {
        SettingsJournal journal(path);
        write(journal, 100);
        write(journal, 200);
    }
    SettingsJournal journal(path);
    ASSERT_TRUE(journal.read());
    write(journal, 300);
    EXPECT_EQ(300U, speedRead());
    // Torn now, the state found is still there: the new one went to the other place.
    std::string bytes = readFile(path);
    bytes[10] = 'x';
    writeFile(path, bytes);
    EXPECT_EQ(200U, speedRead());
}

TEST_F(AJournal, HasNothingWhenCleared) {
    std::string error;
    SettingsJournal journal(path);
    EXPECT_TRUE(journal.clear(error)) << "nothing there: " << error;
    write(journal, 100);
    EXPECT_TRUE(journal.clear(error)) << error;
    EXPECT_FALSE(speedRead());
    write(journal, 200);
    EXPECT_EQ(200U, speedRead());
}

TEST_F(AJournal, IsMadeAgainWhenSomebodyRemovedIt) {
    SettingsJournal journal(path);
    write(journal, 100);
    ASSERT_EQ(0, unlink(path.c_str()));
    write(journal, 200);
    EXPECT_EQ(200U, speedRead());
}

TEST_F(AJournal, SaysWhyItCannotBeWritten) {
    std::string error;
    EXPECT_FALSE(SettingsJournal("/nowhere/x").write(withSpeed(1), error));
    EXPECT_EQ("No such file or directory", error);
    ASSERT_EQ(0, mkfifo(path.c_str(), 0600));
    EXPECT_FALSE(SettingsJournal(path).write(withSpeed(1), error)) << "and does not hang";
    EXPECT_FALSE(SettingsJournal(path).read());
    ASSERT_EQ(0, unlink(path.c_str()));
    writeFile(folder.path("precious"), "of somebody else");
    ASSERT_EQ(0, symlink(folder.path("precious").c_str(), path.c_str()));
    EXPECT_FALSE(SettingsJournal(path).write(withSpeed(1), error));
    EXPECT_EQ("of somebody else", readFile(folder.path("precious")));
}

/// No file can grow beyond a size, as on a disk that is full there.
class SizeLimit {
public:
    explicit SizeLimit(rlim_t size) {
        mUsualHandler = std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &mUsual);
        const rlimit small = {size, mUsual.rlim_max};
        setrlimit(RLIMIT_FSIZE, &small);
    }
    ~SizeLimit() {
        setrlimit(RLIMIT_FSIZE, &mUsual);
        std::signal(SIGXFSZ, mUsualHandler);
    }
    SizeLimit(const SizeLimit&) = delete;
    SizeLimit& operator=(const SizeLimit&) = delete;

private:
    rlimit mUsual = {};
    void (*mUsualHandler)(int) = SIG_DFL;
};

TEST_F(AJournal, ThatMeetsAFullDiskKeepsTheStateBeforeAndGoesOnWhenThereIsRoom) {
    SettingsJournal journal(path);
    write(journal, 100);
    {
        const SizeLimit full(kSlot + 100);
        std::string error;
        EXPECT_FALSE(journal.write(withSpeed(200), error));
        EXPECT_FALSE(error.empty());
    }
    EXPECT_EQ(100U, speedRead());
    write(journal, 300);
    EXPECT_EQ(300U, speedRead());
}

/// The moments at which a service can be killed, as the files that it leaves.
class AProfileWithAJournal : public AJournal {
protected:
    uint32_t loaded() { return ProfileStore(profile).load().mSpeed; }

    const std::string profile = folder.path("voxtrel.ini");
    const std::string oldText = "\nversion=2\nspeed=100\n\n";
    const std::string newText = "\nversion=2\nspeed=200\n\n";
    const std::string record = bytesOf({200});
};

TEST_F(AProfileWithAJournal, HasTheNewStateWheneverTheServiceIsKilled) {
    writeFile(profile, oldText);
    writeFile(path, record);
    EXPECT_EQ(200U, loaded()) << "acknowledged, nothing of the profile written";
    writeFile(profile + ".new", newText.substr(0, 12));
    EXPECT_EQ(200U, loaded()) << "the new profile is in part written";
    writeFile(profile + ".new", newText);
    EXPECT_EQ(200U, loaded()) << "the new profile is not yet in place";
    writeFile(profile, newText);
    writeFile(path, record);
    EXPECT_EQ(200U, loaded()) << "the new profile is in place";
    writeFile(path, "");
    EXPECT_EQ(200U, loaded()) << "the journal is empty";
}

TEST_F(AProfileWithAJournal, CountsLessThanALaterStateInTheJournal) {
    writeFile(profile, oldText);
    writeFile(profile + ".new", newText);
    writeFile(path, bytesOf({200, 300}));
    EXPECT_EQ(300U, loaded());
}

TEST_F(AProfileWithAJournal, EmptiesItOnceTheProfileIsInPlace) {
    ProfileStore store(profile);
    store.save(withSpeed(300));
    store.flush();
    EXPECT_FALSE(speedRead());
    EXPECT_EQ(0U, std::filesystem::file_size(path));
    writeFile(profile, oldText);
    EXPECT_EQ(100U, loaded()) << "an edit counts";
}

TEST_F(AProfileWithAJournal, KeepsItWhileTheProfileCannotBeWritten) {
    std::filesystem::create_directories(profile + ".new/in-the-way");
    {
        ProfileStore store(profile);
        store.save(withSpeed(300));
        store.flush();
    }
    EXPECT_EQ(300U, speedRead());
    EXPECT_EQ(300U, loaded());
}

TEST_F(AProfileWithAJournal, LogsOneLineWhenItCannotBeWritten) {
    std::vector<std::string> log;
    std::filesystem::create_directories(path + "/in-the-way");
    ProfileStore store(profile, [&](LogLevel, const std::string& line) { log.push_back(line); });
    for (uint32_t speed = 300; speed < 310; ++speed) {
        store.save(withSpeed(speed));
    }
    store.flush();
    ASSERT_EQ(1U, log.size());
    EXPECT_EQ(0U,
              log[0].find("settings may not survive when the service is killed: cannot write '" +
                          path + "': Is a directory;"));
    EXPECT_EQ(309U, loaded()) << "the profile itself is written";
}

}  // namespace
}  // namespace voxtreld
