// SPDX-License-Identifier: Apache-2.0
#include "tools/Doctor.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>

using namespace voxtrelctl;
using voxtrel::LockState;
using voxtrel::Reach;

namespace {

Symptoms healthy() {
    Symptoms symptoms;
    symptoms.way = {Reach::Connected, "socket", "/run/voxtrel/binder"};
    symptoms.way.manager.process = 12;
    symptoms.way.service = {123, 54321U, false};
    symptoms.hasSoundCard = true;
    symptoms.enabled = true;
    symptoms.sendsEvents = true;
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
    for (const Finding& finding : findingsOf(symptoms)) {
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
    EXPECT_GE(findingsOf(healthy()).size(), 8U);
}

Symptoms overDriver(Reach reach, int error) {
    Symptoms symptoms = healthy();
    symptoms.way.reach = reach;
    symptoms.way.transport = "driver";
    symptoms.way.path = "/dev/binder";
    symptoms.way.error = error;
    return symptoms;
}

TEST(TheWayOverTheDriver, IsNamedWithItsDevice) {
    const std::vector<Finding> findings = findingsOf(overDriver(Reach::Connected, 0));
    const auto manager = [](const Finding& one) { return one.subject == "service manager"; };
    const auto found = std::find_if(findings.begin(), findings.end(), manager);
    ASSERT_NE(found, findings.end());
    EXPECT_EQ(found->seen, "running, /dev/binder, driver, process 12");
}

TEST(TheWayOverTheDriver, EndsWhereNoManagerAnswersOrThereIsNoDriver) {
    EXPECT_EQ(complaint(overDriver(Reach::NoManager, 0)).seen,
              "no service manager answers at /dev/binder");
    EXPECT_EQ(complaint(overDriver(Reach::NoManager, ENOENT)).remedy,
              "load it with: modprobe binder_linux devices=binder");
    EXPECT_EQ(complaint(overDriver(Reach::ManagerNotPermitted, EACCES)).remedy,
              "let this user read and write /dev/binder");
}

TEST(AServiceThatIsAbsent, IsToBeStartedAndNotToBeAskedAboutHereOnceMore) {
    Symptoms symptoms = healthy();
    symptoms.way.reach = Reach::NoService;
    EXPECT_EQ(complaint(symptoms).seen, "absent");
    EXPECT_EQ(complaint(symptoms).remedy.find("doctor"), std::string::npos);
}

struct ReachCase {
    Reach reach;
    const char* subject;
    int code;
};

TEST(AServiceOutOfReach, IsTheOnlyComplaint) {
    constexpr ReachCase kCases[] = {
        {Reach::NoManager, "service manager", -8},
        {Reach::NoService, "service", -8},
        {Reach::NotTrusted, "owner", -10},
        {Reach::ServiceSilent, "answer", -5},
        {Reach::Loading, "voices", -5},
        {Reach::NotAdmitted, "permission", -10},
    };
    size_t known = 1;
    for (const ReachCase& example : kCases) {
        Symptoms symptoms = healthy();
        symptoms.way.reach = example.reach;
        symptoms.enabled = false;  // not asked, so not to be told
        const Finding finding = complaint(symptoms);
        EXPECT_EQ(finding.subject, example.subject);
        EXPECT_EQ(finding.verdict, Verdict::Bad);
        EXPECT_EQ(finding.code, example.code);
        EXPECT_EQ(findingsOf(symptoms).size(), ++known) << "what was reached before has its line";
    }
}

TEST(AServiceManagerOutOfReach, IsToldWithThePathAndTheReason) {
    Symptoms symptoms = healthy();
    symptoms.way.reach = Reach::NoManager;
    symptoms.way.error = ECONNREFUSED;
    EXPECT_EQ(complaint(symptoms).seen,
              "there is no service manager at /run/voxtrel/binder (Connection refused)");
    symptoms.way.reach = Reach::ManagerNotPermitted;
    symptoms.way.error = EACCES;
    EXPECT_EQ(complaint(symptoms).code, -10);
    EXPECT_EQ(complaint(symptoms).seen,
              "this user may not open the service manager's socket at /run/voxtrel/binder "
              "(Permission denied)");
    symptoms.way.reach = Reach::ManagerSilent;
    symptoms.way.manager.isStopped = true;
    EXPECT_EQ(complaint(symptoms).seen,
              "the service manager does not answer (process 12 is stopped)");
    EXPECT_EQ(complaint(symptoms).remedy, "continue it with: kill -CONT 12");
}

TEST(TheWayToTheService, IsTold) {
    const std::vector<Finding> findings = findingsOf(healthy());
    EXPECT_EQ(findings[0].seen, "running, /run/voxtrel/binder, socket, process 12");
    EXPECT_EQ(findings[1].seen, "registered, process 123");
    EXPECT_EQ(findings[2].subject, "owner");
    EXPECT_EQ(findings[2].seen, "user 54321");
}

TEST(TheOwnerOfTheService, IsNamedWhereItIsKnown) {
    Symptoms symptoms = healthy();
    symptoms.way.reach = Reach::NotTrusted;
    EXPECT_EQ(complaint(symptoms).seen.rfind("the service is that of user 54321, who", 0), 0U);
    symptoms = healthy();
    symptoms.way.service.user.reset();
    EXPECT_EQ(findingsOf(symptoms).size(), findingsOf(healthy()).size() - 1);
}

TEST(WhatIsSwitchedOff, IsListed) {
    Symptoms symptoms = healthy();
    symptoms.settings.push_back({"pitch", Value(200.0F), false, "0 to 400"});
    EXPECT_EQ(complaint(symptoms).subject, "pitch");
    EXPECT_EQ(complaint(symptoms).verdict, Verdict::Perhaps);
    EXPECT_EQ(complaint(symptoms).remedy, "switch it on with: voxtrelctl enable pitch");
}

TEST(DisabledSpeech, IsACause) {
    Symptoms symptoms = healthy();
    symptoms.enabled = false;
    EXPECT_EQ(complaint(symptoms).code, -1);
    EXPECT_NE(complaint(symptoms).remedy.find("voxtrelctl enable speech"), std::string::npos);
}

TEST(ALockedService, IsACause) {
    Symptoms symptoms = healthy();
    symptoms.lock = LockState::HeldByAnother;
    EXPECT_EQ(complaint(symptoms).code, -7);
}

TEST(WhatAServiceDoesNotTell, IsPerhapsACause) {
    Symptoms symptoms = healthy();
    symptoms.lock = LockState::Unknown;
    EXPECT_EQ(complaint(symptoms).subject, "lock");
    EXPECT_EQ(complaint(symptoms).verdict, Verdict::Perhaps);
    symptoms = healthy();
    symptoms.sendsEvents = false;
    EXPECT_EQ(complaint(symptoms).subject, "events");
    EXPECT_EQ(complaint(symptoms).verdict, Verdict::Perhaps);
    symptoms = healthy();
    symptoms.languages[0].isGlobal = false;
    EXPECT_EQ(complaint(symptoms).subject, "language");
    EXPECT_EQ(complaint(symptoms).verdict, Verdict::Perhaps);
}

TEST(AServiceThatTakesAnyPause, IsPerhapsACause) {
    Symptoms symptoms = healthy();
    symptoms.way.takesAnyPause = true;
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
    symptoms.lock = LockState::HeldByAnother;
    symptoms.hasSoundCard = false;
    symptoms.languages[0].filtered = true;
    EXPECT_EQ(complaints(symptoms).size(), 4U);
}

}  // namespace
