// SPDX-License-Identifier: Apache-2.0
// What becomes of requests that other ages of the platform send, and of ones that are cut short.
#include <gtest/gtest.h>

#include <memory>

#include "tests/foreign_peer/ForeignPeer.h"
#include "tests/support/PrivateRuntime.h"

namespace {

using namespace voxtrel_test;

constexpr const char* kPolicy = "i:-2147483644";
constexpr const char* kInterface16 = "s:android.os.IServiceManager";
constexpr const char* kNoWorkSource = "i:-1";
constexpr const char* kHeader = "i:1398362964";  // SYST
constexpr const char* kBadType = "status -2147483647";
constexpr const char* kBadValue = "reply i:-22";

std::unique_ptr<PrivateRuntime> gRuntime;

class ARequestToTheServiceManager : public testing::Test {
protected:
    static void SetUpTestSuite() {
        gRuntime = std::make_unique<PrivateRuntime>(VOXTREL_SERVICEMANAGER);
    }
    static void TearDownTestSuite() { gRuntime.reset(); }

    void SetUp() override { ASSERT_EQ("reply i:0", add("first", "n:1 i:0")); }
    // It is none the worse for anything.
    void TearDown() override {
        EXPECT_EQ("reply n:1", mPeer.askManager(kCheckService, "b", "s:first"));
    }

    std::string add(const std::string& name, const std::string& items) {
        return mPeer.askManager(kAddService, "i", "s:" + name + ' ' + items);
    }
    std::string find(const std::string& items) { return mPeer.ask("call 0 2 0 b " + items); }

    ForeignPeer mPeer;
};

TEST_F(ARequestToTheServiceManager, MayHaveAStrictModePolicy) {
    EXPECT_EQ("reply n:1", find(std::string(kPolicy) + ' ' + kInterface16 + " s:first"));
}

TEST_F(ARequestToTheServiceManager, IsAnsweredWithoutTheStabilityOfALaterAge) {
    EXPECT_EQ("reply n:1 -", mPeer.askManager(kCheckService, "bi", "s:first"));
    EXPECT_EQ("reply 0 -", mPeer.askManager(kCheckService, "bi", "s:unknown"));
}

TEST_F(ARequestToTheServiceManager, IsRefusedWithTheWorkSourceOfALaterAge) {
    EXPECT_EQ(kBadType,
              find(std::string(kPolicy) + ' ' + kNoWorkSource + ' ' + kInterface16 + " s:first"));
}

TEST_F(ARequestToTheServiceManager, IsRefusedWithTheHeaderOfALaterAge) {
    EXPECT_EQ(kBadType, find(std::string(kPolicy) + ' ' + kNoWorkSource + ' ' + kHeader + ' ' +
                             kInterface16 + " s:first"));
}

TEST_F(ARequestToTheServiceManager, IsRefusedForAnotherInterface) {
    EXPECT_EQ(kBadType, find("i:0 s:android.os.IOther s:first"));
}

TEST_F(ARequestToTheServiceManager, IsRefusedWhereverItIsCutShort) {
    EXPECT_EQ(kBadType, find(""));
    EXPECT_EQ(kBadType, find("i:0"));
    EXPECT_EQ(kBadType, find("i:0 i:2147483647"));
    EXPECT_EQ(kBadType, find("i:0 i:26 i:0"));
    EXPECT_EQ("reply 0", find(std::string("i:0 ") + kInterface16));
    EXPECT_EQ("reply 0", find(std::string("i:0 ") + kInterface16 + " i:-1"));
    EXPECT_EQ(kBadValue, mPeer.askManager(kAddService, "i", ""));
    EXPECT_EQ(kBadValue, add("second", ""));
    EXPECT_EQ(kBadValue, add("second", "0 i:0"));
    EXPECT_EQ(kBadValue, add("second", "i:1 i:2 i:3 i:4 i:5 i:6"));
    EXPECT_EQ("", mPeer.find("second"));
}

TEST_F(ARequestToTheServiceManager, IsRefusedForANameOfAnotherUsersService) {
    ForeignPeer other = ForeignPeer::ofNobody();
    EXPECT_EQ("reply i:-1", other.askManager(kAddService, "i", "s:first n:2 i:0"));
    EXPECT_EQ("reply i:0", other.askManager(kAddService, "i", "s:second n:2 i:0"));
}

TEST_F(ARequestToTheServiceManager, IsAnsweredUnknownTransactionForAnUnknownCode) {
    EXPECT_EQ("status -74", mPeer.askManager(99, "-", ""));
}

}  // namespace
