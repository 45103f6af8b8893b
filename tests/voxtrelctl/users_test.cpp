// SPDX-License-Identifier: Apache-2.0
// Several users: whose service is talked to, and what a user is told that may not do all.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

#include "tests/support/OtherUser.h"
#include "tests/voxtrelctl/Device.h"

using namespace voxtrel_test;

namespace {

using Words = ChildProcess::Words;

/// A service manager that lets everybody in.
class SeveralUsers : public ::testing::Test {
protected:
    SeveralUsers() {
        EXPECT_EQ(0, chmod(device.path("").c_str(), 0711));
        EXPECT_EQ(0, mkdir(device.path("service").c_str(), 0700));
    }

    /// Starts voxtreld as that user, with what it permits others.
    void startServiceAs(uid_t user, const std::string& policy) {
        writeFile(device.path("policy"), policy);
        const std::string folder = device.path("service");
        EXPECT_EQ(0, chown(folder.c_str(), user, static_cast<gid_t>(-1)));
        service = std::make_unique<ChildProcess>(
            asUser(user, {VOXTREL_SERVICE_PROGRAM, "--profile", folder + "/voxtrel.ini", "--sink",
                          "none", "--log-level", "debug", "--policy", device.path("policy")}),
            "");
        ASSERT_TRUE(service->awaitError("voxtreld: ready\n"));
    }
    /// Runs voxtrelctl as that user.
    static Outcome ctlAs(uid_t user, const Words& arguments) {
        Words words = {Device::control()};
        words.insert(words.end(), arguments.begin(), arguments.end());
        return ChildProcess(asUser(user, words), "").finish();
    }

