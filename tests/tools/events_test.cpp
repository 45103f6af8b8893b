// SPDX-License-Identifier: Apache-2.0
#include "tools/Events.h"

#include <gtest/gtest.h>

using namespace voxtrelctl;

namespace {

constexpr uint32_t kLockedStatus = 0xFFFFFFF9U;  // -7

TEST(AMark, IsDescribedByItsUtteranceAndItsNumber) {
    EXPECT_EQ(describe({TTS::EVENT_MARK, 3, 1}), "mark 3 1");
}

TEST(AStop, CarriesItsReasonAsASignedStatus) {
    EXPECT_EQ(statusOf({TTS::EVENT_STOPPED, 1, kLockedStatus}), -7);
    EXPECT_EQ(statusOf({TTS::EVENT_STOPPED, 1, 0}), 0);
}

TEST(AStop, IsDescribedWithItsReason) {
    EXPECT_EQ(describe({TTS::EVENT_STOPPED, 4, 0}), "stopped 4 (flushed)");
    EXPECT_EQ(describe({TTS::EVENT_STOPPED, 4, kLockedStatus}),
              "stopped 4 (-7 the service is locked by another client)");
}

TEST(UtteranceEvents, AreDescribedWithTheirUtterance) {
    EXPECT_EQ(describe({TTS::EVENT_STARTED, 4, 0}), "started 4");
    EXPECT_EQ(describe({TTS::EVENT_FINISHED, 4, 0}), "finished 4");
    EXPECT_EQ(describe({TTS::EVENT_WORD, 4, 12}), "word 4 at 12");
}

struct StateCase {
    uint32_t second;
    uint32_t third;
    const char* line;
};

TEST(AStateEvent, IsDescribedByWhatChanged) {
    constexpr StateCase kCases[] = {
        {0, 1, "speech: on"},
        {0, 0, "speech: off"},
        {1, 1, "verbosity: 1"},
        {2, 200, "speed: 200"},
        {3, 0, "speed-enable: off"},
        {4, 200, "pitch: 200"},
        {6, 2, "voice: 2"},
        {8, 90, "volume: 90"},
        {10, 30, "bg-volume: 30"},
        {12, 70, "tts-volume: 70"},
        {13, 1, "tts-volume-enable: on"},
        {14, 3, "language: ko_KR"},
        {14, 9, "language: na_NL"},
        {15, 0, "lock: free"},
        {15, 4321, "lock: held by process 4321"},
        {16, 1, "ready: on"},
        {17, 0, "reset: every setting went back to its default"},
        {99, 5, "99: 5"},
    };
    for (const StateCase& example : kCases) {
        EXPECT_EQ(describe({TTS::EVENT_STATE, example.second, example.third}), example.line);
    }
}

}  // namespace
