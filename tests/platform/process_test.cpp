// SPDX-License-Identifier: Apache-2.0
// What a process sees of the runtime as a whole: the service manager's place, forks, descriptors,
// the environment.
#include <binder/IPCThreadState.h>
#include <binder/ProcessState.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <ttscommon/ttscommon.h>
#include <unistd.h>

#include <filesystem>
#include <set>
#include <string>
#include <system_error>

#include "support/Log.h"
#include "tests/platform/ProbeTest.h"

namespace {

using android::IBinder;
using android::IPCThreadState;
using android::OK;
using android::sp;
using android::String16;
using probe::Call;
using voxtrel_test::ChildProcess;

void nowhere() {
    setenv("VOXTREL_BINDER_SOCKET", "/nonexistent/binder", 1);
}

TEST(WithoutAServiceManager, EverythingAnswersAtOnce) {
    nowhere();
    const sp<android::IServiceManager> manager = android::defaultServiceManager();
    EXPECT_TRUE(manager->getService(String16("a")) == nullptr);
    EXPECT_EQ(android::DEAD_OBJECT, manager->addService(String16("a"), probe::makeNode()));
    EXPECT_EQ(0U, manager->listServices().size());
    EXPECT_TRUE(android::ProcessState::self()->getContextObject(nullptr) == nullptr);
}

class NoManager : public android::IServiceManager {
public:
    sp<IBinder> getService(const String16& /*name*/) const override { return mNode; }
    sp<IBinder> checkService(const String16& name) const override { return getService(name); }
    android::status_t addService(const String16& /*name*/, const sp<IBinder>& /*service*/,
                                 bool /*allowIsolated*/) override {
        return OK;
    }
    android::Vector<String16> listServices() override { return {}; }

protected:
    IBinder* onAsBinder() override { return nullptr; }

private:
    const sp<IBinder> mNode = probe::makeNode();
};

TEST(TheDefaultServiceManager, CanBeReplacedByATest) {
    nowhere();
    android::setDefaultServiceManager(new NoManager());
    EXPECT_TRUE(android::defaultServiceManager()->getService(String16("a")) != nullptr);
    android::setDefaultServiceManager(nullptr);
    EXPECT_TRUE(android::defaultServiceManager()->getService(String16("a")) == nullptr);
}

using TheServiceManager = probe::ProbeTest;

TEST_F(TheServiceManager, ListsItsServicesByName) {
    ChildProcess other = ChildProcess::asRole("server", {"another"});
    ASSERT_EQ("ready", other.readLine());
    const auto names = android::defaultServiceManager()->listServices();
    ASSERT_EQ(2U, names.size());
    EXPECT_EQ(String16("another"), names[0]);
    EXPECT_EQ(String16("probe"), names[1]);
}

TEST_F(TheServiceManager, GivesANameToItsUsersNextProcess) {
    ChildProcess next = ChildProcess::asRole("server");
    ASSERT_EQ("ready", next.readLine());
    Call call;
    ASSERT_EQ(OK, call.to(probe::find(), probe::kWho));
    (void)call.reply.readInt64();
    EXPECT_EQ(next.pid(), call.reply.readInt32());
    EXPECT_EQ(OK, mNode->pingBinder()) << "who holds the old one keeps it";
}

TEST_F(TheServiceManager, IsTheOnlyOne) {
    ChildProcess second({VOXTREL_SERVICEMANAGER});
    EXPECT_EQ(1, second.wait());
    EXPECT_TRUE(probe::find() == mNode);
}

TEST_F(TheServiceManager, TakesThePlaceOfOneThatWasKilled) {
    mRuntime.killManager();
    EXPECT_EQ(android::DEAD_OBJECT,
              android::defaultServiceManager()->addService(String16("a"), probe::makeNode()));
    mRuntime.startManager();
    EXPECT_EQ(OK, android::defaultServiceManager()->addService(String16("a"), probe::makeNode()));
    EXPECT_TRUE(android::defaultServiceManager()->getService(String16("a"))->localBinder() !=
                nullptr);
}

using AForkedChild = probe::ProbeTest;

TEST_F(AForkedChild, IsRefusedAndItsParentGoesOn) {
    const pid_t child = fork();
    if (child == 0) {
        Call call;
        const bool refused =
            call.to(mNode, probe::kWho) == android::INVALID_OPERATION &&
            android::defaultServiceManager()->getService(String16("probe")) == nullptr;
        _exit(refused ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_EQ(0, status);
    EXPECT_EQ(OK, mNode->pingBinder());
}

class Listener : public IBinder::DeathRecipient {
public:
    void binderDied(const android::wp<IBinder>& /*who*/) override {}
};

TEST_F(AForkedChild, CannotServeNorBeToldOfADeath) {
    const pid_t child = fork();
    if (child == 0) {
        (void)alarm(60);
        IPCThreadState::self()->joinThreadPool();
        _exit(mNode->linkToDeath(new Listener()) == android::INVALID_OPERATION ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_EQ(0, status);
}

// Makes a call that needs more than a parcel's own room after the end of main.
struct LateCaller {
    ~LateCaller() {
        Call call;
        (void)call.data.writeInplace(20000);
        const android::status_t status = call.to(node, probe::kEcho);
        voxtrel_test::tell(std::to_string(status) + " " + std::to_string(call.reply.dataSize()));
    }
    sp<IBinder> node;
};

const voxtrel_test::Role kLateCaller("late-caller", [](const voxtrel_test::Arguments&) {
    static LateCaller caller;
    caller.node = probe::find();
    return 0;
});

TEST_F(TheServiceManager, MayBeAskedByTheDestructorOfAStaticObject) {
    ChildProcess late = ChildProcess::asRole("late-caller");
    EXPECT_EQ("0 20000", late.readLine());
    EXPECT_EQ(0, late.wait());
}

const voxtrel_test::Role kTwice("twice", [](const voxtrel_test::Arguments& arguments) {
    setenv("VOXTREL_BINDER_SOCKET", arguments[0].c_str(), 1);
    const sp<android::BBinder> node = new android::BBinder();
    IPCThreadState::self()->setTheContextObject(node);
    const auto state = android::ProcessState::self();
    const bool first = state->becomeContextManager();
    const bool second = state->becomeContextManager();
    const bool kept = state->getContextObject(nullptr) == node;
    voxtrel_test::tell(first && !second && kept ? "kept" : "lost");
    return 0;
});

TEST_F(TheServiceManager, StaysSoWhenItAsksASecondTime) {
    mRuntime.killManager();
    const std::string path = mRuntime.socket() + "2";
    ChildProcess twice = ChildProcess::asRole("twice", {path});
    EXPECT_EQ("kept", twice.readLine());
    EXPECT_EQ(0, twice.wait());
    unlink(path.c_str());
    unlink((path + ".lock").c_str());
}

TEST_F(AForkedChild, HoldsNoneOfItsParentsDescriptors) {
    const int before = probe::descriptors();
    const pid_t child = fork();
    if (child == 0) {
        _exit(probe::descriptors() < before ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_EQ(0, status);
}

/// What the descriptors of this process stand for, before the runtime opens any.
std::set<std::string> openAtStart() {
    std::set<std::string> targets;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code gone;
        targets.insert(std::filesystem::read_symlink(entry.path(), gone).string());
    }
    return targets;
}

const std::set<std::string> kOpenAtStart = openAtStart();

TEST_F(AForkedChild, ThatRunsAnotherProgramInheritsNoDescriptor) {
    Call call;
    call.data.writeStrongBinder(probe::makeNode());
    EXPECT_EQ(OK, call.to(mNode, probe::kKeep));
    // Its own standard streams and the folder that it lists are pipes and paths.
    ChildProcess lister({"sh", "-c", "for f in /proc/self/fd/*; do readlink $f; done; echo end"});
    size_t seen = 0;
    for (std::string line = lister.readLine(); line != "end"; line = lister.readLine()) {
        ASSERT_FALSE(line.empty());
        ++seen;
        const bool ofTheRuntime = line.find("socket:") == 0 || line.find("anon_inode:") == 0 ||
                                  line.find("/memfd:") == 0 || line == mRuntime.place();
        EXPECT_TRUE(!ofTheRuntime || kOpenAtStart.count(line) != 0) << line;
    }
    EXPECT_GE(seen, 3U);
}

TEST(TheCallingIdentity, IsTheProcessItselfOutsideOfACall) {
    android::IPCThreadState* self = android::IPCThreadState::self();
    EXPECT_EQ(getpid(), self->getCallingPid());
    EXPECT_EQ(getuid(), self->getCallingUid());
    self->restoreCallingIdentity((int64_t{123} << 32) | 456);
    EXPECT_EQ(456, self->getCallingPid());
    const int64_t token = self->clearCallingIdentity();
    EXPECT_EQ(getpid(), self->getCallingPid());
    self->restoreCallingIdentity(token);
    EXPECT_EQ(123U, self->getCallingUid());
    (void)self->clearCallingIdentity();
}

// Prints to standard error, which is its output here.
const voxtrel_test::Role kPrinter("printer", [](const voxtrel_test::Arguments&) {
    dup2(STDOUT_FILENO, STDERR_FILENO);
    dbgPrint(0, "zero %d\n", 1);
    dbgPrint(1, "one %s\n", "x");
    dbgPrint(2, "two\n");
    dbgPrint(0, "filter %s\n", INI_LANGUAGE_WITH_VOICES);
    return 0;
});

TEST(TheCommonLibrary, PrintsUpToTheLevelThatTheEnvironmentSets) {
    unsetenv("VOXTREL_LOG_LEVEL");
    unsetenv("VOXTREL_LANGUAGE_WITH_VOICES");
    ChildProcess plain = ChildProcess::asRole("printer");
    EXPECT_EQ("zero 1", plain.readLine());
    EXPECT_EQ("filter ", plain.readLine());
    setenv("VOXTREL_LOG_LEVEL", "1", 1);
    setenv("VOXTREL_LANGUAGE_WITH_VOICES", "fr_FR.none", 1);
    ChildProcess chosen = ChildProcess::asRole("printer");
    EXPECT_EQ("zero 1", chosen.readLine());
    EXPECT_EQ("one x", chosen.readLine());
    EXPECT_EQ("filter fr_FR.none", chosen.readLine());
    unsetenv("VOXTREL_LOG_LEVEL");
    unsetenv("VOXTREL_LANGUAGE_WITH_VOICES");
}

const voxtrel_test::Role kWarner("warner", [](const voxtrel_test::Arguments&) {
    dup2(STDOUT_FILENO, STDERR_FILENO);
    android::transport::logLimited("a warning");
    android::transport::logLine("why it ends");
    return 0;
});

TEST(TheRuntime, WritesNoWarningWhereErrorsAloneAreAskedFor) {
    setenv("VOXTREL_LOG_LEVEL", "-1", 1);
    ChildProcess quiet = ChildProcess::asRole("warner");
    EXPECT_NE(std::string::npos, quiet.readLine().find("why it ends"));
    unsetenv("VOXTREL_LOG_LEVEL");
    ChildProcess usual = ChildProcess::asRole("warner");
    EXPECT_NE(std::string::npos, usual.readLine().find("a warning"));
}

}  // namespace
