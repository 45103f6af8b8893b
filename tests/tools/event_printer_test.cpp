// SPDX-License-Identifier: Apache-2.0
#include "tools/EventPrinter.h"

#include <gtest/gtest.h>

using namespace voxtrelctl;

namespace {

/// Shows events and gives back what was printed for each.
class Screen {
public:
    explicit Screen(EventPrinter::Style style, std::string text = "Hello, world. Bye")
        : mText(std::move(text)),
          mPrinter(style, mText, [this](const std::string& line) { mShown += line; }) {}

    std::string show(TTS::Event kind, std::uint32_t value = 0) {
        mShown.clear();
        mPrinter.show({kind, 1, value, value});
        return mShown;
    }

private:
    const std::string mText;
    std::string mShown;
    EventPrinter mPrinter;
};

TEST(OnATerminal, TheTextGrowsWithTheVoice) {
    Screen screen(EventPrinter::Style::Words);
    EXPECT_EQ(screen.show(TTS::EVENT_STARTED), "");
    EXPECT_EQ(screen.show(TTS::EVENT_WORD, 0), "Hello,");
    EXPECT_EQ(screen.show(TTS::EVENT_WORD, 7), " world.");
    EXPECT_EQ(screen.show(TTS::EVENT_WORD, 14), " Bye");
    EXPECT_EQ(screen.show(TTS::EVENT_FINISHED), "\n");
}

TEST(OnATerminal, WhatTheVoiceSkippedIsThereAtTheEnd) {
    Screen screen(EventPrinter::Style::Words);
    screen.show(TTS::EVENT_STARTED);
    EXPECT_EQ(screen.show(TTS::EVENT_FINISHED), "Hello, world. Bye\n");
}

TEST(OnATerminal, ALineEndAtTheEndOfTheTextIsEnough) {
    Screen screen(EventPrinter::Style::Words, "Again\n");
    EXPECT_EQ(screen.show(TTS::EVENT_WORD, 0), "Again");
    EXPECT_EQ(screen.show(TTS::EVENT_FINISHED), "\n");
}

TEST(OnATerminal, AStopIsSeenWhereItCame) {
    Screen screen(EventPrinter::Style::Words);
    screen.show(TTS::EVENT_WORD, 0);
    EXPECT_EQ(screen.show(TTS::EVENT_STOPPED), " [stopped]\n");
}

TEST(OnATerminal, TheTextCannotSteerIt) {
    Screen screen(EventPrinter::Style::Words, "a\x1b[2Jb");
    EXPECT_EQ(screen.show(TTS::EVENT_FINISHED), "a [2Jb\n");
}

TEST(InAFile, EachEventIsALine) {
    Screen screen(EventPrinter::Style::Lines);
    EXPECT_EQ(screen.show(TTS::EVENT_STARTED), "started 1\n");
    EXPECT_EQ(screen.show(TTS::EVENT_WORD, 7), "word 1 at 7: world.\n");
    EXPECT_EQ(screen.show(TTS::EVENT_FINISHED), "finished 1\n");
}

TEST(InJson, EachEventIsAnObject) {
    Screen screen(EventPrinter::Style::Json);
    EXPECT_EQ(screen.show(TTS::EVENT_WORD, 7),
              "{\"event\":\"word\",\"utterance\":1,\"offset\":7,\"word\":\"world.\"}\n");
    EXPECT_EQ(screen.show(TTS::EVENT_FINISHED), "{\"event\":\"finished\",\"utterance\":1}\n");
}

TEST(Silent, NothingIsShown) {
    Screen screen(EventPrinter::Style::Silent);
    EXPECT_EQ(screen.show(TTS::EVENT_STARTED) + screen.show(TTS::EVENT_WORD, 0), "");
}

}  // namespace
