// SPDX-License-Identifier: Apache-2.0
#include "service/RefusalLog.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/service/ServiceFixture.h"
#include "vocabulary/Status.h"

using namespace TTS;

namespace voxtreld {
namespace {

using Time = RefusalLog::Time;

class ARefusal : public testing::Test {
protected:
    /// Refused a second after the one before, so that the number of lines is no matter.
    void refuse(uint32_t pid, const char* operation, int status) {
        mNow += std::chrono::seconds(1);
        log.refused(pid, operation, status, "line", mNow);
    }

    std::vector<LogLevel> lines;
    RefusalLog log{[this](LogLevel level, const std::string& /*line*/) { lines.push_back(level); }};

private:
    Time mNow{std::chrono::hours(1)};
};

TEST_F(ARefusal, OfTheSameKindIsLoggedOnce) {
    for (int i = 0; i < 1000; ++i) {
        refuse(7, "say", STATUS_PERMISSION_DENIED);
    }
    EXPECT_EQ(1U, lines.size());
}

TEST_F(ARefusal, OfAnotherKindIsLoggedToo) {
    refuse(7, "say", STATUS_PERMISSION_DENIED);
    refuse(8, "say", STATUS_PERMISSION_DENIED);
    refuse(7, "lock", STATUS_PERMISSION_DENIED);
    refuse(7, "say", STATUS_QUEUE_FULL);
    EXPECT_EQ(4U, lines.size());
}

TEST_F(ARefusal, IsAWarningWhenTheUserOrTheQueueIsTheReason) {
    for (const int status : {STATUS_PERMISSION_DENIED, STATUS_QUEUE_FULL, STATUS_BAD_PARAMETER,
                             STATUS_LOCKED, STATUS_DISABLED, STATUS_NOT_SUPPORTED}) {
        refuse(7, "say", status);
    }
    EXPECT_EQ((std::vector<LogLevel>{LogLevel::Warning, LogLevel::Warning, LogLevel::Debug,
                                     LogLevel::Debug, LogLevel::Debug, LogLevel::Debug}),
              lines);
}

TEST_F(ARefusal, OfTheNextProcessOfThatNumberIsLogged) {
    refuse(7, "say", STATUS_PERMISSION_DENIED);
    log.forget(7);
    refuse(7, "say", STATUS_PERMISSION_DENIED);
    EXPECT_EQ(2U, lines.size());
}

TEST(AFloodOfRefusals, OfEverNewProcessesIsFiftyLinesASecond) {
    std::vector<std::string> lines;
    RefusalLog log([&](LogLevel /*level*/, const std::string& line) { lines.push_back(line); });
    const Time now{std::chrono::hours(1)};
    for (uint32_t pid = 1; pid <= 100'000; ++pid) {
        log.refused(pid, "say", STATUS_PERMISSION_DENIED, "line", now);
    }
    EXPECT_EQ(50U, lines.size());
    log.refused(100'001, "say", STATUS_PERMISSION_DENIED, "line", now + std::chrono::seconds(1));
    ASSERT_EQ(52U, lines.size());
    EXPECT_EQ("99950 more refusals were left out", lines[50]);
}

using TheServicesLog = ServiceFixture;

TEST_F(TheServicesLog, HasARefusalOfAClientOnce) {
    service->announceVoices(engine.voices());
    for (int i = 0; i < 10; ++i) {
        from(kBob);
        (void)service->say(kAnn, 1, "x", kUnset, 65535.0F, kUnset, kUnset, kUnset, 65535.0F,
                           LANG_NA);
        (void)service->silence(kBob, 1, 60'001, kUnset);
    }
    EXPECT_EQ((std::vector<std::string>{"say: process 202 gave the process id 101, refused"}), log);
    EXPECT_EQ((std::vector<std::string>{"silence: process 202 is refused with -3"}), details);
}

TEST_F(TheServicesLog, TellsOfClientsThatComeAndGo) {
    const auto callback = join(kAnn);
    EXPECT_EQ(0, service->deregisterCallback(kAnn));
    EXPECT_EQ(
        (std::vector<std::string>{"process 101 of user 1000 has come", "process 101 has left"}),
        details);
    EXPECT_TRUE(log.empty());
}

}  // namespace
}  // namespace voxtreld
