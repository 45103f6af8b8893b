// SPDX-License-Identifier: Apache-2.0
#include "tests/soak/ToolOutput.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>

namespace {

/// What the ledger has of a command that printed this.
std::string notedOf(const std::string& printed) {
    std::string path = testing::TempDir() + "ledger-XXXXXX";
    close(mkstemp(path.data()));
    std::istringstream output(printed);
    {
        soak::Ledger ledger(path);
        soak::noteEvents(output, 3, ledger);
    }
    std::stringstream text;
    text << std::ifstream(path).rdbuf();
    unlink(path.c_str());
    return text.str();
}

constexpr const char* kStarted = "{\"event\":\"started\",\"utterance\":1}\n";
constexpr const char* kWord =
    "{\"event\":\"word\",\"utterance\":1,\"offset\":0,\"word\":\"stopped\"}\n";
constexpr const char* kFinished = "{\"event\":\"finished\",\"utterance\":1}\n";
constexpr const char* kStopped = "{\"event\":\"stopped\",\"utterance\":1,\"status\":-7}\n";

TEST(TheOutputOfACommand, TellsOfNoUtteranceWhereThereIsNone) {
    EXPECT_EQ(notedOf("voxtrelctl: -8 service not found: is voxtreld running?\n"), "");
}

TEST(TheOutputOfACommand, TellsOfAnUtteranceAndItsEnd) {
    EXPECT_EQ(notedOf(std::string(kStarted) + kWord + kFinished), "said 3 1\nended 3 1 1 0\n");
    EXPECT_EQ(notedOf(kStopped), "said 3 1\nended 3 1 2 0\n");
}

TEST(TheOutputOfACommand, TellsOfAnEndThatIsMissing) {
    EXPECT_EQ(notedOf(std::string(kStarted) + kWord), "said 3 1\n");
}

TEST(TheOutputOfACommand, TellsOfEachEndOfTwo) {
    EXPECT_EQ(notedOf(std::string(kFinished) + kStopped),
              "said 3 1\nended 3 1 1 0\nended 3 1 2 0\n");
}

}  // namespace
