// SPDX-License-Identifier: Apache-2.0
#include "tests/soak/Figures.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <vector>

using soak::Figures;
using soak::figuresOf;

namespace {

TEST(TheFigures, OfAProcessThatHoldsMoreAreLarger) {
    const Figures before = figuresOf(getpid());
    constexpr long kKib = 4096;
    const std::vector<char> written(kKib * 1024, 'x');
    const int file = open("/dev/null", O_RDONLY | O_CLOEXEC);
    const Figures after = figuresOf(getpid());
    close(file);
    EXPECT_EQ(after.descriptors, before.descriptors + 1);
    EXPECT_GE(after.memoryKib, before.memoryKib + kKib);
}

TEST(TheFigures, OfAProcessThatIsNotThereAreZeros) {
    EXPECT_EQ(figuresOf(-1), Figures());
}

TEST(TheFigures, OfSeveralRestsAreTheLeastThatWereTaken) {
    EXPECT_EQ(soak::leastOf({40, 900}, {43, 800}), (Figures{40, 800}));
    EXPECT_EQ(soak::leastOf({}, {43, 800}), (Figures{43, 800}));
}

}  // namespace
