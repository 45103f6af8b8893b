// SPDX-License-Identifier: Apache-2.0
#include <regex>
#include <set>

#include "tests/voxtrel/c/InC.h"

namespace {

using voxtrel_test::AClientInC;
using voxtrel_test::InC;
using voxtrel_test::readFile;

/// The functions that a header declares.
std::set<std::string> functionsOf(const std::string& header) {
    const std::string text = readFile(std::string(VOXTREL_SOURCE_DIR "/voxtrel/") + header);
    static const std::regex declaration(R"(\nvx_status (vx_\w+)\()");
    std::set<std::string> names;
    for (std::sregex_iterator it(text.begin(), text.end(), declaration), end; it != end; ++it) {
        names.insert((*it)[1]);
    }
    return names;
}

TEST(TheFunctionsInC, AreAllTriedWithANullHandle) {
    const std::string tried = readFile(VOXTREL_SOURCE_DIR "/tests/voxtrel/c/nulls.c");
    for (const char* header : {"voxtrel.h", "testing/fake.h"}) {
        const std::set<std::string> names = functionsOf(header);
        EXPECT_GT(names.size(), 20U);
        for (const std::string& name : names) {
            EXPECT_NE(std::string::npos, tried.find("REFUSES(" + name + "(")) << name;
        }
    }
}

TEST_F(InC, NullHandlesAreBadParameters) {
    EXPECT_STREQ(nullptr, null_handles_are_bad_parameters());
}

TEST_F(InC, OptionsKeepWhatIsSet) {
    EXPECT_STREQ(nullptr, options_keep_what_is_set());
}

TEST_F(InC, SettingsKeepWhatIsSet) {
    EXPECT_STREQ(nullptr, settings_keep_what_is_set());
}

TEST_F(AClientInC, RefusesNullPointers) {
    EXPECT_STREQ(nullptr, null_pointers_are_bad_parameters(mClient, mUtterance));
}

TEST_F(AClientInC, RefusesWrongValues) {
    EXPECT_STREQ(nullptr, wrong_values_are_bad_parameters(mClient, mUtterance));
}

TEST_F(AClientInC, TellsInWordsWhyACallFailed) {
    EXPECT_STREQ(nullptr, failures_are_told_in_words(mClient));
}

TEST_F(AClientInC, CopiesItsDefaults) {
    EXPECT_STREQ(nullptr, defaults_are_copies(mClient));
}

TEST_F(AClientInC, FailsItsRequestsWhereThereIsNoService) {
    EXPECT_STREQ(nullptr, requests_fail_without_a_service(mClient));
}

TEST_F(InC, UtterancesTellWhatBecameOfThem) {
    EXPECT_STREQ(nullptr, utterances_tell_what_became_of_them());
}

TEST_F(InC, TheServiceIsAskedWhatItCanDo) {
    EXPECT_STREQ(nullptr, service_is_asked_what_it_can_do());
}

TEST_F(InC, SettingsOfTheServiceChange) {
    EXPECT_STREQ(nullptr, settings_of_the_service_change());
}

TEST_F(InC, ALockIsHeldUntilItIsFreed) {
    EXPECT_STREQ(nullptr, lock_is_held_until_it_is_freed());
}

TEST(ThatWhatIsSaid, IsInTheHandsOfTheServiceIsWaitedFor) {
    EXPECT_STREQ(nullptr, what_is_said_is_in_the_hands_of_the_service());
}

TEST_F(InC, TheFakeServiceDoesWhatItIsTold) {
    EXPECT_STREQ(nullptr, fake_service_does_what_it_is_told());
}

TEST_F(InC, EventsComeOneByOne) {
    EXPECT_STREQ(nullptr, events_come_one_by_one());
}

TEST_F(InC, ALoopPollsAndTakesEvents) {
    EXPECT_STREQ(nullptr, loop_polls_and_takes());
}

TEST_F(InC, AHandlerHasItsUserPointer) {
    EXPECT_STREQ(nullptr, handler_has_its_user_pointer());
}

TEST_F(InC, AHandlerOfTheApplicationsThreadRunsInDispatch) {
    EXPECT_STREQ(nullptr, handler_runs_in_dispatch());
}

TEST_F(InC, AHandlerMayFreeItsClient) {
    EXPECT_STREQ(nullptr, handler_may_free_its_client());
}

TEST_F(InC, AHandlerMayFreeItsClientInDispatch) {
    EXPECT_STREQ(nullptr, dispatched_handler_may_free_its_client());
}

TEST_F(InC, AHandlerThatWasTakenAwayIsNotCalled) {
    EXPECT_STREQ(nullptr, no_handler_is_called_any_more());
}

}  // namespace
