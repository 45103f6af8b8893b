// SPDX-License-Identifier: Apache-2.0
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "tests/client/ClientTest.h"
#include "tests/support/PrivateCustomerFolder.h"

namespace {

using support::callLine;
using support::Lines;
using support::takeNotes;

/// A folder of the test's own, and standard output, where the profile code reports.
class AProfile : public support::ClientTest {
protected:
    AProfile() {
        char name[] = "/tmp/voxtrel-client-test.XXXXXX";
        folder = mkdtemp(name);
        path = folder + "/some.ini";
        testing::internal::CaptureStdout();
    }
    ~AProfile() override {
        testing::internal::GetCapturedStdout();
        std::filesystem::remove_all(folder);
    }

    std::string printed() {
        std::string text = testing::internal::GetCapturedStdout();
        testing::internal::CaptureStdout();
        return text;
    }

    std::string folder;
    std::string path;
};

TEST_F(AProfile, IsWrittenToTheFullPathThatWasGiven) {
    client.mSetting.mSpeed = 321;
    EXPECT_EQ(0, client.saveProfile(path.c_str()));
    EXPECT_EQ(Lines{callLine("saveProfile")}, takeNotes());
    std::ifstream file(path);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    EXPECT_NE(std::string::npos, text.find("\nspeed=321\n")) << text;
    EXPECT_EQ("Default", client.mProfileName);
}

TEST_F(AProfile, ThatCannotBeWrittenGivesMinusSix) {
    path = folder + "/missing/some.ini";
    EXPECT_EQ(-6, client.saveProfile(path.c_str()));
    EXPECT_EQ(Lines{callLine("saveProfile")}, takeNotes());
    EXPECT_EQ("[TtsSetting] Error while writing tts profile " + path + "\n", printed());
}

TEST_F(AProfile, IsReadAndBecomesTheCurrentOne) {
    std::ofstream(path) << "speed=222\nlang=fr_FR\n";
    EXPECT_EQ(0, client.loadProfile(path.c_str()));
    EXPECT_EQ(Lines{callLine("loadProfile")}, takeNotes()) << "the application is not told";
    EXPECT_EQ(222U, client.mSetting.mSpeed);
    EXPECT_EQ("fr_FR", client.mSetting.mLang);
    EXPECT_EQ(path, client.mProfileName);
}

TEST_F(AProfile, ThatCannotBeReadGivesMinusSixAndChangesNothing) {
    EXPECT_EQ(-6, client.loadProfile(path.c_str()));
    EXPECT_EQ(Lines{callLine("loadProfile")}, takeNotes());
    EXPECT_EQ("Default", client.mProfileName);
    EXPECT_EQ(65535U, client.mSetting.mSpeed);
    EXPECT_EQ("[TtsSetting] deserialize " + path +
                  "\n[TtsSetting] Error while reading tts profile " + path + "\n",
              printed());
}

TEST_F(AProfile, KeepsTheNameOfTheLastSuccessfulRead) {
    std::ofstream(path) << "speed=222\n";
    client.loadProfile(path.c_str());
    EXPECT_EQ(-6, client.loadProfile((folder + "/other.ini").c_str()));
    EXPECT_EQ(path, client.mProfileName);
    EXPECT_EQ(222U, client.mSetting.mSpeed);
}

TEST_F(AProfile, IsReadAndWrittenWithoutAskingTheService) {
    client.connect();
    takeNotes();
    client.saveProfile(path.c_str());
    client.loadProfile(path.c_str());
    EXPECT_EQ(Lines({callLine("saveProfile"), callLine("loadProfile")}), takeNotes());
}

class TheDefaultProfile : public AProfile {
    voxtrel_test::PrivateCustomerFolder mCustomer;
};

TEST_F(TheDefaultProfile, IsNamedByTheApplicationAndReadBackAsTheCurrentOne) {
    client.mSetting.mPitch = 123.0F;
    EXPECT_EQ(0, client.saveProfile(nullptr));
    EXPECT_TRUE(std::filesystem::exists("/Customer/app.ini"));
    client.mSetting.mPitch = 1.0F;
    EXPECT_EQ(0, client.loadProfile(nullptr));
    EXPECT_EQ(123.0F, client.mSetting.mPitch);
    EXPECT_EQ("/Customer/app.ini", client.mProfileName);
}

TEST_F(TheDefaultProfile, GivesMinusSixWithoutItsFolder) {
    std::filesystem::remove("/Customer");
    EXPECT_EQ(-6, client.saveProfile(nullptr));
    EXPECT_EQ(-6, client.loadProfile(nullptr));
    EXPECT_EQ("Default", client.mProfileName);
}

TEST_F(TheDefaultProfile, IsReadUnderItsFullNameToo) {
    client.saveProfile(nullptr);
    EXPECT_EQ(0, client.loadProfile("/Customer/app.ini"));
    EXPECT_EQ("/Customer/app.ini", client.mProfileName);
}

class AFactoryReset : public support::JoinedClientTest {};

TEST_F(AFactoryReset, LeavesTheClientsOwnSettingsAlone) {
    client.mSetting.mSpeed = 333;
    client.mProfileName = "mine";
    EXPECT_EQ(0, client.factoryReset(nullptr));
    EXPECT_EQ(Lines({callLine("factoryReset"), "ask locked()", "ask factoryReset(pid)"}),
              takeNotes());
    EXPECT_EQ(333U, client.mSetting.mSpeed);
    EXPECT_EQ("mine", client.mProfileName);
}

}  // namespace
