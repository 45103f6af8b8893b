// SPDX-License-Identifier: Apache-2.0
// A service manager of another runtime, with our services and clients.
#include <binder/ProcessState.h>
#include <gtest/gtest.h>

#include "tests/foreign_peer/ForeignPeer.h"
#include "tests/foreign_peer/SpeechService.h"
#include "tests/platform/Probe.h"
#include "tests/support/Eventually.h"

namespace {

using namespace voxtrel_test;
using android::OK;
using android::sp;
using android::String16;

class AForeignManager : public testing::TestWithParam<const char*> {
protected:
    void SetUp() override {
        // The driver gives the place of a dead manager away when it has taken that process apart.
        ASSERT_TRUE(eventually(
            [this] { return mManager.ask(std::string("manage ") + GetParam()) == "manages"; }));
        probe::startPool();
    }

    static sp<android::IBinder> look(const char* name) {
        return android::defaultServiceManager()->checkService(String16(name));
    }

    ForeignPeer mManager;
};

// Early ones answer a ping like anything else that they do not know.
TEST_P(AForeignManager, IsThereWhateverItAnswersToAPing) {
    const auto manager = android::ProcessState::self()->getContextObject(nullptr);
    ASSERT_TRUE(manager != nullptr);
    EXPECT_EQ(GetParam() == std::string("number") ? android::PERMISSION_DENIED : OK,
              manager->pingBinder());
}

TEST_P(AForeignManager, HasNoServiceOfAnUnknownName) {
    EXPECT_TRUE(look("unknown") == nullptr);
    EXPECT_TRUE(android::defaultServiceManager()->listServices().empty());
}

TEST_P(AForeignManager, GivesOurServiceToOurClientUntilItDies) {
    auto server = ChildProcess::asRole("server");
    ASSERT_EQ("ready", server.readLine());
    const sp<android::IBinder> node = look(probe::kName);
    ASSERT_TRUE(node != nullptr);
    EXPECT_EQ(0, probe::ask(node, probe::kLiving));
    const auto names = android::defaultServiceManager()->listServices();
    ASSERT_EQ(1U, names.size());
    EXPECT_TRUE(names[0] == String16(probe::kName));
    server.killNow();
    EXPECT_TRUE(eventually([] { return look(probe::kName) == nullptr; }));
}

TEST_P(AForeignManager, GivesOurOwnServiceAsTheObject) {
    const sp<android::IBinder> node = probe::makeNode();
    EXPECT_EQ(OK, android::defaultServiceManager()->addService(String16("own"), node));
    EXPECT_TRUE(look("own") == node);
}

TEST_P(AForeignManager, DoesNotTakeAServiceThatIsNone) {
    EXPECT_NE(OK, android::defaultServiceManager()->addService(String16("none"), nullptr));
}

TEST_P(AForeignManager, IsMissedWhenItDies) {
    const auto manager = android::ProcessState::self()->getContextObject(nullptr);
    ASSERT_TRUE(manager != nullptr);
    const sp<probe::CountingDeathRecipient> recipient = new probe::CountingDeathRecipient();
    EXPECT_EQ(OK, manager->linkToDeath(recipient));
    mManager.killNow();
    EXPECT_TRUE(eventually([&] { return recipient->deaths() == 1; }));
    EXPECT_TRUE(look(probe::kName) == nullptr);
}

INSTANTIATE_TEST_SUITE_P(OfAShape, AForeignManager, testing::Values("number", "object", "stable"));

// With the shape that answers a ping with an error: no name is no sign that no manager answers.
TEST(TheSpeechService, RegistersAgainWithAForeignManagerThatLetGoOfItsName) {
    ForeignPeer manager;
    ASSERT_TRUE(eventually([&] { return manager.ask("manage number") == "manages"; }));
    const SpeechService service;
    ForeignPeer client;
    EXPECT_NE("", SpeechService::awaitReady(client));
    EXPECT_EQ("done", manager.ask("forget"));
    EXPECT_NE("", SpeechService::awaitReady(client));
}

TEST(TheCommandLine, SpeaksThroughAForeignManager) {
    ForeignPeer manager;
    ASSERT_TRUE(eventually([&] { return manager.ask("manage number") == "manages"; }));
    ChildProcess absent({VOXTREL_CONTROL, "doctor"}, "", ChildProcess::Errors::WithOutput);
    const std::string without = absent.finish().out;
    EXPECT_EQ(0U, without.find("ok  service manager  running, ")) << without;
    EXPECT_NE(std::string::npos, without.find("!!  service          absent; ")) << without;

    const SpeechService service;
    ForeignPeer client;
    EXPECT_NE("", SpeechService::awaitReady(client));
    ChildProcess doctor({VOXTREL_CONTROL, "doctor"}, "", ChildProcess::Errors::WithOutput);
    const Outcome seen = doctor.finish();
    EXPECT_EQ(0, seen.status) << seen.out;
    EXPECT_EQ(0U, seen.out.find("ok  service manager  running, ")) << seen.out;
    ChildProcess say({VOXTREL_CONTROL, "say", "--wait", "The train has left."}, "",
                     ChildProcess::Errors::WithOutput);
    const Outcome said = say.finish();
    EXPECT_EQ(0, said.status) << said.out;
    EXPECT_NE(std::string::npos, said.out.find("finished 1\n")) << said.out;
}

}  // namespace
