// SPDX-License-Identifier: Apache-2.0
// Symptom: an application that set a locale with decimal commas and thousands marks for all its
// streams wrote profiles that no device could read.
#include <gtest/gtest.h>
#include <locale.h>

#include <locale>

#include "profile/TtsSetting.h"
#include "tests/support/TempFolder.h"

namespace {

using TTS::TtsSetting;
using voxtrel_test::readFile;
using voxtrel_test::TempFolder;
using voxtrel_test::writeFile;

class CommaNumbers : public std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

/// Turns every byte into 'x' as it passes through a file.
class MangledBytes : public std::codecvt<char, char, std::mbstate_t> {
    bool do_always_noconv() const noexcept override { return false; }
    result do_out(state_type&, const char* from, const char* fromEnd, const char*& fromNext,
                  char* to, char* toEnd, char*& toNext) const override {
        return mangle(from, fromEnd, fromNext, to, toEnd, toNext);
    }
    result do_in(state_type&, const char* from, const char* fromEnd, const char*& fromNext,
                 char* to, char* toEnd, char*& toNext) const override {
        return mangle(from, fromEnd, fromNext, to, toEnd, toNext);
    }
    static result mangle(const char* from, const char* fromEnd, const char*& fromNext, char* to,
                         char* toEnd, char*& toNext) {
        for (; from != fromEnd && to != toEnd; ++from, ++to) {
            *to = 'x';
        }
        fromNext = from;
        toNext = to;
        return from == fromEnd ? ok : partial;
    }
};

class AnApplicationsLocale : public ::testing::Test {
protected:
    template <typename Facet>
    void use(Facet* facet) {
        std::locale::global(std::locale(std::locale::classic(), facet));
    }
    void TearDown() override { std::locale::global(std::locale::classic()); }

    TempFolder folder;
    std::string path = folder.path("p.ini");
};

TEST_F(AnApplicationsLocale, DoesNotReachTheNumbersInAProfile) {
    TtsSetting setting("x");
    setting.mVolume = 1.5F;
    setting.mPitch = 1234567.0F;
    use(new CommaNumbers);
    ASSERT_TRUE(setting.serialize(path.c_str()));
    EXPECT_EQ(
        "\nversion=2\nspeed_enable=1\nspeed=65535\nvolume_enable=1\nvolume=1.5\n"
        "media_volume_enable=1\nmedia_volume=65535\ntts_volume_enable=1\ntts_volume=65535\n"
        "voice_enable=1\nvoice=65535\npitch_enable=1\npitch=1.23457e+06\nlang=na_NL\nverbosity=0\n"
        "enable=1\n\n",
        readFile(path));
}

TEST_F(AnApplicationsLocale, IsTheThreadsOwnAgainOnceAProfileIsWritten) {
    const locale_t own = newlocale(LC_ALL_MASK, "C", nullptr);
    const locale_t copy = duplocale(own);
    const locale_t before = uselocale(copy);
    EXPECT_TRUE(TtsSetting("x").serialize(path.c_str()));
    EXPECT_EQ(copy, uselocale(before));
    freelocale(copy);
    freelocale(own);
}

TEST_F(AnApplicationsLocale, DoesNotReachTheBytesOfAProfile) {
    writeFile(folder.path("from"), "speed=7\n");
    use(new MangledBytes);
    TtsSetting setting("x");
    ASSERT_TRUE(setting.deserialize(folder.path("from").c_str()));
    EXPECT_EQ(7U, setting.mSpeed);
    ASSERT_TRUE(setting.serialize(path.c_str()));
    setting.copyProfile(folder.path("to").c_str(), folder.path("from").c_str());
    std::locale::global(std::locale::classic());
    EXPECT_EQ("speed=7\n", readFile(folder.path("from")));
    EXPECT_EQ("speed=7\n", readFile(folder.path("to")));
    EXPECT_EQ(0U, readFile(path).find("\nversion=2\nspeed_enable=1\nspeed=7\n"));
}

}  // namespace
