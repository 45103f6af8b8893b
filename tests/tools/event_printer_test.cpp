// SPDX-License-Identifier: Apache-2.0
#include "tools/EventPrinter.h"

#include <gtest/gtest.h>

using namespace voxtrelctl;

namespace {

constexpr const char* kText = "Hello, world. Bye";

/// Shows events and gives back what was printed for each.
class Screen {
public:
    explicit Screen(EventPrinter::Style style)
        : mPrinter(EventPrinter::make(style, [this](const std::string& text) { mShown += text; })) {
    }

    std::string show(const Event& event, const std::string& text = kText) {
        mShown.clear();
        mPrinter->show(event, text);
        return mShown;
    }

private:
    std::string mShown;
    std::unique_ptr<EventPrinter> mPrinter;
};

TEST(OnATerminal, TheTextGrowsWithTheVoice) {
    Screen screen(EventPrinter::Style::Words);
    EXPECT_EQ(screen.show({1, 1, 0}), "");
    EXPECT_EQ(screen.show({4, 1, 0}), "Hello,");
    EXPECT_EQ(screen.show({4, 1, 7}), " world.");
    EXPECT_EQ(screen.show({4, 1, 14}), " Bye");
    EXPECT_EQ(screen.show({2, 1, 0}), "\n");
}

TEST(OnATerminal, WhatTheVoiceSkippedIsThereAtTheEnd) {
    Screen screen(EventPrinter::Style::Words);
    screen.show({1, 1, 0});
    EXPECT_EQ(screen.show({2, 1, 0}), std::string(kText) + "\n");
}

TEST(OnATerminal, AStopIsSeenWhereItCame) {
    Screen screen(EventPrinter::Style::Words);
    screen.show({1, 1, 0});
    screen.show({4, 1, 0});
    EXPECT_EQ(screen.show({3, 1, 0}), " [stopped]\n");
}

TEST(OnATerminal, TheNextUtteranceStartsAnew) {
    Screen screen(EventPrinter::Style::Words);
    screen.show({1, 1, 0});
    screen.show({2, 1, 0});
    screen.show({1, 2, 0}, "Again\n");
    EXPECT_EQ(screen.show({4, 2, 0}, "Again\n"), "Again");
    EXPECT_EQ(screen.show({2, 2, 0}, "Again\n"), "\n");
}

TEST(OnATerminal, TheTextCannotSteerIt) {
    Screen screen(EventPrinter::Style::Words);
    screen.show({1, 1, 0}, "a\x1b[2Jb");
    EXPECT_EQ(screen.show({2, 1, 0}, "a\x1b[2Jb"), "a [2Jb\n");
}

TEST(InAFile, EachEventIsALine) {
    Screen screen(EventPrinter::Style::Lines);
    EXPECT_EQ(screen.show({1, 1, 0}), "started 1\n");
    EXPECT_EQ(screen.show({4, 1, 7}), "word 1 at 7: world.\n");
    EXPECT_EQ(screen.show({2, 1, 0}), "finished 1\n");
}

TEST(InJson, EachEventIsAnObject) {
    Screen screen(EventPrinter::Style::Json);
    EXPECT_EQ(screen.show({4, 1, 7}),
              "{\"event\":\"word\",\"utterance\":1,\"offset\":7,\"word\":\"world.\"}\n");
    EXPECT_EQ(screen.show({2, 1, 0}), "{\"event\":\"finished\",\"utterance\":1}\n");
}

TEST(Silent, NothingIsShown) {
    Screen screen(EventPrinter::Style::Silent);
    EXPECT_EQ(screen.show({1, 1, 0}) + screen.show({4, 1, 0}) + screen.show({2, 1, 0}), "");
}

}  // namespace
