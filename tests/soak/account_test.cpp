// SPDX-License-Identifier: Apache-2.0
// A soak that finds nothing must be known to be able to find something.
#include "tests/soak/Account.h"

#include <gtest/gtest.h>

#include <sstream>

#include "tests/soak/Report.h"

using soak::Account;
using soak::Growth;
using soak::Soak;

namespace {

using Findings = std::vector<std::string>;

Account accountOf(const std::string& ledger) {
    std::istringstream lines(ledger);
    Account account;
    account.add("1.1", lines);
    return account;
}

TEST(AnAccount, CountsUtterancesAndTheirOutcomes) {
    const Account account = accountOf(
        "said 1 1\nended 1 1 1 0\n"
        "ended 1 2 4 -5\nsaid 1 2\n"  // the event was quicker
        "said 2 1\nclosed 2 1 4 -103\nleft\n");
    EXPECT_EQ(account.utterances, 3U);
    EXPECT_EQ(account.outcomes, (std::map<int, std::size_t>{{1, 1}, {4, 2}}));
    EXPECT_EQ(account.losses.at(-5), 1U);
    EXPECT_EQ(account.losses.at(-103), 1U);
    EXPECT_EQ(account.findings, Findings());
}

TEST(AnAccount, FindsAnUtteranceWithoutAnOutcome) {
    for (const char* ledger : {"said 1 7\nleft\n", "said 1 7\nclosed 1 7 0\nleft\n"}) {
        const Account account = accountOf(ledger);
        EXPECT_EQ(account.without, 1U);
        EXPECT_EQ(account.findings, Findings{"1.1: utterance 7 of client 1 has no outcome"});
    }
}

TEST(AnAccount, KnowsThatAKilledClientHearsNothingMore) {
    const Account account = accountOf("said 1 1\nsaid 1 2\nended 1 1 1\n");
    EXPECT_EQ(account.killed, 1U);
    EXPECT_EQ(account.without, 0U);
    EXPECT_EQ(account.findings, Findings());
}

TEST(AnAccount, FindsAnUtteranceWithTwoOutcomes) {
    for (const char* ledger :
         {"said 1 7\nended 1 7 1\nended 1 7 1\n", "said 1 7\nended 1 7 1\nclosed 1 7 4\n",
          "said 1 7\nended 1 7 1\ndiffers 1 7\n"}) {
        const Account account = accountOf(ledger);
        EXPECT_EQ(account.withTwo, 1U);
        EXPECT_EQ(account.findings,
                  Findings{"1.1: utterance 7 of client 1 has more than one outcome"});
    }
}

TEST(AnAccount, FindsALateCall) {
    const Account account = accountOf("called say -3\ncalled lock 2000\ncalled stop 2001\nleft\n");
    EXPECT_EQ(account.calls, 3U);
    EXPECT_EQ(account.late, 1U);
    EXPECT_EQ(account.longestBeyondMs, 2001);
    EXPECT_EQ(account.findings, Findings{"1.1: stop ended 2001 ms behind its deadline"});
}

TEST(AnAccount, TakesACommandThatFailsInOrder) {
    const Account account = accountOf("exited say 0\nexited say 1\nexited get 1\nleft\n");
    EXPECT_EQ(account.exits.at("say").good, 1U);
    EXPECT_EQ(account.exits.at("say").failed, 1U);
    EXPECT_EQ(account.exits.at("get").failed, 1U);
    EXPECT_EQ(account.findings, Findings());
}

TEST(AnAccount, TakesACommandThatEndedByTheSignalThatItWasSent) {
    const Account account = accountOf("exited lock 0\ninterrupted lock\nleft\n");
    EXPECT_EQ(account.exits.at("lock").good, 1U);
    EXPECT_EQ(account.exits.at("lock").interrupted, 1U);
    EXPECT_EQ(account.findings, Findings());
}

TEST(AnAccount, FindsACommandThatCrashed) {
    const Account account = accountOf("exited status 139\nleft\n");
    EXPECT_EQ(account.findings, Findings{"1.1: status ended with status 139"});
}

/// A run in which all went well.
Soak::Result goodResult() {
    Soak::Result result;
    result.account = accountOf("said 1 1\nended 1 1 1\ncalled say 0\nexited get 0\nleft\n");
    result.growth.push_back({"service", {100, 20000}, {117, 23048}});
    return result;
}

std::string reported(const Soak::Result& result, bool isGood) {
    std::ostringstream text;
    EXPECT_EQ(soak::report(result, text), isGood);
    return text.str();
}

TEST(AReport, IsGoodWhereNothingWasFound) {
    EXPECT_NE(reported(goodResult(), true).find("findings: 0\n"), std::string::npos);
}

TEST(AReport, IsBadWhereAProcessHasGrown) {
    for (const Growth& growth : {Growth{"service", {100, 20000}, {118, 20000}},
                                 Growth{"service", {100, 20000}, {100, 23049}}}) {
        Soak::Result result = goodResult();
        result.growth = {growth};
        EXPECT_NE(reported(result, false).find("service holds more than at first"),
                  std::string::npos);
    }
}

TEST(AReport, IsBadWhereAProcessEndedByItself) {
    Soak::Result result = goodResult();
    result.findings = {"service, life 3 ended by itself with status 139"};
    EXPECT_NE(reported(result, false).find("status 139"), std::string::npos);
}

TEST(AReport, IsBadWhereAnUtteranceWasLostTrackOf) {
    Soak::Result result = goodResult();
    result.account = accountOf("said 1 1\ncalled say 0\nleft\n");
    EXPECT_NE(reported(result, false).find("has no outcome"), std::string::npos);
}

TEST(AReport, IsBadWhereACommandNeverSucceeds) {
    Soak::Result result = goodResult();
    result.account.exits["set"] = {0, 19};
    (void)reported(result, true);
    result.account.exits["set"] = {0, 20};
    EXPECT_NE(reported(result, false).find("the command set has never succeeded"),
              std::string::npos);
}

TEST(AReport, IsBadWhereNothingHappened) {
    (void)reported(Soak::Result(), false);
}

}  // namespace
