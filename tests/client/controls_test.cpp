// SPDX-License-Identifier: Apache-2.0
#include <limits>
#include <ostream>

#include "tests/client/ClientTest.h"

namespace {

using platform::logged;
using support::callLine;
using support::Lines;
using support::takeNotes;
using TTS::TTSClientPrivate;

struct Row {
    const char* name;
    int (*change)(TTSClientPrivate& client);
    uint32_t code;
    std::string trace;
    const char* request;
};

void PrintTo(const Row& row, std::ostream* out) {
    *out << row.name;
}

/// The operations that change the service under the lock rule and check nothing else.
const std::vector<Row>& rows() {
    static const std::vector<Row> all = {
        {"setEnable", [](TTSClientPrivate& c) { return c.setEnable(false); }, support::kSetEnable,
         logged(2, "[Client] %s() enable = %d\n", "[Client] setEnable() enable = 0\n"),
         "ask setEnable(pid, 0)"},
        {"setVerbosity", [](TTSClientPrivate& c) { return c.setVerbosity(2); },
         support::kSetVerbosity,
         logged(2, "[Client] %s(), verb=%d\n", "[Client] setVerbosity(), verb=2\n"),
         "ask setVerbosity(pid, 2)"},
        {"setGlobalRate", [](TTSClientPrivate& c) { return c.setGlobalRate(300); },
         support::kSetGlobalRate,
         logged(2, "[Client] %s(), rate=%d\n", "[Client] setGlobalRate(), rate=300\n"),
         "ask setGlobalRate(pid, 300)"},
        {"setEnable2", [](TTSClientPrivate& c) { return c.setEnable2(GCONF_PITCH_ENABLE, true); },
         support::kSetEnable,
         logged(2, "[Client] %s(), global config = %d enable = %d\n",
                "[Client] setEnable2(), global config = 5 enable = 1\n"),
         "ask setEnable2(pid, 5, 1)"},
        {"factoryReset", [](TTSClientPrivate& c) { return c.factoryReset("ignored"); },
         support::kFactoryReset, callLine("factoryReset"), "ask factoryReset(pid)"},
    };
    return all;
}

class AChange : public support::JoinedClientTest, public testing::WithParamInterface<Row> {};

TEST_P(AChange, IsForwardedWhenTheServiceIsNotLocked) {
    service.status[GetParam().code] = -66;
    EXPECT_EQ(-66, GetParam().change(client));
    EXPECT_EQ(Lines({GetParam().trace, "ask locked()", GetParam().request}), takeNotes());
}

TEST_P(AChange, ReturnsMinusSevenWhileAnotherClientHoldsTheLock) {
    service.locked = true;
    EXPECT_EQ(-7, GetParam().change(client));
    EXPECT_EQ(Lines({GetParam().trace, "ask locked()"}), takeNotes());
}

TEST_P(AChange, OfTheLockOwnerDoesNotAskForTheLock) {
    service.locked = true;
    client.mLockOwner = true;
    EXPECT_EQ(0, GetParam().change(client));
    EXPECT_EQ(Lines({GetParam().trace, GetParam().request}), takeNotes());
}

TEST_P(AChange, WorksWhileSpeechIsDisabled) {
    service.enabled = false;
    EXPECT_EQ(0, GetParam().change(client));
}

INSTANTIATE_TEST_SUITE_P(Each, AChange, testing::ValuesIn(rows()),
                         [](const auto& row) { return std::string(row.param.name); });

class TheGlobalRate : public support::JoinedClientTest {
protected:
    void expectAccepted(uint32_t rate) {
        EXPECT_EQ(0, client.setGlobalRate(rate));
        EXPECT_EQ("ask setGlobalRate(pid, " + std::to_string(rate) + ")", takeNotes().back());
    }
    /// Logged with `shown`, answered with success and not sent on.
    void expectRejected(uint32_t rate, const std::string& shown) {
        EXPECT_EQ(0, client.setGlobalRate(rate));
        EXPECT_EQ(Lines({logged(2, "[Client] %s(), rate=%d\n",
                                "[Client] setGlobalRate(), rate=" + shown + "\n"),
                         logged(1, "setGlobalRate: %d, bad parameter\n",
                                "setGlobalRate: " + shown + ", bad parameter\n")}),
                  takeNotes());
    }
};

TEST_F(TheGlobalRate, IsForwardedUpToBothEndsOfTheRange) {
    expectAccepted(100);
    expectAccepted(400);
}

TEST_F(TheGlobalRate, OutsideTheRangeIsLoggedAndReportedAsSuccess) {
    expectRejected(99, "99");
    expectRejected(401, "401");
    expectRejected(65535, "65535");
    expectRejected(4294967295U, "-1");
}

TEST_F(TheGlobalRate, IsComparedUnsigned) {
    client.mCapabilities.speedMax = 4294967295U;
    expectAccepted(2147483648U);
}

TEST_F(TheGlobalRate, IsRejectedWithoutASpeedControl) {
    client.mCapabilities.speedSupported = false;
    expectRejected(200, "200");
}

TEST_F(TheGlobalRate, IsJudgedBeforeTheLock) {
    service.locked = true;
    expectRejected(99, "99");
}

class AReadOperation : public support::JoinedClientTest {};

TEST_F(AReadOperation, OfTheEnableFlagGivesTheServicesAnswer) {
    EXPECT_TRUE(client.enabled());
    service.enabled = false;
    EXPECT_FALSE(client.enabled());
    EXPECT_EQ(Lines({"ask enabled()", "ask enabled()"}), takeNotes());
}

TEST_F(AReadOperation, OfTheVerbosityGivesTheServicesAnswer) {
    service.verbosity = -9;
    EXPECT_EQ(-9, client.verbosity());
    EXPECT_EQ(Lines{"ask verbosity()"}, takeNotes());
}

TEST_F(AReadOperation, OfTheRateGivesTheServicesAnswer) {
    service.rate = 250;
    EXPECT_EQ(250, client.globalRate());
    EXPECT_EQ(Lines{"ask globalRate()"}, takeNotes());
}

TEST_F(AReadOperation, OfTheLockGivesTheServicesAnswerUnlessTheLockIsOurs) {
    EXPECT_EQ(0, client.locked());
    service.locked = true;
    EXPECT_EQ(1, client.locked());
    EXPECT_EQ(Lines({"ask locked()", "ask locked()"}), takeNotes());

    client.mLockOwner = true;
    service.locked = false;
    EXPECT_EQ(1, client.locked());
    EXPECT_EQ(Lines{}, takeNotes());
}

class TheLock : public support::JoinedClientTest {};

TEST_F(TheLock, IsOursWhenTheServiceAnswersZeroOrOne) {
    for (const int answer : {0, 1}) {
        client.mLockOwner = false;
        service.status[support::kLock] = answer;
        EXPECT_EQ(answer, client.lock());
        EXPECT_TRUE(client.mLockOwner) << answer;
        EXPECT_EQ(Lines({callLine("lock"), "ask lock(pid)"}), takeNotes());
    }
}

TEST_F(TheLock, IsNotOursOnAnyOtherAnswer) {
    for (const int answer :
         {2, 3, -1, -5, -7, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        client.mLockOwner = true;
        service.status[support::kLock] = answer;
        EXPECT_EQ(answer, client.lock());
        EXPECT_FALSE(client.mLockOwner) << answer;
    }
}

TEST_F(TheLock, IsGivenBackWhenTheServiceAnswersZeroOrOne) {
    for (const int answer : {0, 1}) {
        client.mLockOwner = true;
        service.status[support::kUnlock] = answer;
        EXPECT_EQ(answer, client.unlock());
        EXPECT_FALSE(client.mLockOwner) << answer;
        EXPECT_EQ(Lines({callLine("unlock"), "ask unlock(pid)"}), takeNotes());
    }
}

TEST_F(TheLock, StaysAsItWasOnAnyOtherAnswerToUnlock) {
    for (const bool owner : {true, false}) {
        for (const int answer : {2, -1, -5, std::numeric_limits<int>::min()}) {
            client.mLockOwner = owner;
            service.status[support::kUnlock] = answer;
            EXPECT_EQ(answer, client.unlock());
            EXPECT_EQ(owner, client.mLockOwner) << answer;
        }
    }
}

TEST_F(TheLock, IsNotTakenByGivingBackWhatWasNotOurs) {
    EXPECT_EQ(0, client.unlock());
    EXPECT_FALSE(client.mLockOwner);
}

TEST_F(TheLock, IsAskedForAndGivenBackWithoutTheLockRule) {
    service.locked = true;
    EXPECT_EQ(0, client.lock());
    client.mLockOwner = false;
    EXPECT_EQ(0, client.unlock());
    EXPECT_EQ(Lines({callLine("lock"), "ask lock(pid)", callLine("unlock"), "ask unlock(pid)"}),
              takeNotes());
}

}  // namespace
