// SPDX-License-Identifier: Apache-2.0
// Profiles, from C.
#include "tests/voxtrel/c/InC.h"

namespace {

using voxtrel_test::InC;
using voxtrel_test::readFile;
using voxtrel_test::writeFile;

constexpr const char* kText =
    "\nversion=2\nspeed_enable=1\nspeed=200\nvolume_enable=1\nvolume=80\nmedia_volume_enable=1\n"
    "media_volume=30\ntts_volume_enable=1\ntts_volume=70\nvoice_enable=1\nvoice=2\n"
    "pitch_enable=0\npitch=65535\nlang=fr_FR\nverbosity=1\nenable=0\n\n";

class AProfileInC : public InC {
protected:
    std::string textOf(const std::string& name) { return readFile(mFolder.path(name)); }

    const std::string mPath = mFolder.path("p.ini");
    const std::string mNowhere = mFolder.path("none/p.ini");
};

TEST_F(AProfileInC, KeepsTheDefaultsOfAClient) {
    EXPECT_STREQ(nullptr, profile_keeps_the_defaults(mPath.c_str()));
}

TEST_F(AProfileInC, IsReadWhole) {
    writeFile(mPath, std::string(kText) +
                         "sample_rate=16000\nchannels=2\nmixer_path=3\nlong_break_duration=4\n"
                         "short_break_duration=5\n");
    EXPECT_STREQ(nullptr, profile_is_read_whole(mPath.c_str()));
}

TEST_F(AProfileInC, IsChangedAndWritten) {
    writeFile(mPath, kText);
    EXPECT_STREQ(nullptr,
                 profile_is_changed_and_written(mPath.c_str(), mFolder.path("copy.ini").c_str()));
    EXPECT_EQ(kText, textOf("copy.ini")) << "what was not changed";
    std::string changed = kText;
    for (const auto& [from, to] :
         {std::pair("\nspeed=200", "\nspeed=90"), std::pair("voice_enable=1", "voice_enable=0"),
          std::pair("\nenable=0", "\nenable=1")}) {
        changed.replace(changed.find(from), std::string(from).size(), to);
    }
    EXPECT_EQ(changed, textOf("p.ini"));
}

TEST_F(AProfileInC, ThatCannotBeReadOrWrittenIsRefused) {
    EXPECT_STREQ(nullptr, profile_that_cannot_be_is_refused(mPath.c_str(), mNowhere.c_str()));
    EXPECT_FALSE(std::filesystem::exists(mPath)) << "nothing was written";
}

TEST_F(AProfileInC, OfTheDeviceHasAPlaceOfItsOwn) {
    EXPECT_STREQ(nullptr, profile_of_the_device_has_its_place());
}

}  // namespace
