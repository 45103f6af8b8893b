// SPDX-License-Identifier: Apache-2.0
// The command line asks for a pause of 49 days, which a service must refuse. What becomes of it
// where the service takes it, and where it says nothing.
#include <gtest/gtest.h>

#include <csignal>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/Eventually.h"
#include "tests/voxtrelctl/Device.h"
#include "tests/voxtrelctl/ForeignService.h"

using namespace voxtrel_test;

namespace {

constexpr const char* kComplaint =
    "voxtrelctl: the service takes a pause of 49 days, which it must refuse at once "
    "(docs/writing-a-service.md); it was told to drop it again\n";

class AServiceThatTakesAnyPause : public ::testing::Test {
protected:
    AServiceThatTakesAnyPause() { service->takeAnyPause(); }

    Device device;
    android::sp<ForeignService> service = ForeignService::registered();
};

TEST_F(AServiceThatTakesAnyPause, IsNotLeftSilent) {
    for (const Device::Words& words : {Device::Words{"say", "Hello."}, {"silence", "20"}}) {
        const Outcome outcome = device.ctl(words);
        EXPECT_EQ(outcome.status, 0) << words.front();
        // What has ended before it was asked for needs no pause to prove it.
        EXPECT_TRUE(outcome.err.empty() || outcome.err == kComplaint) << outcome.err;
        EXPECT_FALSE(service->isBusy()) << words.front();
    }
}

TEST_F(AServiceThatTakesAnyPause, IsComplainedOfByWhoStopsSpeech) {
    const Outcome outcome = device.ctl({"stop"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, kComplaint);
    EXPECT_FALSE(service->isBusy());
}

TEST_F(AServiceThatTakesAnyPause, IsFoundByTheDoctor) {
    const Outcome doctor = device.ctl({"doctor"});
    EXPECT_NE(doctor.out.find("??  events           the service sends them, but takes a pause of "
                              "49 days and may be silent for as long; "),
              std::string::npos)
        << doctor.out;
    EXPECT_FALSE(service->isBusy());
}

TEST_F(AServiceThatTakesAnyPause, IsComplainedOfByTheMonitor) {
    const auto monitor = device.start({"monitor"});
    EXPECT_TRUE(monitor->awaitError(kComplaint));
    EXPECT_TRUE(eventually([&] { return !service->isBusy(); }));
    monitor->kill(SIGINT);
    const Outcome outcome = monitor->finish();
    EXPECT_EQ(outcome.out, "service connected\n");
    EXPECT_EQ(outcome.err, kComplaint);
}

TEST_F(AServiceThatTakesAnyPause, IsNotLeftSilentByWhoLeavesBeforeThePauseBegins) {
    service->neverEnd(1);
    const auto first = device.start({"say", "--wait", "Hello."});
    ASSERT_TRUE(first->awaitOutput("started 1\n"));
    const auto pause = device.start({"monitor"});
    EXPECT_TRUE(eventually([&] { return service->wasFenced(pause->pid()); }));
    pause->kill(SIGINT);
    EXPECT_EQ(pause->finish().status, 0);
    first->kill(SIGINT);
    EXPECT_EQ(first->finish().status, 1);
    EXPECT_FALSE(service->isBusy());
}

TEST_F(AServiceThatTakesAnyPause, DropsTheTextWithThePauseWhenItWouldComeTooLate) {
    service->neverEnd(1);
    const Outcome said = device.ctl({"say", "Hello."});
    EXPECT_EQ(said.status, 1);
    EXPECT_EQ(said.err,
              "voxtrelctl: 0 sent, not answered: the service takes a pause of 49 days instead of "
              "refusing it, so it is not known whether it has taken the text, and it was asked to "
              "drop what is left of it: see its own log; docs/writing-a-service.md says what it "
              "must send\n");
    EXPECT_FALSE(service->isBusy());
}

TEST_F(AServiceThatTakesAnyPause, IsNotLeftSilentByALongWait) {
    service->neverEnd(1);
    const auto speaker = device.start({"say", "--wait", "Hello."});
    EXPECT_TRUE(eventually([&] { return service->wasFenced(speaker->pid()); }));
    EXPECT_EQ(device.ctl({"stop"}).status, 0);
    EXPECT_EQ(speaker->finish().status, 0);
    EXPECT_FALSE(service->isBusy());
}

TEST_F(AServiceThatTakesAnyPause, LosesNoPartOfATextWithThePause) {
    service->neverEnd(1);
    std::string text;
    for (int n = 1; n <= 40; ++n) {
        text += "It rains." + std::string(1015, ' ');
    }
    const auto speaker = device.start({"say", "--wait", text});
    EXPECT_TRUE(eventually([&] { return service->wasFenced(speaker->pid()); }));
    service->goOn();
    const Outcome outcome = speaker->finish();
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, kComplaint);
    EXPECT_EQ(outcome.out, "started 1\nfinished 1\n");
    EXPECT_FALSE(service->isBusy());
}

class AMuteService : public ::testing::Test {
protected:
    AMuteService() {
        service->beMute();
        service->takeAnyPause();
    }

    Device device;
    android::sp<ForeignService> service = ForeignService::registered();
};

TEST_F(AMuteService, IsNotLeftSilent) {
    std::vector<std::unique_ptr<ChildProcess>> all;
    for (const Device::Words& words : {Device::Words{"say", "Hello."},
                                       {"say", "--wait", "Hello."},
                                       {"silence", "--wait", "20"},
                                       {"stop"},
                                       {"doctor"}}) {
        all.push_back(device.start(words));
    }
    const auto monitor = device.start({"monitor"});
    for (const auto& each : all) {
        (void)each->finish();
    }
    EXPECT_TRUE(monitor->awaitError("the service does not answer with an event"));
    EXPECT_TRUE(eventually([&] { return !service->isBusy(); }));
    monitor->kill(SIGINT);
    EXPECT_EQ(monitor->finish().status, 0);
}

TEST_F(AMuteService, IsAskedToDropWhatACommandAskedForThatIsInterrupted) {
    const auto speaker = device.start({"say", "Hello."});
    EXPECT_TRUE(eventually([&] { return service->wasFenced(speaker->pid()); }));
    speaker->kill(SIGINT);
    const Outcome outcome = speaker->finish();
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, "voxtrelctl: interrupted\n");
    EXPECT_FALSE(service->isBusy());
}

}  // namespace
