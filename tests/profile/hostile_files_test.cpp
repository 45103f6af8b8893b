// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>

#include "profile/TtsSetting.h"
#include "tests/profile/SettingText.h"
#include "tests/profile/SystemCalls.h"
#include "tests/support/TempFolder.h"

namespace {

using TTS::TtsSetting;
using voxtrel_test::allChanged;
using voxtrel_test::readFile;
using voxtrel_test::TempFolder;
using voxtrel_test::textOf;
using voxtrel_test::writeFile;

constexpr size_t kTenMegabytes = 10U * 1024U * 1024U;

class AHostileFile : public ::testing::Test {
protected:
    TtsSetting read(const std::string& content) {
        writeFile(path, content);
        TtsSetting setting = allChanged();
        EXPECT_TRUE(setting.deserialize(path.c_str()));
        EXPECT_TRUE(content == readFile(path));
        return setting;
    }

    TempFolder folder;
    std::string path = folder.path("p.ini");
};

TEST_F(AHostileFile, OfOneHugeLineIsSkippedToTheNext) {
    for (const char* start : {"", "=", "speed", "colour="}) {
        const TtsSetting setting = read(start + std::string(kTenMegabytes, 'x') + "\nvoice=9\n");
        TtsSetting expected = allChanged();
        expected.mVoice = 9;
        EXPECT_EQ(textOf(expected), textOf(setting)) << start;
    }
}

TEST_F(AHostileFile, WithAHugeNumberSaturates) {
    EXPECT_EQ(2147483647U, read("speed=" + std::string(kTenMegabytes, '9') + "\n").mSpeed);
    EXPECT_EQ(5U, read("speed=" + std::string(kTenMegabytes, '0') + "5\n").mSpeed);
}

TEST_F(AHostileFile, WithAHugeLanguageLosesNothingOfIt) {
    const std::string huge(kTenMegabytes, 'l');
    EXPECT_TRUE(huge == read("lang=" + huge + "\n").mLang);
}

TEST_F(AHostileFile, OfRandomBytesChangesNothing) {
    std::string content;
    uint32_t state = 12345;
    for (size_t i = 0; i < 200000; ++i) {
        state = state * 1664525U + 1013904223U;
        content.push_back(static_cast<char>(state >> 24U));
    }
    EXPECT_EQ(textOf(allChanged()), textOf(read(content)));
    EXPECT_EQ(9U, read(content + "\nvoice=9\n" + content).mVoice);
}

TEST_F(AHostileFile, OfNulBytesChangesNothing) {
    EXPECT_EQ(textOf(allChanged()), textOf(read(std::string(kTenMegabytes, '\0'))));
}

TEST_F(AHostileFile, OfManyLinesIsReadToItsEnd) {
    std::string content;
    for (int i = 0; i < 100000; ++i) {
        content += "speed=" + std::to_string(i) + "\n";
    }
    EXPECT_EQ(99999U, read(content).mSpeed);
}

TEST_F(AHostileFile, ThatIsAFolderOpensAndHoldsNothing) {
    TtsSetting setting = allChanged();
    EXPECT_TRUE(setting.deserialize(folder.path("").c_str()));
    EXPECT_EQ(textOf(allChanged()), textOf(setting));
}

TEST_F(AHostileFile, ThatIsAFolderIsNeitherCopiedNorWrittenOnto) {
    TtsSetting setting = allChanged();
    setting.copyProfile(path.c_str(), folder.path("").c_str());
    EXPECT_EQ("", readFile(path));
    EXPECT_FALSE(setting.serialize(folder.path("").c_str()));
}

TEST_F(AHostileFile, WithoutAnEndInItsNameIsRefused) {
    const std::string endless(100000, 'n');
    TtsSetting setting = allChanged();
    EXPECT_FALSE(setting.deserialize(endless.c_str()));
    EXPECT_FALSE(setting.serialize(endless.c_str()));
    EXPECT_FALSE(setting.isExistProfile(endless.c_str()));
    EXPECT_EQ(textOf(allChanged()), textOf(setting));
}

// The contract of the format: only a file that does not open is reported.
TEST(AFullDisk, IsNotReportedByAWrite) {
    testing::internal::CaptureStdout();
    const voxtrel_test::SystemCalls calls("/dev/null");
    EXPECT_TRUE(allChanged().serialize("/dev/full"));
    EXPECT_EQ("", testing::internal::GetCapturedStdout());
    ASSERT_EQ(1U, calls.commands.size());
    EXPECT_EQ("/bin/sync", calls.commands[0].text);
}

TEST(AFullDisk, LosesNothingInMemory) {
    const TtsSetting setting = allChanged();
    ASSERT_TRUE(setting.serialize("/dev/full"));
    EXPECT_EQ(textOf(allChanged()), textOf(setting));
}

// The line that failed is offered once more when the file is closed; those after it never are.
TEST(AFullDisk, EndsTheWritingAtTheFirstLineThatFails) {
    const voxtrel_test::SystemCalls calls("/dev/null");
    ASSERT_TRUE(allChanged().serialize("/dev/full"));
    ASSERT_FALSE(calls.writes.empty());
    EXPECT_EQ(std::vector<std::string>(calls.writes.size(), "\n"), calls.writes);
}

/// While it lives, no file of this process can grow beyond the limit: a disk that fills up.
class DiskOf {
public:
    explicit DiskOf(rlim_t bytes) : mOldHandler(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &mOldLimit);
        const rlimit limit{bytes, mOldLimit.rlim_max};
        EXPECT_EQ(0, setrlimit(RLIMIT_FSIZE, &limit));
    }
    ~DiskOf() {
        setrlimit(RLIMIT_FSIZE, &mOldLimit);
        std::signal(SIGXFSZ, mOldHandler);
    }
    DiskOf(const DiskOf&) = delete;
    DiskOf& operator=(const DiskOf&) = delete;

private:
    void (*mOldHandler)(int);
    rlimit mOldLimit{};
};

TEST(AFullDisk, LeavesTheFileCutWhereTheRoomEnded) {
    const TempFolder folder;
    const std::string path = folder.path("p.ini");
    writeFile(path, std::string(5000, 'x'));
    {
        const DiskOf disk(20);
        EXPECT_TRUE(allChanged().serialize(path.c_str()));
    }
    EXPECT_EQ("\nversion=2\nspeed_ena", readFile(path));
}

TEST(AFullDisk, IsNotReportedByACopy) {
    const TempFolder folder;
    writeFile(folder.path("from"), "speed=1\n");
    TtsSetting("x").copyProfile("/dev/full", folder.path("from").c_str());
    EXPECT_EQ("speed=1\n", readFile(folder.path("from")));
}

}  // namespace
