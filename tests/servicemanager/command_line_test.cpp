// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>

#include "tests/support/ChildProcess.h"
#include "tests/support/TempFolder.h"

using namespace voxtrel_test;

namespace {

class TheCommandLine : public ::testing::Test {
protected:
    TheCommandLine() { setenv("VOXTREL_BINDER_SOCKET", mFolder.path("binder").c_str(), 1); }

    /// What it says when it is run with these; it must not have begun to listen.
    Outcome run(const ChildProcess::Words& options) {
        ChildProcess::Words words = {VOXTREL_SERVICEMANAGER};
        words.insert(words.end(), options.begin(), options.end());
        const Outcome outcome = ChildProcess(words, "").finish();
        EXPECT_FALSE(std::filesystem::exists(mFolder.path("binder.lock")));
        return outcome;
    }

    const TempFolder mFolder;
};

TEST_F(TheCommandLine, ExplainsItselfAndLeavesWithZero) {
    for (const char* option : {"-h", "--help"}) {
        const Outcome outcome = run({option});
        EXPECT_EQ(0, outcome.status);
        EXPECT_EQ(0U, outcome.out.find("Usage: voxtrel-servicemanager ")) << outcome.out;
        for (const char* word :
             {"--version", "--exit-when-idle", "--log-level", "--reserve", "--socket-group",
              "--socket-mode", "VOXTREL_BINDER_SOCKET", "VOXTREL_LOG_LEVEL"}) {
            EXPECT_NE(std::string::npos, outcome.out.find(word)) << word;
        }
        EXPECT_EQ("", outcome.err);
    }
}

TEST_F(TheCommandLine, NamesTheVersion) {
    for (const char* option : {"-V", "--version"}) {
        const Outcome outcome = run({option});
        EXPECT_EQ(0, outcome.status);
        EXPECT_EQ("voxtrel-servicemanager " VOXTREL_VERSION "\n", outcome.out);
    }
}

TEST_F(TheCommandLine, WithAMistakeSaysWhichAndLeavesWithOne) {
    struct Mistake {
        ChildProcess::Words words;
        std::string line;
    };
    for (const Mistake& mistake :
         {Mistake{{"--loud"}, "there is no option --loud"},
          Mistake{{"-x"}, "there is no option -x"},
          Mistake{{"extra"}, "it takes no argument, not extra"},
          Mistake{{"--log-level"}, "--log-level needs a value"},
          Mistake{{"--log-level", "loud"},
                  "--log-level takes error, warning, info or debug, not loud"},
          Mistake{{"--exit-when-idle=soon"}, "--exit-when-idle takes 1 to 86400 seconds, not soon"},
          Mistake{{"--exit-when-idle", "0"}, "--exit-when-idle takes 1 to 86400 seconds, not 0"},
          Mistake{{"--socket-mode", "rw"},
                  "--socket-mode takes an octal number from 0 to 777, not rw"},
          Mistake{{"--socket-mode", "668"},
                  "--socket-mode takes an octal number from 0 to 777, not 668"},
          Mistake{{"--socket-mode", "1777"},
                  "--socket-mode takes an octal number from 0 to 777, not 1777"},
          Mistake{{"--socket-mode="}, "--socket-mode takes an octal number from 0 to 777, not "},
          Mistake{{"--socket-group", "no such group"},
                  "--socket-group takes a group's name or number, and there is none that is no "
                  "such group"},
          Mistake{{"--socket-group", "4294967295"},
                  "--socket-group takes a group's name or number, and there is none that is "
                  "4294967295"},
          Mistake{{"--reserve", "speech"},
                  "--reserve takes NAME=USER, with a name of 1 to 127 characters, not speech"},
          Mistake{{"--reserve", "=0"},
                  "--reserve takes NAME=USER, with a name of 1 to 127 characters, not =0"},
          Mistake{{"--reserve", "speech=no such user"},
                  "--reserve takes a user's name or number, and there is none that is no such "
                  "user"},
          Mistake{{"--reserve", "speech=1", "--reserve", "speech=2"},
                  "--reserve gives speech to two users"},
          Mistake{{"--exit-when-idle", "-5"},
                  "--exit-when-idle takes 1 to 86400 seconds, not -5"}}) {
        const Outcome outcome = run(mistake.words);
        EXPECT_EQ(1, outcome.status);
        EXPECT_EQ("", outcome.out);
        EXPECT_EQ("voxtrel-servicemanager: " + mistake.line +
                      "\nvoxtrel-servicemanager: --help lists the options\n",
                  outcome.err);
    }
}

}  // namespace
