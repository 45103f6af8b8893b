// SPDX-License-Identifier: Apache-2.0
#include "tools/Doctor.h"

#include <gtest/gtest.h>

using namespace voxtrelctl;

namespace {

Symptoms healthy() {
    Symptoms symptoms;
    symptoms.reach = Reach::Connected;
    symptoms.owner = "user anna (1001)";
    symptoms.hasSoundCard = true;
    symptoms.enabled = true;
    symptoms.events.sendsEvents = true;
    symptoms.lock = LockState::Free;
    symptoms.settings = {{"volume", Value(100.0F), true, "0 to 100"},
                         {"tts-volume", Value(uint32_t{100}), true, "0 to 100"},
                         {"bg-volume", Value(uint32_t{0}), true, "0 to 100"}};
    symptoms.languages = {{"en_US", 3, true, false, true}, {"fr_FR", 2, true, false, false}};
    return symptoms;
}

/// Those that are not good.
std::vector<Finding> complaints(const Symptoms& symptoms) {
    std::vector<Finding> bad;
    for (const Finding& finding : diagnose(symptoms)) {
        if (finding.verdict != Verdict::Good) {
            EXPECT_NE(finding.remedy, "") << finding.subject;
            bad.push_back(finding);
        } else {
            EXPECT_EQ(finding.remedy, "") << finding.subject;
        }
    }
    return bad;
}

/// The one complaint there is.
Finding complaint(const Symptoms& symptoms) {
    const std::vector<Finding> all = complaints(symptoms);
    EXPECT_EQ(all.size(), 1U);
    return all.empty() ? Finding() : all.front();
}

TEST(AHealthyService, LeavesNothingToComplainAbout) {
    EXPECT_TRUE(complaints(healthy()).empty());
    EXPECT_GE(diagnose(healthy()).size(), 8U);
}

struct ReachCase {
    Reach reach;
    const char* subject;
    int code;
};

TEST(AServiceOutOfReach, IsTheOnlyComplaint) {
    constexpr ReachCase kCases[] = {
        {Reach::NoServiceManager, "service manager", -8},
        {Reach::NoService, "service", -8},
        {Reach::NotTrusted, "owner", -10},
        {Reach::NoAnswer, "answer", -5},
        {Reach::NotReady, "voices", -5},
        {Reach::NotPermitted, "permission", -10},
    };
    size_t known = 1;
    for (const ReachCase& example : kCases) {
        Symptoms symptoms = healthy();
        symptoms.reach = example.reach;
        symptoms.enabled = false;  // not asked, so not to be told
        const Finding finding = complaint(symptoms);
        EXPECT_EQ(finding.subject, example.subject);
        EXPECT_EQ(finding.verdict, Verdict::Bad);
        EXPECT_EQ(finding.code, example.code);
        EXPECT_EQ(diagnose(symptoms).size(), ++known) << "what was reached before has its line";
    }
}

TEST(TheOwnerOfTheService, IsNamedWhereItIsKnown) {
    Symptoms symptoms = healthy();
    EXPECT_EQ(diagnose(symptoms)[2].seen, "user anna (1001)");
    symptoms.reach = Reach::NotTrusted;
    EXPECT_EQ(complaint(symptoms).seen, "not trusted: user anna (1001)");
    symptoms = healthy();
    symptoms.owner = "";
    EXPECT_EQ(diagnose(symptoms).size(), diagnose(healthy()).size() - 1);
}

TEST(DisabledSpeech, IsACause) {
    Symptoms symptoms = healthy();
    symptoms.enabled = false;
    EXPECT_EQ(complaint(symptoms).code, -1);
    EXPECT_NE(complaint(symptoms).remedy.find("voxtrelctl enable speech"), std::string::npos);
}

TEST(ALockedService, IsACause) {
    Symptoms symptoms = healthy();
    symptoms.lock = LockState::OfAnother;
    EXPECT_EQ(complaint(symptoms).code, -7);
}

TEST(WhatAServiceDoesNotTell, IsPerhapsACause) {
    Symptoms symptoms = healthy();
    symptoms.lock = LockState::Unknown;
    EXPECT_EQ(complaint(symptoms).subject, "lock");
    EXPECT_EQ(complaint(symptoms).verdict, Verdict::Perhaps);
    symptoms = healthy();
    symptoms.events.sendsEvents = false;
    EXPECT_EQ(complaint(symptoms).subject, "events");
    EXPECT_EQ(complaint(symptoms).verdict, Verdict::Perhaps);
    symptoms = healthy();
    symptoms.languages[0].isGlobal = false;
    EXPECT_EQ(complaint(symptoms).subject, "language");
    EXPECT_EQ(complaint(symptoms).verdict, Verdict::Perhaps);
}

TEST(AServiceThatTakesAnyPause, IsPerhapsACause) {
    Symptoms symptoms = healthy();
    symptoms.events.takesAnyPause = true;
    EXPECT_EQ(complaint(symptoms).subject, "events");
    EXPECT_EQ(complaint(symptoms).verdict, Verdict::Perhaps);
    EXPECT_NE(complaint(symptoms).seen.find("49 days"), std::string::npos);
}

TEST(AFilteredLanguage, IsACauseWhenItIsTheServices) {
    Symptoms symptoms = healthy();
    symptoms.languages[0].filtered = true;
    EXPECT_EQ(complaint(symptoms).verdict, Verdict::Bad);
    EXPECT_EQ(complaint(symptoms).code, -9);
    EXPECT_EQ(complaint(symptoms).seen, "en_US is taken away by the device's filter");
}

TEST(AFilteredLanguage, IsPerhapsACauseWhenItIsAnother) {
    Symptoms symptoms = healthy();
    symptoms.languages[1].filtered = true;
    EXPECT_EQ(complaint(symptoms).verdict, Verdict::Perhaps);
}

TEST(ALanguageWithoutData, IsACause) {
    Symptoms symptoms = healthy();
    symptoms.languages[0].spoken = false;
    EXPECT_EQ(complaint(symptoms).seen, "the service does not speak en_US");
}

TEST(AVolumeOfZero, IsACause) {
    Symptoms symptoms = healthy();
    symptoms.settings[0].value = 0.0F;
    EXPECT_EQ(complaint(symptoms).subject, "volume");
    EXPECT_NE(complaint(symptoms).remedy.find("voxtrelctl set volume 100"), std::string::npos);
    symptoms = healthy();
    symptoms.settings[1].value = uint32_t{0};
    EXPECT_EQ(complaint(symptoms).subject, "tts-volume");
}

TEST(AMissingSoundCard, IsPerhapsACause) {
    Symptoms symptoms = healthy();
    symptoms.hasSoundCard = false;
    EXPECT_EQ(complaint(symptoms).verdict, Verdict::Perhaps);
    EXPECT_EQ(complaint(symptoms).subject, "sound card");
}

TEST(SeveralCauses, HaveALineEach) {
    Symptoms symptoms = healthy();
    symptoms.enabled = false;
    symptoms.lock = LockState::OfAnother;
    symptoms.hasSoundCard = false;
    symptoms.languages[0].filtered = true;
    EXPECT_EQ(complaints(symptoms).size(), 4U);
}

}  // namespace
