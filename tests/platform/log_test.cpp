// SPDX-License-Identifier: Apache-2.0
#include "binder/transport/Log.h"

#include <gtest/gtest.h>

#include <chrono>

namespace {

using android::transport::LogAllowance;

TEST(TheLogOfWhatOthersCause, HasAFewLinesASecondAndCountsTheRest) {
    LogAllowance allowance;
    const LogAllowance::Time begin{std::chrono::hours(1)};
    for (int i = 0; i < LogAllowance::kLines; ++i) {
        EXPECT_EQ(0, allowance.take(begin));
    }
    EXPECT_EQ(-1, allowance.take(begin));
    EXPECT_EQ(-1, allowance.take(begin + std::chrono::milliseconds(999)));
    EXPECT_EQ(2, allowance.take(begin + std::chrono::seconds(1)));
    EXPECT_EQ(0, allowance.take(begin + std::chrono::seconds(1)));
}

}  // namespace
