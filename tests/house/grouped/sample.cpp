// SPDX-License-Identifier: Apache-2.0
// Tests that end in every way a test can, for tests/house/grouped_tests.sh.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace {

TEST(A, Passes) {
    std::puts("said by a test that passes");
}

TEST(B, PassesAfterAnUnfinishedLine) {
    std::fputs("no line end", stdout);
}

TEST(C, Fails) {
    std::puts("said by a test that fails");
    FAIL();
}

TEST(D, IsSkipped) {
    GTEST_SKIP();
}

TEST(E, Ends) {
    std::puts("said by a test that ends the process");
    (void)std::fflush(stdout);
    _exit(0);
}

TEST(F, Hangs) {
    for (;;) {
        pause();
    }
}

TEST(G, MakesTheProcessEndBadly) {
    EXPECT_EQ(0, std::atexit([] { _exit(7); }));
}

TEST(H, Passes) {}

class Each : public testing::TestWithParam<int> {};

TEST_P(Each, IsBelowTwo) {
    EXPECT_LT(GetParam(), 2);
}
INSTANTIATE_TEST_SUITE_P(Number, Each, testing::Values(1, 2));

}  // namespace
