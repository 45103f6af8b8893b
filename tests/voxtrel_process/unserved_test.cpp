// SPDX-License-Identifier: Apache-2.0
// A service that does not know some of the requests.
#include <gtest/gtest.h>

#include "tests/voxtrel_process/Machine.h"
#include "voxtrel/Client.h"

using namespace voxtrel_test;
using voxtrel::Client;
using voxtrel::GlobalSettings;
using voxtrel::LockState;
using voxtrel::Result;
using voxtrel::Status;
using voxtrel::Switch;

namespace {

class AServiceThatDoesNotKnowARequest : public ::testing::Test {
protected:
    /// @param code of the request, as it travels.
    void start(const std::string& code) {
        machine.startOther({VOXTREL_MUTE_SERVICE, "ready", code});
    }

    Machine machine;
    Client client;
};

TEST_F(AServiceThatDoesNotKnowARequest, TellsTheOtherSettings) {
    start("20");
    const Result<GlobalSettings> rest = client.settings();
    ASSERT_TRUE(rest) << rest.error().message;
    EXPECT_FALSE(rest->rate);
    EXPECT_TRUE(rest->verbosity);
    EXPECT_TRUE(rest->speed);
}

TEST_F(AServiceThatDoesNotKnowARequest, TellsNoSettingByAZero) {
    start("21");
    const Result<GlobalSettings> rest = client.settings();
    ASSERT_TRUE(rest) << rest.error().message;
    EXPECT_FALSE(rest->speed);
    EXPECT_FALSE(rest->pitch);
    EXPECT_FALSE(rest->language);
    EXPECT_TRUE(rest->rate);
}

TEST_F(AServiceThatDoesNotKnowARequest, IsGivenAVoiceThoughItsLanguageIsNotKnown) {
    start("21");
    GlobalSettings wanted;
    wanted.voice = 1;
    EXPECT_TRUE(client.change(wanted));
}

TEST_F(AServiceThatDoesNotKnowARequest, DoesNotTellOfTheLock) {
    start("5");
    const Result<LockState> state = client.lockState();
    ASSERT_TRUE(state) << state.error().message;
    EXPECT_EQ(LockState::Unknown, *state);
    EXPECT_EQ(Status::NotSupported, client.turn(Switch::Speed, true).status());
}

TEST_F(AServiceThatDoesNotKnowARequest, DoesNotHaveWhatItWouldChangeOrTell) {
    start("12");
    GlobalSettings wanted;
    wanted.pitch = 120.0F;
    EXPECT_EQ(Status::NotSupported, client.change(wanted).status());
}

TEST_F(AServiceThatDoesNotKnowARequest, DoesNotTellOfASwitch) {
    start("14");
    EXPECT_EQ(Status::NotSupported, client.isOn(Switch::Speed).status());
}

}  // namespace
