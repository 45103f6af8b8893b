// SPDX-License-Identifier: Apache-2.0
#include <ostream>

#include "tests/client/ClientTest.h"

namespace {

using support::callLine;
using support::Lines;
using support::takeNotes;
using TTS::TTSClientPrivate;

std::string sayLine(const std::string& language) {
    return platform::logged(2, "[Client] %s() with language %s\n",
                            "[Client] say() with language " + language + "\n");
}

struct Row {
    const char* name;
    int (*speak)(TTSClientPrivate& client);
    uint32_t code;
    std::string trace;
    const char* request;
};

void PrintTo(const Row& row, std::ostream* out) {
    *out << row.name;
}

const std::vector<Row>& rows() {
    static const std::vector<Row> all = {
        {"say", [](TTSClientPrivate& c) { return c.say(7, "Hello"); }, support::kSay,
         sayLine("na_NL"),
         "ask say(pid, 7, \"Hello\", 65535, 65535, 65535, 65535, 65535, 65535, 5)"},
        {"silence", [](TTSClientPrivate& c) { return c.silence(8, 9); }, support::kSilence,
         callLine("silence"), "ask silence(pid, 8, 9, 65535)"},
        {"stopAndFlush", [](TTSClientPrivate& c) { return c.stopAndFlush(3); },
         support::kStopAndFlush, callLine("stopAndFlush"), "ask stopAndFlush(pid, 3)"},
    };
    return all;
}

class ASpeechRequest : public support::JoinedClientTest, public testing::WithParamInterface<Row> {};

TEST_P(ASpeechRequest, IsForwardedAfterTheServiceSaidItIsEnabledAndNotLocked) {
    service.status[GetParam().code] = -77;
    EXPECT_EQ(-77, GetParam().speak(client));
    EXPECT_EQ(Lines({GetParam().trace, "ask enabled()", "ask locked()", GetParam().request}),
              takeNotes());
}

TEST_P(ASpeechRequest, ReturnsMinusOneWhileSpeechIsDisabledAndDoesNotAskForTheLock) {
    service.enabled = false;
    service.locked = true;
    EXPECT_EQ(-1, GetParam().speak(client));
    EXPECT_EQ(Lines({GetParam().trace, "ask enabled()"}), takeNotes());
}

TEST_P(ASpeechRequest, ReturnsMinusSevenWhileAnotherClientHoldsTheLock) {
    service.locked = true;
    EXPECT_EQ(-7, GetParam().speak(client));
    EXPECT_EQ(Lines({GetParam().trace, "ask enabled()", "ask locked()"}), takeNotes());
}

TEST_P(ASpeechRequest, OfTheLockOwnerDoesNotAskForTheLock) {
    client.mLockOwner = true;
    service.locked = true;
    EXPECT_EQ(0, GetParam().speak(client));
    EXPECT_EQ(Lines({GetParam().trace, "ask enabled()", GetParam().request}), takeNotes());
}

TEST_P(ASpeechRequest, GoesThroughTheProxyItStartedWithWhenTheConnectionIsLostMeanwhile) {
    service.onRequest = [](uint32_t code) {
        if (code == support::kLocked) {
            const TTSClientPrivate other("other", nullptr);
        }
    };
    EXPECT_EQ(0, GetParam().speak(client));
    EXPECT_EQ(GetParam().request, takeNotes().back());
    EXPECT_EQ(-5, GetParam().speak(client));
}

INSTANTIATE_TEST_SUITE_P(Each, ASpeechRequest, testing::ValuesIn(rows()),
                         [](const auto& row) { return std::string(row.param.name); });

class Say : public support::JoinedClientTest {
protected:
    Say() {
        client.mLockOwner = true;
        client.mSetting.mSpeed = 150;
        client.mSetting.mVolume = 60.5F;
        client.mSetting.mVoice = 2;
        client.mSetting.mMediaVolume = 40;
        client.mSetting.mTtsVolume = 70;
        client.mSetting.mPitch = 120.25F;
        client.mSetting.mLang = "fr_FR";
    }
};

TEST_F(Say, SendsTheCurrentSettingsInTheirOrder) {
    client.say(4294967295U, "Bonjour, \303\247a va ?");
    EXPECT_EQ(Lines({sayLine("fr_FR"), "ask enabled()",
                     "ask say(pid, 4294967295, \"Bonjour, \303\247a va ?\", 150, 60.5, 2, 40, 70, "
                     "120.25, 1)"}),
              takeNotes());
}

TEST_F(Say, SendsNoLanguageForACodeThatIsNoneOfOurs) {
    client.mSetting.mLang = "fr_FR\r";
    client.say(1, "");
    EXPECT_EQ(Lines({sayLine("fr_FR\r"), "ask enabled()",
                     "ask say(pid, 1, \"\", 150, 60.5, 2, 40, 70, 120.25, 5)"}),
              takeNotes());
}

TEST_F(Say, SilenceSendsTheCurrentBackgroundVolume) {
    client.silence(1, 2);
    EXPECT_EQ("ask silence(pid, 1, 2, 40)", takeNotes().back());
}

TEST_F(Say, UsesTheProcessIdOfTheClientsConstruction) {
    client.mPid = 12345;
    client.stopAndFlush(1);
    EXPECT_EQ("ask stopAndFlush(12345, 1)", takeNotes().back());
}

}  // namespace
