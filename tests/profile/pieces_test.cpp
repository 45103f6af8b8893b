// SPDX-License-Identifier: Apache-2.0
// The system may move fewer bytes than it was asked for, and a signal or an error may end a call.
#include <gtest/gtest.h>

#include "profile/TtsSetting.h"
#include "tests/profile/SettingText.h"
#include "tests/profile/SystemCalls.h"
#include "tests/support/TempFolder.h"

namespace {

using TTS::TtsSetting;
using voxtrel_test::allChanged;
using voxtrel_test::readFile;
using voxtrel_test::SystemCalls;
using voxtrel_test::TempFolder;
using voxtrel_test::textOf;
using voxtrel_test::writeFile;

class AFileInPieces : public testing::Test {
protected:
    const TempFolder folder;
    const std::string path = folder.path("p.ini");
    SystemCalls calls{path};
    TtsSetting setting{"x"};
};

TEST_F(AFileInPieces, IsWrittenToItsEnd) {
    EXPECT_TRUE(allChanged().serialize(path.c_str()));
    const std::string whole = readFile(path);
    for (const size_t most : {1U, 2U, 7U}) {
        calls.manners.most = most;
        calls.manners.interrupted = true;
        EXPECT_TRUE(allChanged().serialize(path.c_str()));
        EXPECT_EQ(whole, readFile(path)) << most;
    }
}

TEST_F(AFileInPieces, IsReadToItsEnd) {
    EXPECT_TRUE(allChanged().serialize(path.c_str()));
    EXPECT_TRUE(setting.deserialize(path.c_str()));
    for (const size_t most : {1U, 2U, 7U}) {
        calls.manners.most = most;
        calls.manners.interrupted = true;
        TtsSetting inPieces("x");
        EXPECT_TRUE(inPieces.deserialize(path.c_str()));
        EXPECT_EQ(textOf(setting), textOf(inPieces)) << most;
    }
}

TEST_F(AFileInPieces, IsCopiedToItsEnd) {
    const std::string content(5000, 'c');
    writeFile(folder.path("from"), content);
    calls.manners.most = 100;
    calls.manners.interrupted = true;
    setting.copyProfile(path.c_str(), folder.path("from").c_str());
    EXPECT_EQ(content, readFile(path));
}

TEST_F(AFileInPieces, HasNoLineBehindOneThatCouldNotBeWritten) {
    calls.manners.before = 12;
    EXPECT_TRUE(setting.serialize(path.c_str()));
    calls.manners = {};
    EXPECT_EQ("\nversion=2\ns", readFile(path));
    EXPECT_EQ(1U, calls.commands.size());
}

// It was written over with what had been read before the error.
TEST_F(AFileInPieces, KeepsWhatCouldNotBeReadOfADefaultProfile) {
    const std::string name = folder.path("voxtrel.ini");
    const std::string content = "speed=7\npitch=8\nvoice=2\n";
    writeFile(name, content);
    SystemCalls failing(name);
    failing.manners.before = 10;
    EXPECT_TRUE(setting.deserialize(name.c_str()));
    EXPECT_EQ(7U, setting.mSpeed);
    EXPECT_EQ(200.0F, setting.mPitch) << "upgraded in memory";
    EXPECT_TRUE(failing.commands.empty());
    failing.manners = {};
    EXPECT_EQ(content, readFile(name));
}

TEST_F(AFileInPieces, IsReadUpToTheLastWholeLineBeforeAnError) {
    writeFile(path, "speed=7\npitch=8\nspeed=99\n");
    calls.manners.before = 23;
    EXPECT_TRUE(setting.deserialize(path.c_str()));
    EXPECT_EQ(7U, setting.mSpeed);
    EXPECT_EQ(8.0F, setting.mPitch);
}

}  // namespace
