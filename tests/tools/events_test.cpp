// SPDX-License-Identifier: Apache-2.0
#include "tools/Events.h"

#include <gtest/gtest.h>

using namespace voxtrelctl;

namespace {

constexpr uint32_t kLockedStatus = 0xFFFFFFF9U;  // -7

TEST(AnEvent, IsNamedByItsFirstNumber) {
    EXPECT_EQ(kindOf({1, 7, 0}), EventKind::Started);
    EXPECT_EQ(kindOf({2, 7, 0}), EventKind::Finished);
    EXPECT_EQ(kindOf({3, 7, 0}), EventKind::Stopped);
    EXPECT_EQ(kindOf({4, 7, 0}), EventKind::Word);
    EXPECT_EQ(kindOf({5, 7, 0}), EventKind::State);
    EXPECT_EQ(kindOf({6, 7, 0}), EventKind::Setting);
    EXPECT_EQ(kindOf({7, 7, 0}), EventKind::Mark);
}

TEST(AnEvent, OfANumberFromTheFutureIsUnknown) {
    EXPECT_EQ(kindOf({0, 0, 0}), EventKind::Unknown);
    EXPECT_EQ(kindOf({8, 1, 2}), EventKind::Unknown);
    EXPECT_EQ(kindOf({0xFFFFFFFFU, 1, 2}), EventKind::Unknown);
    EXPECT_EQ(describe({8, 1, 2}), "unknown event 8 1 2");
}

TEST(OnlyFinishedAndStopped, EndAnUtterance) {
    for (uint32_t first = 0; first < 8; ++first) {
        EXPECT_EQ(isTerminal({first, 1, 0}), first == 2 || first == 3) << first;
    }
}

TEST(AMark, IsDescribedByItsUtteranceAndItsNumber) {
    EXPECT_EQ(describe({7, 3, 1}), "mark 3 1");
}

TEST(StateAndSettingEvents, NameNoUtterance) {
    for (uint32_t first = 0; first < 9; ++first) {
        EXPECT_EQ(isOfUtterance({first, 1, 0}), (first >= 1 && first <= 4) || first == 7) << first;
    }
}

TEST(AStop, CarriesItsReasonAsASignedStatus) {
    EXPECT_EQ(statusOf({3, 1, kLockedStatus}), -7);
    EXPECT_EQ(statusOf({3, 1, 0}), 0);
}

TEST(AStop, IsDescribedWithItsReason) {
    EXPECT_EQ(describe({3, 4, 0}), "stopped 4 (flushed)");
    EXPECT_EQ(describe({3, 4, kLockedStatus}),
              "stopped 4 (-7 the service is locked by another client)");
}

TEST(UtteranceEvents, AreDescribedWithTheirUtterance) {
    EXPECT_EQ(describe({1, 4, 0}), "started 4");
    EXPECT_EQ(describe({2, 4, 0}), "finished 4");
    EXPECT_EQ(describe({4, 4, 12}), "word 4 at 12");
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
        {18, 3, "refused: this user may not stop what others say"},
        {18, 25, "refused: this user may not take the lock"},
        {18, 26, "refused: this user may not free the lock"},
        {18, 1, "refused: this user may not do that (request 1)"},
        {17, 0, "reset: every setting went back to its default"},
        {99, 5, "99: 5"},
    };
    for (const StateCase& example : kCases) {
        EXPECT_EQ(describe({5, example.second, example.third}), example.line);
    }
}

TEST(AnOwnChange, IsDescribedByItsSetting) {
    EXPECT_EQ(describe({6, 0, 0}), "setting: language");
    EXPECT_EQ(describe({6, 0, 6}), "setting: tts-volume");
    EXPECT_EQ(describe({6, 0, 7}), "setting: unknown");
}

}  // namespace
