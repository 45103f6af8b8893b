// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/session/WaitingLines.h"

#include <gtest/gtest.h>

#include <string>

#include "voxtrel/session/Mailbox.h"

namespace {

using namespace voxtrel;

class WhatWaits : public testing::Test {
protected:
    static WaitingLines::Item of(const std::shared_ptr<Mailbox>& client, const char* text) {
        auto speech = std::make_shared<Speech>();
        speech->client = client;
        speech->text = text;
        return speech;
    }
    static std::string textOf(const WaitingLines::Item& speech) {
        return speech == nullptr ? "nothing" : speech->text;
    }
    /// Takes everything away, the first first.
    std::string takeAll() {
        std::string texts;
        while (const WaitingLines::Item speech = lines.firstOfAnother(nullptr)) {
            lines.takeFirst(speech);
            texts += speech->text;
        }
        return texts;
    }

    const std::shared_ptr<Mailbox> ann = std::make_shared<Mailbox>(false);
    const std::shared_ptr<Mailbox> bob = std::make_shared<Mailbox>(false);
    const std::shared_ptr<Mailbox> carol = std::make_shared<Mailbox>(false);
    WaitingLines lines;
};

TEST_F(WhatWaits, IsNothingAtFirst) {
    EXPECT_TRUE(lines.isEmpty());
    EXPECT_FALSE(lines.has(*ann));
    EXPECT_EQ("nothing", textOf(lines.firstOf(ann.get())));
    EXPECT_EQ("nothing", textOf(lines.firstOfAnother(ann.get())));
    EXPECT_TRUE(lines.takeAllOf(*ann).empty());
    EXPECT_TRUE(lines.takeAll().empty());
}

TEST_F(WhatWaits, LongestOfAnotherClientIsFirst) {
    lines.add(of(ann, "a"));
    lines.add(of(carol, "c"));
    lines.add(of(bob, "b"));
    lines.add(of(carol, "d"));
    EXPECT_EQ("a", textOf(lines.firstOfAnother(nullptr)));
    EXPECT_EQ("c", textOf(lines.firstOfAnother(ann.get())));
    lines.takeFirst(lines.firstOf(carol.get()));
    EXPECT_EQ("b", textOf(lines.firstOfAnother(ann.get())));
    EXPECT_EQ("d", textOf(lines.firstOf(carol.get())));
}

TEST_F(WhatWaits, GoesInTheOrderInWhichItCame) {
    lines.add(of(ann, "a"));
    lines.add(of(bob, "b"));
    lines.add(of(ann, "c"));
    lines.addFirst(of(bob, "2"));
    lines.addFirst(of(ann, "1"));
    EXPECT_EQ("12abc", takeAll());
    EXPECT_TRUE(lines.isEmpty());
}

TEST_F(WhatWaits, OfAClientGoesWithoutThatOfOthers) {
    lines.add(of(ann, "a"));
    lines.add(of(bob, "b"));
    lines.add(of(ann, "c"));
    const WaitingLines::Places taken = lines.takeAllOf(*ann);
    EXPECT_EQ("ac", textOf(taken.front().speech) + textOf(taken.back().speech));
    EXPECT_FALSE(lines.has(*ann));
    EXPECT_TRUE(lines.has(*bob));
    lines.takeFirst(lines.firstOf(bob.get()));
    EXPECT_TRUE(lines.isEmpty());
}

}  // namespace
