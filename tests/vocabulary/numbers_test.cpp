// SPDX-License-Identifier: Apache-2.0
// The numbers behind the names: programs that were built against an older library send and read
// them.
#include <gtest/gtest.h>

#include "vocabulary/Events.h"
#include "vocabulary/Status.h"

namespace {

TEST(AStatusCode, HasTheNumberThatProgramsInTheFieldKnow) {
    EXPECT_EQ(0, TTS::STATUS_OK);
    EXPECT_EQ(-1, TTS::STATUS_DISABLED);
    EXPECT_EQ(-3, TTS::STATUS_BAD_PARAMETER);
    EXPECT_EQ(-5, TTS::STATUS_NO_SERVICE);
    EXPECT_EQ(-6, TTS::STATUS_PROFILE_ERROR);
    EXPECT_EQ(-7, TTS::STATUS_LOCKED);
    EXPECT_EQ(-8, TTS::STATUS_SERVICE_NOT_FOUND);
    EXPECT_EQ(-9, TTS::STATUS_NOT_SUPPORTED);
    EXPECT_EQ(-10, TTS::STATUS_PERMISSION_DENIED);
    EXPECT_EQ(-11, TTS::STATUS_NO_LANGUAGE);
    EXPECT_EQ(-12, TTS::STATUS_QUEUE_FULL);
    EXPECT_EQ(-13, TTS::STATUS_AUDIO_FAILED);
    EXPECT_EQ(-14, TTS::STATUS_SHUTDOWN);
}

TEST(AnEvent, HasTheNumberThatProgramsInTheFieldKnow) {
    EXPECT_EQ(1U, TTS::EVENT_STARTED);
    EXPECT_EQ(2U, TTS::EVENT_FINISHED);
    EXPECT_EQ(3U, TTS::EVENT_STOPPED);
    EXPECT_EQ(4U, TTS::EVENT_WORD);
    EXPECT_EQ(5U, TTS::EVENT_STATE);
    EXPECT_EQ(6U, TTS::EVENT_SETTING);
    EXPECT_EQ(7U, TTS::EVENT_MARK);
}

TEST(AStateEvent, NumbersWhatIsNoKeyOfASetting) {
    EXPECT_EQ(0U, TTS::STATE_ENABLED);
    EXPECT_EQ(1U, TTS::STATE_VERBOSITY);
    EXPECT_EQ(15U, TTS::STATE_LOCK);
    EXPECT_EQ(16U, TTS::STATE_READY);
    EXPECT_EQ(17U, TTS::STATE_RESET);
    EXPECT_EQ(18U, TTS::STATE_REFUSED);
}

TEST(ARefusedRequest, IsNumberedByItsTransaction) {
    EXPECT_EQ(3U, TTS::REQUEST_STOP);
    EXPECT_EQ(25U, TTS::REQUEST_LOCK);
    EXPECT_EQ(26U, TTS::REQUEST_UNLOCK);
}

TEST(ASettingEvent, NumbersTheSettersOfTheClient) {
    EXPECT_EQ(0U, TTS::SETTING_LANGUAGE);
    EXPECT_EQ(1U, TTS::SETTING_SPEED);
    EXPECT_EQ(2U, TTS::SETTING_PITCH);
    EXPECT_EQ(3U, TTS::SETTING_VOICE);
    EXPECT_EQ(4U, TTS::SETTING_VOLUME);
    EXPECT_EQ(5U, TTS::SETTING_BG_VOLUME);
    EXPECT_EQ(6U, TTS::SETTING_TTS_VOLUME);
}

TEST(TheNumbers, TravelIn32Bits) {
    EXPECT_EQ(4U, sizeof(TTS::Status));
    EXPECT_EQ(4U, sizeof(TTS::Event));
    EXPECT_EQ(4U, sizeof(TTS::State));
    EXPECT_EQ(4U, sizeof(TTS::SettingKind));
}

}  // namespace
