// SPDX-License-Identifier: Apache-2.0
// Each flag of the served capabilities by itself, so that none can stand for another.
#include <gtest/gtest.h>

#include "tests/support/Bytes.h"
#include "tests/support/RecordingService.h"

namespace {

using TTS::Capabilities;

struct Row {
    bool Capabilities::*flag;
    size_t word;  // its place in the reply
};

constexpr Row kRows[] = {
    {&Capabilities::pitchSupported, 0}, {&Capabilities::volumeSupported, 3},
    {&Capabilities::speedSupported, 6}, {&Capabilities::ready, 9},
    {&Capabilities::permitted, 10},
};

TEST(AServedFlag, StandsInAWordOfItsOwn) {
    for (const Row& row : kRows) {
        const android::sp<support::RecordingService> service = new support::RecordingService;
        service->capabilities.*row.flag = true;
        android::Parcel request;
        android::Parcel reply;
        ASSERT_EQ(android::NO_ERROR, service->onTransact(28, request, &reply, 0));
        support::Bytes expected(size_t{12} * 4, 0);
        expected[row.word * 4] = 1;
        EXPECT_EQ(support::hex(expected), support::hex(support::bytesOf(reply))) << row.word;
    }
}

}  // namespace
