// SPDX-License-Identifier: Apache-2.0
// What the profile code says on standard output, to the byte.
#include <gtest/gtest.h>

#include <functional>

#include "profile/TtsSetting.h"
#include "tests/support/TempFolder.h"

namespace {

using TTS::TtsSetting;
using voxtrel_test::TempFolder;
using voxtrel_test::writeFile;

std::string saidBy(const std::function<void(TtsSetting&)>& action) {
    TtsSetting setting("x");
    testing::internal::CaptureStdout();
    action(setting);
    return testing::internal::GetCapturedStdout();
}

TEST(ReadingAProfile, NamesTheFile) {
    const TempFolder folder;
    const std::string path = folder.path("p.ini");
    writeFile(path, "media_volume=500\nnonsense\nspeed=1\n");
    EXPECT_EQ("[TtsSetting] deserialize " + path + "\n",
              saidBy([&](TtsSetting& s) { s.deserialize(path.c_str()); }));
}

TEST(ReadingAProfile, SaysThatItIsMissing) {
    const TempFolder folder;
    const std::string path = folder.path("p.ini");
    EXPECT_EQ("[TtsSetting] deserialize " + path +
                  "\n[TtsSetting] Error while reading tts profile " + path + "\n",
              saidBy([&](TtsSetting& s) { s.deserialize(path.c_str()); }));
}

TEST(WritingAProfile, SaysNothingWhenItSucceeds) {
    const TempFolder folder;
    const std::string path = folder.path("p.ini");
    EXPECT_EQ("", saidBy([&](TtsSetting& s) { s.serialize(path.c_str()); }));
}

TEST(WritingAProfile, SaysThatItCannotOpenTheFile) {
    const TempFolder folder;
    const std::string path = folder.path("no/p.ini");
    EXPECT_EQ("[TtsSetting] Error while writing tts profile " + path + "\n",
              saidBy([&](TtsSetting& s) { s.serialize(path.c_str()); }));
}

TEST(UpgradingAProfile, SaysThatItCannotBeWrittenBack) {
    const TempFolder folder;
    const std::string path = folder.path("voxtrel.ini");
    std::filesystem::create_directory(path);
    EXPECT_EQ("[TtsSetting] deserialize " + path +
                  "\n[TtsSetting] Error while writing tts profile " + path + "\n",
              saidBy([&](TtsSetting& s) { s.deserialize(path.c_str()); }));
}

TEST(AProfileMessage, TakesPercentSignsInAPathAsTheyAre) {
    const TempFolder folder;
    const std::string path = folder.path("no%s%n/p.ini");
    EXPECT_EQ("[TtsSetting] Error while writing tts profile " + path + "\n",
              saidBy([&](TtsSetting& s) { s.serialize(path.c_str()); }));
}

TEST(TheFileOperations, SayNothing) {
    const TempFolder folder;
    const std::string path = folder.path("no/p.ini");
    EXPECT_EQ("", saidBy([&](TtsSetting& s) {
                  (void)s.isExistProfile(path.c_str());
                  s.removeProfile(path.c_str());
                  s.copyProfile(path.c_str(), path.c_str());
              }));
}

}  // namespace
