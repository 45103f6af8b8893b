// SPDX-License-Identifier: Apache-2.0
// A profile and its file.
#include "voxtrel/Profile.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/TempFolder.h"

namespace {

using namespace voxtrel;
using voxtrel_test::readFile;
using voxtrel_test::TempFolder;
using voxtrel_test::writeFile;

constexpr const char* kText =
    "\nversion=2\nspeed_enable=1\nspeed=200\nvolume_enable=1\nvolume=80\nmedia_volume_enable=1\n"
    "media_volume=30\ntts_volume_enable=1\ntts_volume=70\nvoice_enable=1\nvoice=2\n"
    "pitch_enable=0\npitch=150\nlang=fr_FR\nverbosity=1\nenable=1\n\n";

class AProfile : public ::testing::Test {
protected:
    const TempFolder folder;
    const std::string path = folder.path("p.ini");
};

TEST_F(AProfile, IsReadWhole) {
    writeFile(path, std::string(kText) +
                        "sample_rate=1\nchannels=2\nmixer_path=3\nlong_break_duration=4\n"
                        "short_break_duration=5\n");
    const Profile read = Profile::read(path).value();
    EXPECT_EQ(200U, read.settings.speed);
    EXPECT_EQ(80.0F, read.settings.volume);
    EXPECT_EQ(30U, read.settings.mediaVolume);
    EXPECT_EQ(70U, read.settings.speechVolume);
    EXPECT_EQ(2U, read.settings.voice);
    EXPECT_EQ(150.0F, read.settings.pitch);
    EXPECT_EQ("fr-FR", read.settings.language);
    EXPECT_EQ(1, read.settings.verbosity);
    EXPECT_EQ(std::set<Switch>{Switch::Pitch}, read.switchedOff);
    EXPECT_EQ(1, read.sampleRate);
    EXPECT_EQ(2, read.channels);
    EXPECT_EQ(3, read.mixerPath);
    EXPECT_EQ(4, read.longBreakDuration);
    EXPECT_EQ(5, read.shortBreakDuration);
}

TEST_F(AProfile, IsWrittenAsItWasRead) {
    writeFile(path, kText);
    const Profile read = Profile::read(path).value();
    const std::string copy = folder.path("copy.ini");
    ASSERT_TRUE(read.write(copy));
    EXPECT_EQ(kText, readFile(copy));
}

TEST_F(AProfile, OfALanguageThatNoneHasIsNotWritten) {
    Profile profile;
    profile.settings.language = "tlh";
    EXPECT_EQ(Status::BadParameter, profile.write(path).error().status);
    EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(AProfile, LeavesUnsetWhatItDoesNotSet) {
    writeFile(path, "speed=65535\nlang=na_NL\nenable=0\n");
    const Profile read = Profile::read(path).value();
    EXPECT_FALSE(read.settings.speed);
    EXPECT_FALSE(read.settings.language);
    EXPECT_FALSE(read.settings.pitch);
    EXPECT_EQ(std::set<Switch>{Switch::Speech}, read.switchedOff);
}

TEST_F(AProfile, CannotHoldEveryNumber) {
    Profile profile;
    profile.settings.speechVolume = 101;
    EXPECT_EQ(Status::BadParameter, profile.write(path).status());
    EXPECT_EQ(Status::ProfileError, Profile::read(path).status()) << "nothing was written";
}

TEST_F(AProfile, ThatCannotBeReadOrWrittenIsNamedWithTheReason) {
    EXPECT_EQ("the profile '" + path + "' cannot be read: No such file or directory",
              std::string(Profile::read(path).message()));
    const std::string nowhere = folder.path("no/p.ini");
    EXPECT_EQ("the profile '" + nowhere + "' cannot be written: No such file or directory",
              std::string(Profile().write(nowhere).message()));
}

TEST_F(AProfile, WhoseReadingFailsIsNotHalfRead) {
    EXPECT_EQ("the profile '/proc/self/mem' cannot be read: Input/output error",
              std::string(Profile::read("/proc/self/mem").message()));
}

TEST_F(AProfile, OfTheDeviceHasAPlaceOfItsOwn) {
    EXPECT_EQ("/Customer/radio.ini", Profile::pathOf("radio"));
}

}  // namespace
