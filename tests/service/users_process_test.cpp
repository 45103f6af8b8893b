// SPDX-License-Identifier: Apache-2.0
// One service, its own user and another.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include "tests/service/RunningService.h"
#include "tests/support/Eventually.h"
#include "tests/support/OtherUser.h"
#include "tests/support/TempFolder.h"
#include "vocabulary/Events.h"
#include "vocabulary/Status.h"

namespace voxtreld {

using namespace TTS;

namespace {

class AServiceForSeveralUsers : public testing::Test {
protected:
    AServiceForSeveralUsers() {
        setenv("VOXTREL_BINDER_SOCKET", folder.path("binder").c_str(), 1);
        manager =
            startProcess({VOXTREL_SERVICE_MANAGER, "--socket-mode=666", "--log-level=warning"});
        EXPECT_EQ(0, chmod(folder.path("").c_str(), 0711));
        EXPECT_EQ(0, mkdir(folder.path("service").c_str(), 0700));
        EXPECT_TRUE(voxtrel_test::eventually(
            [&] { return std::filesystem::exists(folder.path("binder")); }));
    }

    /// The service of that user, with this policy, ready.
    Process startServiceAs(uid_t user, const std::string& policy) {
        voxtrel_test::writeFile(folder.path("policy"), policy);
        EXPECT_EQ(0, chown(folder.path("service").c_str(), user, static_cast<gid_t>(-1)));
        auto service = startProcess(voxtrel_test::asUser(
            user, {VOXTREL_SERVICE, "--profile", folder.path("service/voxtrel.ini"), "--sink",
                   "none", "--policy", folder.path("policy")}));
        service->readUntil("voxtreld: ready");
        return service;
    }
    /// A client of that user that has tried to connect.
    static Process startClientAs(uid_t user, int status) {
        auto client = startProcess(voxtrel_test::asUser(user, {VOXTREL_SPEECH_CLIENT}));
        client->say("connect");
        client->readUntil("connect " + std::to_string(status));
        return client;
    }

    voxtrel_test::TempFolder folder;
    Process manager;
    const uid_t other = voxtrel_test::otherUser();
    const int refused = voxtrel_test::canBeOthers() ? STATUS_PERMISSION_DENIED : STATUS_OK;
};

TEST_F(AServiceForSeveralUsers, AdmitsItsOwnUserAloneWithoutARule) {
    const Process service = startServiceAs(geteuid(), "");
    (void)startClientAs(geteuid(), 0);
    (void)startClientAs(other, refused);
}

TEST_F(AServiceForSeveralUsers, DoesNotTakeRootForItsOwnUser) {
    const Process service = startServiceAs(other, "");
    (void)startClientAs(other, 0);
    (void)startClientAs(geteuid(), refused);
}

TEST_F(AServiceForSeveralUsers, GrantsAUserWhatThePolicySays) {
    const Process service =
        startServiceAs(geteuid(), "# by number\nuser " + std::to_string(other) + " speak\n");
    const Process client = startClientAs(other, 0);
    client->say("say 1 Hello.");
    client->readUntil(eventLine(EVENT_FINISHED, 1, 0));
    client->say("stop 1");
    client->readUntil("stop 0");
    client->say("enable 1");
    client->readUntil("enable " + std::to_string(refused));
}

TEST_F(AServiceForSeveralUsers, TellsAUserWhatItMayNotDoByEvents) {
    const Process service = startServiceAs(geteuid(), "any connect");
    const Process client = startClientAs(other, 0);
    if (!voxtrel_test::canBeOthers()) {
        client->say("say 1 Hello.");
        client->readUntil(eventLine(EVENT_FINISHED, 1, 0));
        return;
    }
    client->say("say 1 Hello.");
    client->readUntil(eventLine(EVENT_STOPPED, 1, STATUS_PERMISSION_DENIED));
    client->say("stop 0");
    client->readUntil(eventLine(EVENT_STATE, STATE_REFUSED, 3));
    client->say("lock");
    client->readUntil(eventLine(EVENT_STATE, STATE_REFUSED, 25));
    service->readUntil("voxtreld: lock: user 65534 lacks the permission lock, refused");
}

TEST_F(AServiceForSeveralUsers, GrantsTheMembersOfAGroupWhatThePolicySays) {
    if (!voxtrel_test::canBeOthers()) {
        const Process service = startServiceAs(geteuid(), "group 0 speak");
        (void)startClientAs(other, 0);
        return;
    }
    // The group that the system's database has for "nobody", which setpriv here leaves alone.
    const Process service = startServiceAs(geteuid(), "group nogroup speak");
    (void)startClientAs(other, 0);
    (void)startClientAs(54321, STATUS_PERMISSION_DENIED);
}

}  // namespace
}  // namespace voxtreld
