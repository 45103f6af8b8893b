// SPDX-License-Identifier: Apache-2.0
#include "tools/Render.h"

#include <gtest/gtest.h>

using namespace voxtrelctl;

namespace {

TEST(ATable, StandsInColumnsWithoutBlanksAtTheEnd) {
    EXPECT_EQ(settingsTable({{"speed", Value(uint32_t{300}), true, "80 to 900"},
                             {"language", Value(std::string("en_US")), {}, ""},
                             {"pitch", Value(1.5F), false, "0 to 400"}}),
              "speed     300    enabled   80 to 900\n"
              "language  en_US\n"
              "pitch     1.5    disabled  0 to 400\n");
}

TEST(AnEmptyTable, IsNothing) {
    EXPECT_EQ(voicesTable({}), "");
}

TEST(Languages, ShowWhyTheyCannotBeUsed) {
    EXPECT_EQ(languagesTable({{"en_US", 3, true, false, true},
                              {"fr_FR", 1, true, true, false},
                              {"es_ES", 0, false, false, false},
                              {"ko_KR", 2, true, false, false}}),
              "en_US  3 voices  the service's language\n"
              "fr_FR  1 voice   taken away by the device's filter\n"
              "es_ES  0 voices  not spoken by the service\n"
              "ko_KR  2 voices\n");
}

TEST(Voices, AreListedByNumber) {
    EXPECT_EQ(voicesTable({{"en_US", 1, "Anne", true}, {"en_US", 12, "Bob", false}}),
              "en_US  1   Anne\n"
              "en_US  12  Bob   taken away by the device's filter\n");
}

TEST(TheStatus, SaysWhoHasTheLock) {
    StatusReport report;
    report.lock = voxtrel::LockState::HeldByAnother;
    EXPECT_NE(statusPage(report).find("lock     held by another client\n"), std::string::npos);
    report.lock = voxtrel::LockState::Free;
    EXPECT_NE(statusPage(report).find("lock     free\n"), std::string::npos);
}

TEST(AProfile, IsPrintedAsItsFileSpellsIt) {
    EXPECT_EQ(profileText({{"speed", Value(uint32_t{300})}, {"lang", Value(std::string("en_US"))}}),
              "speed=300\nlang=en_US\n");
}

TEST(Findings, AreMarkedByTheirVerdict) {
    EXPECT_EQ(findingsPage({{"service", Verdict::Bad, "absent", "start it", -8},
                            {"lock", Verdict::Good, "free", "", 0},
                            {"sound card", Verdict::Perhaps, "none", "write", 0}}),
              "!!  service     absent; start it\n"
              "ok  lock        free\n"
              "??  sound card  none; write\n");
}

}  // namespace
