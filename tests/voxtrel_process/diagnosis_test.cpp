// SPDX-License-Identifier: Apache-2.0
// What a client says of its way to programs that are stopped, absent, or a stranger's.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "tests/support/OtherUser.h"
#include "tests/voxtrel_process/Machine.h"
#include "tests/voxtrel_process/Recorder.h"

using namespace voxtrel_test;
using namespace voxtrel;

namespace {

class ADiagnosis : public ::testing::Test {
protected:
    Machine machine;
};

TEST_F(ADiagnosis, FindsNoServiceManagerAtOnce) {
    machine.killManager();
    Client client;
    const Diagnosis seen = client.diagnose(kLimit);
    EXPECT_EQ(Reach::NoManager, seen.reach);
    EXPECT_EQ("socket", seen.transport);
    EXPECT_EQ(machine.path("binder"), seen.path);
    EXPECT_EQ(ECONNREFUSED, seen.error);
    EXPECT_EQ(Status::ServiceNotFound, seen.whyNot().status);
}

TEST_F(ADiagnosis, FindsAServiceManagerThatIsStopped) {
    machine.stopManager();
    Client client;
    const Diagnosis seen = client.diagnose(kLimit);
    EXPECT_EQ(Reach::ManagerSilent, seen.reach);
    EXPECT_TRUE(seen.manager.isStopped);
    EXPECT_EQ(getuid(), seen.manager.user);
    const std::string stopped = "(process " + std::to_string(seen.manager.process) + " is stopped)";
    EXPECT_NE(std::string::npos, seen.whyNot().message.find(stopped)) << seen.whyNot().message;
    machine.continueManager();
}

TEST_F(ADiagnosis, FindsNoService) {
    Client client;
    const Diagnosis seen = client.diagnose(kLimit);
    EXPECT_EQ(Reach::NoService, seen.reach);
    EXPECT_NE(0U, seen.manager.process);
    EXPECT_FALSE(seen.manager.isStopped);
}

TEST_F(ADiagnosis, FindsAServiceThatIsStopped) {
    machine.startService();
    ASSERT_TRUE(Client().waitUntilConnected(kLimit));
    machine.stopService();
    Client client;
    const Diagnosis seen = client.diagnose(kLimit);
    EXPECT_EQ(Reach::ServiceSilent, seen.reach);
    EXPECT_TRUE(seen.service.isStopped);
    EXPECT_EQ(getuid(), seen.service.user);
    EXPECT_NE(std::string::npos, seen.whyNot().message.find(" is stopped)"));
    machine.continueService();
}

TEST_F(ADiagnosis, FindsAServiceThatLoadsItsVoices) {
    machine.startOther({VOXTREL_MUTE_SERVICE});
    Client client;
    EXPECT_EQ(Reach::Loading, client.diagnose(kLimit).reach);
}

ClientOptions trusting(std::vector<std::uint32_t> users) {
    ClientOptions options;
    options.trustedUsers = std::move(users);
    return options;
}

TEST_F(ADiagnosis, TrustsTheServiceOfItsOwnUser) {
    machine.startService();
    Client client("test", trusting({}));
    EXPECT_TRUE(client.waitUntilConnected(kLimit));
    EXPECT_EQ(Reach::Connected, client.diagnose().reach);
}

/// A service of another user's.
class AStrangersService : public ::testing::Test {
protected:
    AStrangersService() {
        EXPECT_EQ(0, chmod(machine.path("").c_str(), 0711));
        EXPECT_EQ(0, chmod(machine.path("binder").c_str(), 0666));
        stranger = std::make_unique<ChildProcess>(
            asUser(otherUser(), {VOXTREL_MUTE_SERVICE, "ready"}), "");
        EXPECT_TRUE(stranger->awaitOutput("service: clients find it now\n"));
    }

    Machine machine;
    std::unique_ptr<ChildProcess> stranger;
};

TEST_F(AStrangersService, IsNotTalkedToByWhoDoesNotTrustIt) {
    Client client("test", trusting({54321}));
    const Diagnosis seen = client.diagnose(kLimit);
    EXPECT_EQ(otherUser(), seen.service.user);
    if (canBeOthers()) {
        EXPECT_EQ(Reach::NotTrusted, seen.reach);
        EXPECT_EQ(Status::PermissionDenied,
                  client.settings(std::chrono::milliseconds(50)).status());
    }
}

TEST_F(AStrangersService, IsTalkedToByWhoTrustsIt) {
    Client client("test", trusting({otherUser()}));
    EXPECT_TRUE(client.waitUntilConnected(kLimit));
}

TEST_F(AStrangersService, IsTalkedToByWhoDoesNotCare) {
    Client client;
    EXPECT_TRUE(client.waitUntilConnected(kLimit));
}

}  // namespace
