// SPDX-License-Identifier: Apache-2.0
// Whom the service manager lets in, and who may have which name.
#include <binder/IServiceManager.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

#include "binder/ServiceOwner.h"
#include "tests/servicemanager/LocalSocket.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TempFolder.h"

using namespace voxtrel_test;
using android::OK;
using android::String16;

namespace {

/// Only root can play another user, or own a file of another group; anybody else plays itself.
bool isRoot() {
    return geteuid() == 0;
}

gid_t otherGroup() {
    return isRoot() ? 54321 : getegid();
}

class TheSocket : public ::testing::Test {
protected:
    TheSocket() { setenv("VOXTREL_BINDER_SOCKET", socketPath().c_str(), 1); }
    ~TheSocket() override { umask(mUmask); }
    std::string socketPath() const { return mFolder.path("binder"); }

    static std::unique_ptr<ChildProcess> start(const ChildProcess::Words& options) {
        ChildProcess::Words words = {VOXTREL_SERVICEMANAGER};
        words.insert(words.end(), options.begin(), options.end());
        auto manager = std::make_unique<ChildProcess>(words, "");
        EXPECT_TRUE(manager->awaitError("voxtrel-servicemanager: ready\n"));
        return manager;
    }
    struct stat status() const {
        struct stat found {};
        EXPECT_EQ(0, lstat(socketPath().c_str(), &found));
        return found;
    }
    mode_t mode() const { return status().st_mode & 07777; }

    const mode_t mUmask = umask(022);
    const TempFolder mFolder;
};

TEST_F(TheSocket, IsItsUsersAloneWhateverTheUmask) {
    umask(0);
    const auto manager = start({});
    EXPECT_EQ(0600U, mode());
    EXPECT_EQ(geteuid(), status().st_uid);
}

TEST_F(TheSocket, HasTheModeThatIsAskedForWhateverTheUmask) {
    for (const char* asked : {"660", "0666", "600", "620"}) {
        umask(077);
        const auto manager = start({"--socket-mode", asked});
        EXPECT_EQ(std::strtoul(asked, nullptr, 8), mode()) << asked;
        EXPECT_TRUE(LocalSocket::connectedTo(socketPath()).valid());
        manager->kill(SIGTERM);
        EXPECT_EQ(0, manager->finish().status);
    }
}

TEST_F(TheSocket, IsOpenToTheGroupThatIsAskedFor) {
    const auto manager = start({"--socket-group", std::to_string(otherGroup())});
    EXPECT_EQ(0660U, mode());
    EXPECT_EQ(otherGroup(), status().st_gid);
}

TEST_F(TheSocket, OfAGroupHasTheModeThatIsAskedFor) {
    const auto manager =
        start({"--socket-group", std::to_string(otherGroup()), "--socket-mode", "600"});
    EXPECT_EQ(0600U, mode());
    EXPECT_EQ(otherGroup(), status().st_gid);
}

TEST_F(TheSocket, IsNotLeftBehindWhereItCannotBeGivenToTheGroup) {
    // Root may give files to any group, but not where the system call is refused.
    const ChildProcess::Words words = {VOXTREL_SERVICEMANAGER, "--socket-group", "12345"};
    ChildProcess::Words command = {"setpriv", "--bounding-set=-chown"};
    command.insert(command.end(), words.begin(), words.end());
    const Outcome outcome = ChildProcess(isRoot() ? command : words, "").finish();
    EXPECT_EQ(1, outcome.status);
    EXPECT_NE(
        std::string::npos,
        outcome.err.find("cannot give the socket to group 12345: Operation not permitted; its "
                         "members and root may\n"))
        << outcome.err;
    EXPECT_NE(std::string::npos, outcome.err.find("cannot listen at " + socketPath() + ": "))
        << outcome.err;
    EXPECT_FALSE(std::filesystem::exists(socketPath()));
    EXPECT_FALSE(std::filesystem::exists(socketPath() + ".new"));
}

TEST_F(TheSocket, InAFolderThatOthersCannotEnterComesWithAWarning) {
    const auto manager = start({"--socket-mode=666"});
    manager->kill(SIGTERM);
    EXPECT_NE(std::string::npos, manager->finish().err.find("other users may open " + socketPath() +
                                                            ", but not enter its folder "));
    ASSERT_EQ(0, chmod(mFolder.path("").c_str(), 0711));
    const auto reachable = start({"--socket-mode=666"});
    reachable->kill(SIGTERM);
    EXPECT_EQ("voxtrel-servicemanager: ready\nvoxtrel-servicemanager: stopped\n",
              reachable->finish().err);
}

// The options would be without effect, and the device open to whom its own mode lets in.
TEST_F(TheSocket, IsNotWhatOthersOpenWhereADriverCarriesTheCalls) {
    for (const char* option : {"--socket-mode=660", "--socket-group=0"}) {
        const Outcome outcome =
            ChildProcess({"env", "VOXTREL_BINDER_DRIVER=" + mFolder.path("driver"),
                          VOXTREL_SERVICEMANAGER, option},
                         "")
                .finish();
        EXPECT_EQ(1, outcome.status) << option;
        EXPECT_NE(std::string::npos,
                  outcome.err.find("calls travel through " + mFolder.path("driver") +
                                   " and no socket: give that the mode and the group of "
                                   "--socket-mode and --socket-group\n"))
            << outcome.err;
        EXPECT_FALSE(std::filesystem::exists(socketPath()));
    }
}

android::status_t take(const char* name) {
    return android::defaultServiceManager()->addService(String16(name), new android::BBinder());
}

TEST_F(TheSocket, ComesWithNamesThatAreReservedForAUser) {
    const uid_t other = geteuid() + 1;
    const std::string own = std::to_string(geteuid());
    const auto manager =
        start({"--reserve", "mine=" + own, "--reserve=a=b=" + std::to_string(other)});
    EXPECT_EQ(OK, take("mine"));
    EXPECT_EQ(OK, take("anybody's"));
    EXPECT_EQ(android::PERMISSION_DENIED, take("a=b"));
    EXPECT_TRUE(manager->awaitError("refused a=b to process " + std::to_string(getpid()) +
                                    " of user " + own + ": it is reserved for user " +
                                    std::to_string(other) + "\n"));
    EXPECT_TRUE(android::defaultServiceManager()->getService(String16("a=b")) == nullptr);
}

TEST_F(TheSocket, ReservesForAUserByName) {
    const auto manager = start({"--reserve", "speech=root"});
    EXPECT_EQ(isRoot() ? OK : android::PERMISSION_DENIED, take("speech"));
}

TEST_F(TheSocket, LeadsToTheOwnerOfEachService) {
    android::OwnedService found;
    EXPECT_EQ(android::DEAD_OBJECT, android::findOwnedService(String16("mine"), found));
    const auto manager = start({});
    EXPECT_EQ(OK, android::findOwnedService(String16("mine"), found));
    EXPECT_TRUE(found.service == nullptr);
    const android::sp<android::IBinder> mine = new android::BBinder();
    ASSERT_EQ(OK, android::defaultServiceManager()->addService(String16("mine"), mine));
    EXPECT_EQ(OK, android::findOwnedService(String16("mine"), found));
    EXPECT_TRUE(found.service == mine);
    EXPECT_EQ(getuid(), found.owner);
}

}  // namespace
