// SPDX-License-Identifier: Apache-2.0
#include "tools/Errors.h"

#include <gtest/gtest.h>

#include <set>

using namespace voxtrelctl;

namespace {

constexpr int kNamed[] = {-1, -3, -5, -6, -7, -8, -9, -10, -11, -12, -13, -14};

TEST(AnErrorLine, NamesCodeMeaningAndNextStep) {
    EXPECT_EQ(errorLine(-8),
              "-8 service not found: is voxtreld running? start it with: voxtreld "
              "(voxtrelctl doctor looks further)");
}

TEST(AnErrorLine, PutsTheDetailBetweenMeaningAndNextStep) {
    EXPECT_EQ(errorLine(-1, "say"),
              "-1 speech is disabled: say: switch it on with: voxtrelctl enable speech");
}

TEST(AnErrorLine, StaysOneLineWhateverTheDetailHolds) {
    EXPECT_EQ(errorLine(-3, "a\nb\r\nc").find_first_of("\r\n"), std::string::npos);
}

TEST(EveryNamedCode, HasAMeaningAndARemedyOfItsOwn) {
    std::set<std::string> meanings;
    for (const int code : kNamed) {
        const StatusMeaning entry = meaningOf(code);
        EXPECT_EQ(entry.code, code);
        EXPECT_STRNE(entry.remedy, "");
        EXPECT_TRUE(meanings.insert(entry.meaning).second) << code;
    }
}

TEST(AnUnknownCode, IsShownAsItIs) {
    EXPECT_EQ(meaningOf(-77).code, -77);
    EXPECT_EQ(errorLine(-77).rfind("-77 the service answered with a status of its own: ", 0), 0U);
}

TEST(AFailure, CarriesItsCodeAndItsLine) {
    const Failure failure(-7, "lock");
    EXPECT_EQ(failure.code(), -7);
    EXPECT_EQ(failure.what(), errorLine(-7, "lock"));
}

TEST(AFailure, TakesABetterNextStepThanTheTables) {
    EXPECT_STREQ(Failure(-3, "no such file", "name another").what(),
                 "-3 bad parameter: no such file: name another");
}

TEST(AFailure, NeedsNoNextStepBehindADetailThatHasOne) {
    EXPECT_STREQ(Failure(-7, "process 7 has it: wait", "").what(),
                 "-7 the service is locked by another client: process 7 has it: wait");
}

TEST(CheckingAStatus, ThrowsForEverythingButZero) {
    EXPECT_NO_THROW(check(0, "x"));
    EXPECT_THROW(check(-5, "x"), Failure);
    EXPECT_THROW(check(1, "x"), Failure);
    EXPECT_NO_THROW(check(voxtrel::Error()));
    EXPECT_THROW(check(voxtrel::Error{voxtrel::Status::ProfileError, "x"}), Failure);
}

TEST(AnErrorLine, CannotSteerTheTerminal) {
    const std::string line = errorLine(TTS::STATUS_BAD_PARAMETER, "x\x1b[31m\ny");
    EXPECT_NE(line.find("x [31m y: "), std::string::npos) << line;
}

}  // namespace
