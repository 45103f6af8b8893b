// SPDX-License-Identifier: Apache-2.0
#include "tools/Utterances.h"

#include <gtest/gtest.h>

using namespace voxtrelctl;

namespace {

constexpr uint32_t kRefused = static_cast<uint32_t>(-7);

Utterances sentUpTo(uint32_t last) {
    Utterances utterances;
    for (uint32_t number = 1; number <= last; ++number) {
        utterances.sent(number);
    }
    return utterances;
}

TEST(AnUtterance, IsOpenFromItsSendingToItsEnd) {
    Utterances utterances = sentUpTo(1);
    EXPECT_TRUE(utterances.isOpen(1));
    utterances.see({TTS::EVENT_STARTED, 1, 0});
    utterances.see({TTS::EVENT_WORD, 1, 0});
    EXPECT_EQ(utterances.open(), 1U);
    utterances.see({TTS::EVENT_FINISHED, 1, 0});
    EXPECT_FALSE(utterances.isOpen(1));
    EXPECT_EQ(utterances.open(), 0U);
    EXPECT_FALSE(utterances.lost());
}

TEST(AnUtterance, IsLostWhenALaterOneIsSpokenBeforeAnyEventAboutIt) {
    for (const uint32_t event : {TTS::EVENT_STARTED, TTS::EVENT_WORD, TTS::EVENT_FINISHED}) {
        Utterances utterances = sentUpTo(4);
        utterances.see({TTS::EVENT_FINISHED, 1, 0});
        utterances.see({event, 4, 0});
        EXPECT_EQ(utterances.lost(), 2U);
        EXPECT_FALSE(utterances.isOpen(2));
        EXPECT_FALSE(utterances.isOpen(3));
    }
}

TEST(AnUtterance, IsNotLostWhenALaterOneIsRefused) {
    Utterances utterances = sentUpTo(3);
    utterances.see({TTS::EVENT_STOPPED, 3, kRefused});
    EXPECT_FALSE(utterances.lost());
    EXPECT_TRUE(utterances.isAnyOpen(2));
}

TEST(AnUtterance, IsNotLostWhenOnlyItsEndHasNotBeenTold) {
    Utterances utterances = sentUpTo(2);
    utterances.see({TTS::EVENT_STARTED, 1, 0});
    utterances.passed(2);
    EXPECT_EQ(utterances.lost(), 2U);
    EXPECT_TRUE(utterances.isAnyOpen(1));
}

TEST(AnUtterance, IsNotToldByEventsOfOtherKindsOrNumbers) {
    Utterances utterances = sentUpTo(2);
    utterances.see({TTS::EVENT_STATE, 2, 0});
    utterances.see({TTS::EVENT_STARTED, 7, 0});
    utterances.see({TTS::EVENT_STARTED, 0, 0});
    EXPECT_FALSE(utterances.lost());
    EXPECT_EQ(utterances.open(), 2U);
}

}  // namespace
