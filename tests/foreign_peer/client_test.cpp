// SPDX-License-Identifier: Apache-2.0
// A client of another runtime, of our service manager and the speech service.
#include <gtest/gtest.h>

#include <memory>

#include "tests/foreign_peer/ForeignPeer.h"
#include "tests/foreign_peer/SpeechService.h"
#include "tests/support/PrivateRuntime.h"

namespace {

using namespace voxtrel_test;

constexpr const char* kHasRegistered = "reply i:0";

/// The speech service takes seconds to load its voices: there is one for all tests.
struct Device {
    PrivateRuntime runtime{VOXTREL_SERVICEMANAGER};
    SpeechService service;
};
std::unique_ptr<Device> gDevice;

class AForeignClient : public testing::Test {
protected:
    static void SetUpTestSuite() { gDevice = std::make_unique<Device>(); }
    static void TearDownTestSuite() { gDevice.reset(); }

    void SetUp() override {
        mHandle = SpeechService::awaitReady(mClient);
        ASSERT_FALSE(mHandle.empty());
    }

    std::string call(ForeignPeer& client, uint32_t code, const std::string& rest) const {
        return client.ask("call " + mHandle + ' ' + std::to_string(code) + ' ' + rest);
    }
    std::string registerNode(ForeignPeer& client, const std::string& items) const {
        return call(client, kRegisterCallback, "0 i " + client.pidItem() + ' ' + items);
    }
    std::string say(ForeignPeer& client, int id) const {
        return call(client, kSay,
                    "1 - " + client.pidItem() + " i:" + std::to_string(id) +
                        " c:The_train_has_left. i:65535 f:65535 i:65535 i:65535 i:65535 f:65535 "
                        "i:65535");
    }

    ForeignPeer mClient;
    std::string mHandle;
};

TEST_F(AForeignClient, FindsTheServiceByBothCodes) {
    const std::string found = "reply h:" + mHandle;
    const std::string name = std::string("s:") + kSpeechService;
    EXPECT_EQ(found, mClient.askManager(kGetService, "b", name));
    EXPECT_EQ(found, mClient.askManager(kCheckService, "b", name));
    EXPECT_EQ("reply s:" + std::string(kSpeechService),
              mClient.askManager(kListServices, "s", "i:0"));
}

TEST_F(AForeignClient, IsToldTheInterfaceOfTheServiceAndOfTheServiceManager) {
    EXPECT_EQ("reply s:" + std::string(kSpeechService),
              mClient.ask("call " + mHandle + kInterface));
    EXPECT_EQ("reply s:android.os.IServiceManager",
              mClient.ask(std::string("call 0") + kInterface));
}

TEST_F(AForeignClient, IsAnsweredUnknownTransactionForAnUnknownCode) {
    EXPECT_EQ("status -74", call(mClient, 99, "0 -"));
}

TEST_F(AForeignClient, IsToldAtItsOwnNodeWhatBecomesOfWhatItSays) {
    EXPECT_EQ(kHasRegistered, registerNode(mClient, "n:7"));
    EXPECT_EQ("node 7 acquired", mClient.event("node 7"));
    EXPECT_EQ("sent", say(mClient, 42));
    EXPECT_EQ("called 7 1 one-way pid 0 uid 0: i:1 i:42 i:0", mClient.event("called 7 1"));
    const std::string finished = "called 7 1 one-way pid 0 uid 0: i:2 i:42 i:0";
    EXPECT_EQ(finished, mClient.event(finished));
}

TEST_F(AForeignClient, OfALaterAgeIsToldItAsWell) {
    EXPECT_EQ(kHasRegistered, registerNode(mClient, "n:7 " + std::string(kStability)));
    EXPECT_EQ("sent", say(mClient, 42));
    EXPECT_NE("", mClient.event("called 7 1 one-way pid 0 uid 0: i:2 i:42 i:0"));
}

TEST_F(AForeignClient, OfAnotherUserIsNotAdmitted) {
    ForeignPeer other = ForeignPeer::ofNobody();
    ASSERT_EQ(mHandle, other.await(kSpeechService));
    EXPECT_EQ("reply i:-10", registerNode(other, "n:7"));
}

// The protocol has no tokens: the words of one are read as arguments, the first as the caller's
// process.
TEST_F(AForeignClient, ThatBeginsARequestWithATokenIsRefused) {
    const std::string token = std::string("i:-2147483644 s:") + kSpeechService;
    EXPECT_EQ("reply i:-10",
              call(mClient, kRegisterCallback, "0 i " + token + ' ' + mClient.pidItem() + " n:7"));
    EXPECT_EQ("sent", call(mClient, kSay, "1 - " + token + ' ' + mClient.pidItem()));
    EXPECT_EQ(kHasRegistered, registerNode(mClient, "n:7"));
}

TEST_F(AForeignClient, ThatCutsARequestShortDoesNoHarm) {
    EXPECT_EQ("reply i:-10", call(mClient, kRegisterCallback, "0 i"));
    EXPECT_EQ("reply i:-3", call(mClient, kRegisterCallback, "0 i " + mClient.pidItem()));
    EXPECT_EQ("sent", call(mClient, kSay, "1 -"));
    EXPECT_EQ("sent", call(mClient, kSay, "1 - " + mClient.pidItem() + " i:1"));
    EXPECT_EQ(kHasRegistered, registerNode(mClient, "n:7"));
}

TEST_F(AForeignClient, HasItsNodeBackWhenItDeregisters) {
    EXPECT_EQ(kHasRegistered, registerNode(mClient, "n:7"));
    EXPECT_EQ("reply i:0", call(mClient, kDeregisterCallback, "0 i " + mClient.pidItem()));
    EXPECT_EQ("node 7 released", mClient.event("node 7 released"));
}

TEST_F(AForeignClient, LosesItsLockWhenItDies) {
    ForeignPeer other;
    ASSERT_EQ(mHandle, other.await(kSpeechService)) << "it is the first that either is given";
    EXPECT_EQ(kHasRegistered, registerNode(mClient, "n:7"));
    EXPECT_EQ(kHasRegistered, registerNode(other, "n:8"));
    EXPECT_EQ("sent", call(mClient, kLock, "1 - " + mClient.pidItem()));
    const std::string locked = "called 8 1 one-way pid 0 uid 0: i:5 i:15 i:";
    EXPECT_EQ(locked + std::to_string(mClient.pid()), other.event(locked));
    mClient.killNow();
    EXPECT_EQ(locked + "0", other.event(locked));
}

}  // namespace
