// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "profile/TtsSetting.h"
#include "tests/profile/SettingText.h"
#include "tests/support/TempFolder.h"

namespace {

namespace fs = std::filesystem;
using TTS::TtsSetting;
using voxtrel_test::readFile;
using voxtrel_test::TempFolder;
using voxtrel_test::writeFile;

class AProfile : public ::testing::Test {
protected:
    bool exists(const std::string& entry) {
        return setting.isExistProfile(folder.path(entry).c_str());
    }
    void copy(const std::string& to, const std::string& from) {
        setting.copyProfile(folder.path(to).c_str(), folder.path(from).c_str());
    }

    TempFolder folder;
    TtsSetting setting{"x"};
};

TEST_F(AProfile, ExistsWhenAnythingIsThere) {
    writeFile(folder.path("file"), "");
    fs::create_directory(folder.path("directory"));
    fs::create_symlink(folder.path("file"), folder.path("link"));
    ASSERT_EQ(0, mkfifo(folder.path("fifo").c_str(), 0600));
    for (const char* entry : {"file", "directory", "link", "fifo", ""}) {
        EXPECT_TRUE(exists(entry)) << entry;
    }
}

TEST_F(AProfile, DoesNotExistWhenNothingIsThere) {
    fs::create_symlink(folder.path("nowhere"), folder.path("dangling"));
    writeFile(folder.path("file"), "");
    for (const char* entry : {"missing", "missing/file", "dangling", "file/below"}) {
        EXPECT_FALSE(exists(entry)) << entry;
    }
    EXPECT_FALSE(setting.isExistProfile(""));
}

TEST_F(AProfile, IsGoneOnceRemoved) {
    writeFile(folder.path("p.ini"), "speed=1\n");
    writeFile(folder.path("q.ini"), "speed=2\n");
    setting.removeProfile(folder.path("p.ini").c_str());
    EXPECT_FALSE(exists("p.ini"));
    EXPECT_TRUE(exists("q.ini"));
}

TEST_F(AProfile, IsRemovedAsALinkAndNotThroughIt) {
    writeFile(folder.path("p.ini"), "speed=1\n");
    fs::create_symlink(folder.path("p.ini"), folder.path("link"));
    setting.removeProfile(folder.path("link").c_str());
    EXPECT_FALSE(exists("link"));
    EXPECT_TRUE(exists("p.ini"));
}

TEST_F(AProfile, ThatIsMissingOrAFolderIsRemovedInSilence) {
    fs::create_directory(folder.path("directory"));
    setting.removeProfile(folder.path("missing").c_str());
    setting.removeProfile(folder.path("directory").c_str());
    EXPECT_TRUE(exists("directory"));
}

TEST_F(AProfile, IsCopiedByteByByte) {
    std::string content("\0\r\n=\xff", 5);
    for (int i = 0; i < 100000; ++i) {
        content.push_back(static_cast<char>(i * 7));
    }
    for (const std::string& text :
         {std::string("speed=1\n"), std::string("no line feed"), content}) {
        writeFile(folder.path("from"), text);
        copy("to", "from");
        EXPECT_TRUE(text == readFile(folder.path("to")));
        EXPECT_TRUE(text == readFile(folder.path("from")));
    }
}

TEST_F(AProfile, ReplacesALongerDestination) {
    writeFile(folder.path("from"), "speed=1\n");
    writeFile(folder.path("to"), std::string(5000, 'x'));
    copy("to", "from");
    EXPECT_EQ("speed=1\n", readFile(folder.path("to")));
}

TEST_F(AProfile, ThatIsMissingLeavesAnEmptyCopy) {
    copy("new", "missing");
    EXPECT_EQ("", readFile(folder.path("new")));
    writeFile(folder.path("old"), "speed=1\n");
    copy("old", "missing");
    EXPECT_EQ("", readFile(folder.path("old")));
    EXPECT_FALSE(exists("missing"));
}

TEST_F(AProfile, ThatIsEmptyLeavesAnEmptyCopy) {
    writeFile(folder.path("from"), "");
    writeFile(folder.path("to"), "speed=1\n");
    copy("to", "from");
    EXPECT_EQ("", readFile(folder.path("to")));
}

TEST_F(AProfile, WithANullSourceIsTakenAsMissing) {
    writeFile(folder.path("to"), "speed=1\n");
    setting.copyProfile(folder.path("to").c_str(), nullptr);
    EXPECT_EQ("", readFile(folder.path("to")));
}

TEST_F(AProfile, CopiedOntoItselfIsEmptied) {
    writeFile(folder.path("p.ini"), "speed=1\n");
    copy("p.ini", "p.ini");
    EXPECT_EQ("", readFile(folder.path("p.ini")));
}

TEST_F(AProfile, IsLeftAloneWhenItsCopyCannotBeOpened) {
    writeFile(folder.path("from"), "speed=1\n");
    copy("missing/to", "from");
    EXPECT_EQ("speed=1\n", readFile(folder.path("from")));
    EXPECT_FALSE(exists("missing"));
}

TEST_F(AProfile, IsNotReadIntoTheSettingThatCopiesIt) {
    writeFile(folder.path("from"), "speed=1\n");
    const std::string before = voxtrel_test::textOf(setting);
    copy("to", "from");
    EXPECT_EQ(before, voxtrel_test::textOf(setting));
}

}  // namespace
