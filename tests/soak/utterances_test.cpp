// SPDX-License-Identifier: Apache-2.0
#include "tests/soak/Utterances.h"

#include <gtest/gtest.h>

#include "tests/support/TempFolder.h"

using soak::Ending;
using soak::Ledger;
using soak::Utterances;

namespace {

constexpr Ending kPending{0, 0};
constexpr Ending kFinished{1, 0};
constexpr Ending kLost{4, -5};

class TheUtterances : public ::testing::Test {
protected:
    std::string noted() const { return voxtrel_test::readFile(path); }

    static Utterances::Handle handleOn(const Ending& ending) {
        return [&ending] { return ending; };
    }

    const voxtrel_test::TempFolder folder;
    const std::string path = folder.path("ledger");
    Ledger ledger{path};
    Utterances utterances{ledger, 2};
};

TEST_F(TheUtterances, AreOpenUntilAnEventTellsOfTheirOutcome) {
    Ending ending = kPending;
    utterances.said(1, handleOn(ending));
    EXPECT_EQ(utterances.open(), 1U);
    ending = kFinished;
    utterances.ended(1, kFinished);
    EXPECT_EQ(utterances.open(), 0U);
    EXPECT_EQ(noted(), "said 2 1\nended 2 1 1 0\n");
}

TEST_F(TheUtterances, MayBeToldOfBeforeTheyAreNoted) {
    utterances.ended(1, kFinished);
    utterances.said(1, handleOn(kFinished));
    EXPECT_EQ(utterances.open(), 0U);
    EXPECT_EQ(noted(), "ended 2 1 1 0\nsaid 2 1\n");
}

TEST_F(TheUtterances, AreNotedWhereHandleAndEventDiffer) {
    utterances.said(1, handleOn(kLost));
    utterances.ended(1, kFinished);
    utterances.ended(2, kFinished);
    utterances.said(2, handleOn(kPending));
    EXPECT_EQ(noted(),
              "said 2 1\nended 2 1 1 0\ndiffers 2 1\nended 2 2 1 0\nsaid 2 2\ndiffers 2 2\n");
}

TEST_F(TheUtterances, HaveTheOutcomesOfTheirHandlesWhenTheClientHasEnded) {
    utterances.said(1, handleOn(kLost));
    utterances.said(2, handleOn(kPending));
    utterances.close();
    EXPECT_EQ(noted(), "said 2 1\nsaid 2 2\nclosed 2 1 4 -5\nclosed 2 2 0 0\n");
}

}  // namespace
