// SPDX-License-Identifier: Apache-2.0
// A null path selects "/Customer/<name>.ini": against the real folder.
#include <gtest/gtest.h>

#include "profile/TtsSetting.h"
#include "tests/profile/SettingText.h"
#include "tests/support/PrivateCustomerFolder.h"
#include "tests/support/TempFolder.h"

namespace {

namespace fs = std::filesystem;
using TTS::TtsSetting;
using voxtrel_test::readFile;
using voxtrel_test::writeFile;

class ANullPath : public ::testing::Test {
protected:
    voxtrel_test::PrivateCustomerFolder customer;
    voxtrel_test::TempFolder folder;
};

TEST_F(ANullPath, WritesTheDefaultProfile) {
    ASSERT_TRUE(TtsSetting("x").serialize(nullptr));
    EXPECT_EQ(
        "\nversion=2\nspeed_enable=1\nspeed=65535\nvolume_enable=1\nvolume=65535\n"
        "media_volume_enable=1\nmedia_volume=65535\ntts_volume_enable=1\ntts_volume=65535\n"
        "voice_enable=1\nvoice=65535\npitch_enable=1\npitch=65535\nlang=na_NL\nverbosity=0\n"
        "enable=1\n\n",
        readFile("/Customer/x.ini"));
}

TEST_F(ANullPath, FollowsTheNameThatTheSettingHoldsNow) {
    TtsSetting setting("x");
    setting.mName = "y";
    ASSERT_TRUE(setting.serialize(nullptr));
    EXPECT_TRUE(fs::exists("/Customer/y.ini"));
    EXPECT_FALSE(fs::exists("/Customer/x.ini"));
}

TEST_F(ANullPath, ReadsTheDefaultProfile) {
    writeFile("/Customer/x.ini", "speed=7\n");
    TtsSetting setting("x");
    testing::internal::CaptureStdout();
    EXPECT_TRUE(setting.deserialize(nullptr));
    EXPECT_EQ("[TtsSetting] deserialize /Customer/x.ini\n", testing::internal::GetCapturedStdout());
    EXPECT_EQ(7U, setting.mSpeed);
}

TEST_F(ANullPath, IsRefusedWithoutTheFolder) {
    ASSERT_TRUE(fs::remove("/Customer"));
    TtsSetting setting("x");
    testing::internal::CaptureStdout();
    EXPECT_FALSE(setting.serialize(nullptr));
    EXPECT_FALSE(setting.deserialize(nullptr));
    EXPECT_EQ(
        "[TtsSetting] Error while writing tts profile /Customer/x.ini\n"
        "[TtsSetting] deserialize /Customer/x.ini\n"
        "[TtsSetting] Error while reading tts profile /Customer/x.ini\n",
        testing::internal::GetCapturedStdout());
    EXPECT_FALSE(fs::exists("/Customer"));
}

TEST_F(ANullPath, UpgradesTheServicesProfileWhereItLies) {
    writeFile("/Customer/voxtrel.ini", "speed=65535\nlang=na_NL\n");
    TtsSetting setting("voxtrel");
    ASSERT_TRUE(setting.deserialize(nullptr));
    EXPECT_EQ(0U, voxtrel_test::textOf(setting).find("voxtrel|300|100|50|100|0|200|en_US|"));
    EXPECT_EQ(
        "\nversion=2\nspeed_enable=1\nspeed=300\nvolume_enable=1\nvolume=100\n"
        "media_volume_enable=1\nmedia_volume=50\ntts_volume_enable=1\ntts_volume=100\n"
        "voice_enable=1\nvoice=0\npitch_enable=1\npitch=200\nlang=en_US\nverbosity=0\n"
        "enable=1\n\n",
        readFile("/Customer/voxtrel.ini"));
}

TEST_F(ANullPath, ExistsOnceWrittenAndNoLongerOnceRemoved) {
    const TtsSetting setting("x");
    EXPECT_FALSE(setting.isExistProfile(nullptr));
    ASSERT_TRUE(setting.serialize(nullptr));
    EXPECT_TRUE(setting.isExistProfile(nullptr));
    setting.removeProfile(nullptr);
    EXPECT_FALSE(setting.isExistProfile(nullptr));
    EXPECT_TRUE(fs::is_empty("/Customer"));
}

TEST_F(ANullPath, AsADestinationIsTheDefaultProfile) {
    writeFile(folder.path("from"), "speed=1\n");
    TtsSetting("x").copyProfile(nullptr, folder.path("from").c_str());
    EXPECT_EQ("speed=1\n", readFile("/Customer/x.ini"));
}

TEST_F(ANullPath, AsADestinationIsEmptiedByAMissingSource) {
    TtsSetting("x").copyProfile(nullptr, folder.path("missing").c_str());
    EXPECT_EQ("", readFile("/Customer/x.ini"));
}

TEST_F(ANullPath, AsASourceIsNotTheDefaultProfile) {
    writeFile("/Customer/x.ini", "speed=1\n");
    TtsSetting("x").copyProfile(folder.path("to").c_str(), nullptr);
    EXPECT_EQ("", readFile(folder.path("to")));
}

TEST_F(ANullPath, IsNeverAddedToAPathThatIsGiven) {
    fs::current_path(folder.path(""));
    const TtsSetting setting("x");
    ASSERT_TRUE(setting.serialize("plain"));
    EXPECT_TRUE(fs::exists(folder.path("plain")));
    EXPECT_TRUE(setting.isExistProfile("plain"));
    setting.copyProfile("copy", "plain");
    EXPECT_TRUE(fs::exists(folder.path("copy")));
    setting.removeProfile("plain");
    EXPECT_FALSE(fs::exists(folder.path("plain")));
    EXPECT_FALSE(setting.serialize(""));
    EXPECT_TRUE(fs::is_empty("/Customer"));
    fs::current_path("/");
}

}  // namespace
