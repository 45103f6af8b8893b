// SPDX-License-Identifier: Apache-2.0
// A later service may answer more than today's proxy asks for: the rest is left unread.
#include <gtest/gtest.h>

#include "ipc/BpTextToSpeechFestival.h"
#include "tests/support/RecordingRemote.h"

namespace {

using android::sp;

class AReplyWithMoreThanItsValues : public testing::Test {
protected:
    void SetUp() override {
        // 7, then 1.5 as a float, then all ones.
        remote->answerWith(support::fromHex("07 00 00 00  00 00 c0 3f  ff ff ff ff"));
    }

    const sp<support::RecordingRemote> remote = new support::RecordingRemote;
    const sp<TTS::BpTextToSpeechFestival> proxy = new TTS::BpTextToSpeechFestival(remote);
};

TEST_F(AReplyWithMoreThanItsValues, GivesItsFirstAsTheStatus) {
    EXPECT_EQ(7, proxy->verbosity());
    EXPECT_EQ(7, proxy->globalRate());
    EXPECT_EQ(7, proxy->setVerbosity(1, 0));
    EXPECT_EQ(7, proxy->factoryReset(1));
    EXPECT_EQ(7, proxy->language());
}

TEST_F(AReplyWithMoreThanItsValues, GivesNoStatusToAQuestionThatHasNone) {
    remote->answerWith(support::fromHex("00 00 c0 3f  ff ff ff ff"));
    float pitch = 0.0F;
    EXPECT_EQ(0, proxy->pitch(pitch));
    EXPECT_EQ(1.5F, pitch);
    unsigned number = 0;
    EXPECT_EQ(0, proxy->voice(number));
    EXPECT_EQ(0x3fc00000U, number);
    EXPECT_EQ(0, proxy->speed(number));
    EXPECT_EQ(0x3fc00000U, number);
}

}  // namespace
