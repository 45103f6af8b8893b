// SPDX-License-Identifier: Apache-2.0
// What the command line says when the service never gets what it was sent.
#include <gtest/gtest.h>

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <thread>

#include "tests/support/Eventually.h"
#include "tests/voxtrelctl/Device.h"
#include "tests/voxtrelctl/ForeignService.h"

using namespace voxtrel_test;

namespace {

constexpr size_t kPiece = 1024;

constexpr const char* kLost =
    "voxtrelctl: -102 lost on its way, or the service does not tell of it: try again; see the "
    "service's own log, and docs/writing-a-service.md for what it must tell\n";

/// So many texts of a piece each.
std::string textOf(size_t pieces) {
    std::string text;
    for (size_t n = 0; n < pieces; ++n) {
        text += "It rains." + std::string(kPiece - 9, ' ');
    }
    return text;
}

class ALostRequest : public ::testing::Test {
protected:
    Device device;
    android::sp<ForeignService> service = ForeignService::registered();
};

TEST_F(ALostRequest, EndsWhoWaitsForIt) {
    service->lose(1);
    const auto words = device.start({"say", "--wait", "Hello."});
    const auto json = device.start({"say", "--json", "Hello."});
    const auto pause = device.start({"silence", "--wait", "20"});
    for (const auto& each : {words.get(), json.get(), pause.get()}) {
        const Outcome outcome = each->finish();
        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.out, "");
        EXPECT_EQ(outcome.err, kLost);
    }
}

TEST_F(ALostRequest, IsNoticedAtOnceWhenALaterOneIsSpoken) {
    service->lose(2);
    const Outcome outcome = device.ctl({"say", "--wait"}, textOf(40));
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, kLost);
    EXPECT_EQ(outcome.out, "started 1\n");
    EXPECT_FALSE(service->wasCalled("silence")) << "nothing had to be asked";
    EXPECT_TRUE(service->wasCalled("stopAndFlush")) << "the rest would be spoken all the same";
}

TEST_F(ALostRequest, IsNoticedWithoutWaitWhenALaterOneIsSpokenMeanwhile) {
    service->lose(2);
    const Outcome outcome = device.ctl({"say"}, textOf(70));
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, kLost);
}

TEST_F(ALostRequest, IsNoticedWhileTheServiceTellsOfOtherThings) {
    service->lose(1);
    std::atomic<bool> done{false};
    std::thread changes([&] {
        while (!done) {
            service->tellState();
            std::this_thread::sleep_for(std::chrono::milliseconds(500));
        }
    });
    const Outcome outcome = device.ctl({"say", "--wait", "Hello."});
    done = true;
    changes.join();
    EXPECT_EQ(outcome.err, kLost);
}

TEST_F(ALostRequest, IsNotTakenForOneThatIsStillSpoken) {
    service->neverEnd(1);
    const auto speaker = device.start({"say", "--wait", "Hello."});
    const auto isAskedTwice = [&] {
        size_t fences = 0;
        for (const std::string& call : service->calls()) {
            fences += call.find(", 4294967295, ") != std::string::npos ? 1 : 0;
        }
        return fences >= 2;
    };
    EXPECT_TRUE(eventually(isAskedTwice));
    speaker->kill(SIGINT);
    const Outcome outcome = speaker->finish();
    EXPECT_EQ(outcome.out, "started 1\nstopped 1 (flushed)\n");
    EXPECT_EQ(outcome.err, "voxtrelctl: interrupted\n");
}

TEST_F(ALostRequest, IsNotSaidOfOneWhoseEndIsNotTold) {
    service->hideEndOf(1);
    const Outcome outcome = device.ctl({"say", "--wait", "Hello."});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "started 1\n");
    EXPECT_EQ(outcome.err, kLost);
}

/// A service in the manners of a driver, a kilobyte of whose budget is left: a long request does
/// not reach it, a short one does.
class AFloodedService : public ::testing::Test {
protected:
    AFloodedService() {
        device.startOther({VOXTREL_BLOCKED_SERVICE});
        flooder = std::make_unique<ChildProcess>(
            ChildProcess::Words{VOXTREL_FLOODER, "test.blocked"}, "");
        EXPECT_TRUE(flooder->awaitOutput("flooded\n")) << flooder->output();
    }

    static std::string longSentence() { return "It" + std::string(1010, 'n') + "rains. "; }

    // For the processes that are started here. A seed that is given is not logged.
    const int manners = setenv("VOXTREL_BINDER_MANNERS", "driver", 1);
    const int seed = setenv("VOXTREL_BINDER_SEED", "7", 1);
    Device device;
    std::unique_ptr<ChildProcess> flooder;
};

TEST_F(AFloodedService, DoesNotLetWhoWaitsForASentenceWaitForEver) {
    const Outcome outcome = device.ctl({"say", "--wait"}, "Hello. " + longSentence());
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, kLost);
    EXPECT_EQ(outcome.out, "started 1\n") << "its first sentence goes alone";
}

TEST_F(AFloodedService, IsNotSaidToHaveSpokenWhatItNeverGot) {
    const Outcome outcome =
        device.ctl({"say", "--wait"}, "Hello. " + longSentence() + "So take an umbrella along.");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, kLost);
    EXPECT_EQ(outcome.out.find("finished"), std::string::npos) << outcome.out;
}

}  // namespace
