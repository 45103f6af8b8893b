// SPDX-License-Identifier: Apache-2.0
// A device may lose its power at any moment: what is on its way to the disk, and when.
#include <fcntl.h>
#include <gtest/gtest.h>

#include "profile/TtsSetting.h"
#include "tests/profile/SystemCalls.h"
#include "tests/support/TempFolder.h"

namespace {

using TTS::TtsSetting;
using voxtrel_test::readFile;
using voxtrel_test::SystemCalls;
using voxtrel_test::TempFolder;
using voxtrel_test::writeFile;

TEST(WritingAProfile, HandsEachLineToTheSystemByItself) {
    const TempFolder folder;
    const std::string path = folder.path("p.ini");
    const SystemCalls calls(path);
    ASSERT_TRUE(TtsSetting("x").serialize(path.c_str()));
    const std::vector<std::string> lines = {"\n",
                                            "version=2\n",
                                            "speed_enable=1\n",
                                            "speed=65535\n",
                                            "volume_enable=1\n",
                                            "volume=65535\n",
                                            "media_volume_enable=1\n",
                                            "media_volume=65535\n",
                                            "tts_volume_enable=1\n",
                                            "tts_volume=65535\n",
                                            "voice_enable=1\n",
                                            "voice=65535\n",
                                            "pitch_enable=1\n",
                                            "pitch=65535\n",
                                            "lang=na_NL\n",
                                            "verbosity=0\n",
                                            "enable=1\n",
                                            "\n"};
    EXPECT_EQ(lines, calls.writes);
}

TEST(WritingAProfile, SyncsOnceWhenAllIsWrittenAndTheFileStillOpen) {
    const TempFolder folder;
    const std::string path = folder.path("p.ini");
    const SystemCalls calls(path);
    ASSERT_TRUE(TtsSetting("x").serialize(path.c_str()));
    ASSERT_EQ(1U, calls.commands.size());
    EXPECT_EQ("/bin/sync", calls.commands[0].text);
    EXPECT_EQ(readFile(path), calls.commands[0].content);
    EXPECT_EQ(1U, calls.commands[0].openFlags.size());
}

TEST(WritingAProfile, OpensTheFileForReadingToo) {
    const TempFolder folder;
    const std::string path = folder.path("p.ini");
    const SystemCalls calls(path);
    ASSERT_TRUE(TtsSetting("x").serialize(path.c_str()));
    ASSERT_EQ(1U, calls.commands.size());
    ASSERT_EQ(1U, calls.commands[0].openFlags.size());
    EXPECT_EQ(O_RDWR, calls.commands[0].openFlags[0] & O_ACCMODE);
}

TEST(WritingAProfile, IgnoresTheResultOfTheSync) {
    const TempFolder folder;
    const std::string path = folder.path("p.ini");
    const SystemCalls calls(path, -1);
    EXPECT_TRUE(TtsSetting("x").serialize(path.c_str()));
    EXPECT_EQ(1U, calls.commands.size());
}

TEST(WritingAProfile, DoesNotSyncWhenTheFileCannotBeOpened) {
    const TempFolder folder;
    const std::string path = folder.path("no/p.ini");
    const SystemCalls calls(path);
    ASSERT_FALSE(TtsSetting("x").serialize(path.c_str()));
    EXPECT_TRUE(calls.commands.empty());
    EXPECT_TRUE(calls.writes.empty());
}

TEST(ReadingAProfile, NeitherWritesNorSyncs) {
    const TempFolder folder;
    const std::string path = folder.path("p.ini");
    writeFile(path, "speed=65535\n");
    const SystemCalls calls(path);
    ASSERT_TRUE(TtsSetting("x").deserialize(path.c_str()));
    EXPECT_TRUE(calls.commands.empty());
    EXPECT_TRUE(calls.writes.empty());
}

TEST(CopyingAProfile, DoesNotSync) {
    const TempFolder folder;
    const std::string path = folder.path("copy.ini");
    writeFile(folder.path("p.ini"), "speed=1\n");
    const SystemCalls calls(path);
    TtsSetting("x").copyProfile(path.c_str(), folder.path("p.ini").c_str());
    EXPECT_EQ("speed=1\n", readFile(path));
    EXPECT_TRUE(calls.commands.empty());
}

TEST(RemovingAProfile, DoesNotSync) {
    const TempFolder folder;
    const std::string path = folder.path("p.ini");
    writeFile(path, "speed=1\n");
    const SystemCalls calls(path);
    TtsSetting("x").removeProfile(path.c_str());
    EXPECT_FALSE(std::filesystem::exists(path));
    EXPECT_TRUE(calls.commands.empty());
}

}  // namespace