    Device device{{"--socket-mode=666"}};
    std::unique_ptr<ChildProcess> service;
    const uid_t other = otherUser();
};

using AStrangersService = SeveralUsers;

TEST_F(AStrangersService, IsRefusedByEveryCommandAndToldNothing) {
    startServiceAs(other, "any connect speak stop-others settings lock break-lock");
    const std::string folder = device.path("");
    const Words commands[] = {{"say", "x"},
                              {"say", "--wait", "x"},
                              {"silence", "1"},
                              {"stop"},
                              {"lock", "--", "true"},
                              {"break-lock"},
                              {"status"},
                              {"languages"},
                              {"voices"},
                              {"get"},
                              {"set", "speed", "200"},
                              {"enable"},
                              {"disable", "pitch"},
                              {"profile", "save", folder + "p.ini"},
                              {"monitor", "--json"},
                              {"doctor"}};
    for (const Words& command : commands) {
        if (!canBeOthers() && command.front() == "monitor") {
            continue;  // which goes on for ever with one's own
        }
        const Outcome outcome = ctlAs(geteuid(), command);
        if (!canBeOthers()) {
            EXPECT_EQ(0, outcome.status) << command.front() << ": " << outcome.err;
            continue;
        }
        EXPECT_EQ(1, outcome.status) << command.front();
        EXPECT_NE(std::string::npos, outcome.err.find("-10 permission denied: ")) << outcome.err;
        EXPECT_NE(std::string::npos, outcome.err.find("user nobody (65534)")) << outcome.err;
        EXPECT_NE(std::string::npos, outcome.err.find("--trust-owner")) << outcome.err;
    }
    service->kill(SIGTERM);
    const Outcome outcome = service->finish();
    EXPECT_EQ(canBeOthers(), outcome.err.find("has come") == std::string::npos) << outcome.err;
}

TEST_F(AStrangersService, IsTalkedToByWhoTrustsIt) {
    startServiceAs(other, "any speak");
    for (const std::string& name : {std::string("nobody"), std::to_string(other)}) {
        const Outcome outcome =
            ctlAs(geteuid(), {"--trust-owner", name, "say", "--wait", "Hello."});
        EXPECT_EQ(0, outcome.status) << outcome.err;
        EXPECT_NE(std::string::npos, outcome.out.find("finished 1\n")) << outcome.out;
    }
}

TEST_F(AStrangersService, IsNotTrustedBecauseAnotherUserIs) {
    startServiceAs(other, "any speak");
    const Outcome outcome = ctlAs(geteuid(), {"--trust-owner", "54321", "say", "x"});
    EXPECT_EQ(canBeOthers() ? 1 : 0, outcome.status) << outcome.err;
}

TEST_F(AStrangersService, ThatTakesThePlaceOfTheFirstIsRefusedByAMonitor) {
    startServiceAs(geteuid(), "");
    const auto monitor = device.start({"monitor"});
    ASSERT_TRUE(monitor->awaitOutput("service connected\n"));
    service->kill(SIGKILL);
    (void)service->finish();
    startServiceAs(other, "any speak");
    if (canBeOthers()) {
        const Outcome outcome = monitor->finish();
        EXPECT_EQ(1, outcome.status);
        EXPECT_NE(std::string::npos, outcome.err.find("user nobody (65534)")) << outcome.err;
    } else {
        EXPECT_TRUE(monitor->awaitOutput("died\nservice connected\n"));
    }
}

TEST_F(SeveralUsers, TrustNobodyWhoIsNot) {
    const Outcome outcome = ctlAs(geteuid(), {"--trust-owner", "no such user", "status"});
    EXPECT_EQ(1, outcome.status);
    EXPECT_EQ(
        "voxtrelctl: -3 bad parameter: there is no user \"no such user\": give "
        "--trust-owner the name or number of one\n",
        outcome.err);
}

TEST_F(SeveralUsers, TrustRootsService) {
    startServiceAs(geteuid(), "any speak");
    const Outcome outcome = ctlAs(other, {"say", "--wait", "Hello."});
    EXPECT_EQ(0, outcome.status) << outcome.err;
    const Outcome doctor = ctlAs(other, {"doctor"});
    EXPECT_NE(std::string::npos,
              doctor.out.find(canBeOthers() ? "ok  owner            user root (0)\n" : "ok  owner"))
        << doctor.out;
}

TEST_F(SeveralUsers, LearnThatTheSocketMayNotBeTheirs) {
    ASSERT_EQ(0, chmod(device.path("").c_str(), 0700));
    const Outcome doctor = ctlAs(other, {"doctor"});
    EXPECT_EQ(1, doctor.status);
    const bool seesManager = doctor.out.find("ok  service manager") != std::string::npos;
    EXPECT_EQ(canBeOthers(), !seesManager) << doctor.out;
    EXPECT_EQ(
        canBeOthers(),
        doctor.out.find("!!  service manager  this user may not open the service manager's "
                        "socket at " +
                        device.path("binder") + " (Permission denied); ") != std::string::npos)
        << doctor.out;
}

TEST_F(SeveralUsers, AreToldThatTheSocketMayNotBeTheirsByEveryCommand) {
    ASSERT_EQ(0, chmod(device.path("").c_str(), 0700));
    const Outcome outcome = ctlAs(other, {"say", "--timeout", "1", "x"});
    EXPECT_EQ(1, outcome.status);
    const std::string line =
        "voxtrelctl: -10 permission denied: this user may not open the service manager's socket "
        "at " +
        device.path("binder") + " (Permission denied): ask whoever runs it to let this user in\n";
    EXPECT_EQ(canBeOthers(), outcome.err.find(line) != std::string::npos)
        << outcome.err;  // a runtime may add to it
}

TEST_F(SeveralUsers, AreNotAdmittedWithoutAPolicy) {
    startServiceAs(geteuid(), "");
    const Outcome outcome = ctlAs(other, {"say", "x"});
    if (!canBeOthers()) {
        EXPECT_EQ(0, outcome.status) << outcome.err;
        return;
    }
    EXPECT_EQ(1, outcome.status);
    EXPECT_EQ(
        "voxtrelctl: -10 permission denied: the service does not admit this client: its user may "
        "not connect, or there are too many clients: ask whoever runs it; of voxtreld see its log "
        "and voxtreld-policy(5)\n",
        lastLine(outcome.err));
    const Outcome doctor = ctlAs(other, {"doctor"});
    EXPECT_EQ(1, doctor.status);
    EXPECT_NE(std::string::npos, doctor.out.find("!!  permission")) << doctor.out;
}

TEST_F(SeveralUsers, AreToldAtOnceWhatTheyMayNotDo) {
    startServiceAs(geteuid(), "any connect");
    const std::pair<Words, std::string> refused[] = {
        {{"say", "x"}, "-10 permission denied: the service does not let this user"},
        {{"say", "--wait", "x"}, "-10 permission denied: the service does not let this user"},
        {{"stop"}, "-10 permission denied: this user may not stop what others say"},
        {{"lock", "--", "true"}, "-10 permission denied: this user may not take the lock"},
        {{"break-lock"}, "-10 permission denied: this user may not take the lock"},
        {{"set", "speed", "200"}, "-10 permission denied: "},
        {{"disable"}, "-10 permission denied: "}};
    for (const auto& [command, line] : refused) {
        const Outcome outcome = ctlAs(other, command);
        EXPECT_EQ(canBeOthers() ? 1 : 0, outcome.status) << command.front();
        EXPECT_EQ(canBeOthers(), outcome.err.find(line) != std::string::npos)
            << command.front() << ": " << outcome.err;
    }
    EXPECT_EQ(0, ctlAs(other, {"status"}).status);
    EXPECT_EQ(0, ctlAs(other, {"get"}).status);
}

TEST_F(SeveralUsers, BreakTheLockOfAnotherWhereTheyMay) {
    startServiceAs(geteuid(), "any lock break-lock");
    const auto holder = device.start({"lock", "--", "sh", "-c", "echo locked; sleep 600"});
    ASSERT_TRUE(holder->awaitOutput("locked\n"));
    const Outcome broken = ctlAs(other, {"break-lock"});
    EXPECT_EQ(0, broken.status) << broken.err;
    EXPECT_EQ("the lock of process " + std::to_string(holder->pid()) + " is broken\n", broken.out);
    const Outcome free = ctlAs(other, {"break-lock"});
    EXPECT_EQ(0, free.status) << free.err;
    EXPECT_EQ("nobody held the lock\n", free.out);
}

TEST_F(SeveralUsers, LeaveTheLockOfAnotherWhereTheyMayNotBreakIt) {
    startServiceAs(geteuid(), "any lock");
    const auto holder = device.start({"lock", "--", "sh", "-c", "echo locked; sleep 600"});
    ASSERT_TRUE(holder->awaitOutput("locked\n"));
    const Outcome outcome = ctlAs(other, {"break-lock"});
    if (canBeOthers()) {
        EXPECT_EQ(1, outcome.status);
        // A driver's runtime does not let the service tell which request was refused.
        EXPECT_EQ(0U, lastLine(outcome.err).find("voxtrelctl: -10 permission denied: "))
            << outcome.err;
    } else {
        EXPECT_EQ("the lock of process " + std::to_string(holder->pid()) + " is broken\n",
                  outcome.out);
    }
}

}  // namespace
