// SPDX-License-Identifier: Apache-2.0
// Started by the first client, through a socket that systemd, or its test tool, listens at.
#include <binder/IServiceManager.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

#include "servicemanager/Activation.h"
#include "tests/servicemanager/LocalSocket.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Eventually.h"
#include "tests/support/NotifySocket.h"
#include "tests/support/TempFolder.h"

using namespace voxtrel_test;

namespace {

class AnActivatedManager : public ::testing::Test {
protected:
    AnActivatedManager() { setenv("VOXTREL_BINDER_SOCKET", socketPath().c_str(), 1); }
    std::string socketPath() const { return mFolder.path("binder"); }

    /// Listens; the first connection starts the manager.
    std::unique_ptr<ChildProcess> listenFor(const ChildProcess::Words& options,
                                            const ChildProcess::Words& command = {
                                                VOXTREL_SERVICEMANAGER}) {
        ChildProcess::Words words = {"systemd-socket-activate", "-l", socketPath()};
        words.insert(words.end(), options.begin(), options.end());
        words.insert(words.end(), command.begin(), command.end());
        auto tool = std::make_unique<ChildProcess>(words, "");
        EXPECT_TRUE(tool->awaitError("Listening on " + socketPath()));
        return tool;
    }

    const TempFolder mFolder;
};

TEST_F(AnActivatedManager, AnswersTheClientThatStartedIt) {
    const auto manager = listenFor({"--seqpacket"});
    // The request is sent before there is a manager to read it.
    EXPECT_EQ(0U, android::defaultServiceManager()->listServices().size());
    EXPECT_EQ(android::OK, android::defaultServiceManager()->addService(
                               android::String16("a service"), new android::BBinder()));
    EXPECT_EQ(1U, android::defaultServiceManager()->listServices().size());
    manager->kill(SIGTERM);
    EXPECT_EQ(0, manager->finish().status);
    EXPECT_TRUE(std::filesystem::exists(socketPath())) << "the socket is systemd's";
    EXPECT_FALSE(std::filesystem::exists(socketPath() + ".lock"));
}

TEST_F(AnActivatedManager, RefusesASocketOfAnotherKind) {
    const auto manager = listenFor({});  // a stream
    const LocalSocket client = LocalSocket::connectedTo(socketPath(), SOCK_STREAM);
    const Outcome outcome = manager->finish();
    EXPECT_EQ(1, outcome.status);
    EXPECT_NE(std::string::npos,
              outcome.err.find("voxtrel-servicemanager: the descriptor that was handed over is no "
                               "listening SOCK_SEQPACKET unix socket; the socket unit wants "
                               "ListenSequentialPacket="))
        << outcome.err;
    EXPECT_TRUE(std::filesystem::exists(socketPath()));
}

TEST_F(AnActivatedManager, DoesNotPretendToChangeTheModeOfItsSocket) {
    for (const char* option : {"--socket-mode=660", "--socket-group=0"}) {
        std::filesystem::remove(socketPath());
        const auto manager = listenFor({"--seqpacket"}, {VOXTREL_SERVICEMANAGER, option});
        const LocalSocket client = LocalSocket::connectedTo(socketPath());
        const Outcome outcome = manager->finish();
        EXPECT_EQ(1, outcome.status);
        EXPECT_NE(std::string::npos, outcome.err.find("write SocketMode= and SocketGroup="))
            << outcome.err;
    }
}

TEST_F(AnActivatedManager, LeavesASocketForAnotherProcessAlone) {
    const ChildProcess manager({"env", "LISTEN_PID=1", "LISTEN_FDS=1", VOXTREL_SERVICEMANAGER}, "");
    EXPECT_TRUE(eventually([&] { return LocalSocket::connectedTo(socketPath()).valid(); }));
}

TEST_F(AnActivatedManager, SaysThatItIsReadyWhenItCanBeReached) {
    const NotifySocket systemd(mFolder.path("notify"));
    ChildProcess manager({VOXTREL_SERVICEMANAGER}, "");
    EXPECT_EQ(0U, systemd.next().find("READY=1\n"));
    EXPECT_TRUE(LocalSocket::connectedTo(socketPath()).valid());
    manager.kill(SIGTERM);
    EXPECT_EQ(0, manager.finish().status);
    EXPECT_EQ("STOPPING=1", systemd.next());
}

TEST_F(AnActivatedManager, SaysNothingWhenItCannotListen) {
    const NotifySocket systemd(mFolder.path("notify"));
    writeFile(socketPath(), "somebody's file");
    EXPECT_EQ(1, ChildProcess({VOXTREL_SERVICEMANAGER}, "").finish().status);
    EXPECT_FALSE(systemd.hasMessage());
}

/// Puts a socket where a process is handed its first one, and what was there back.
class FirstPassedDescriptor {
public:
    explicit FirstPassedDescriptor(int fd) : mOld(dup(kNumber)) { dup2(fd, kNumber); }
    ~FirstPassedDescriptor() {
        mOld >= 0 ? dup2(mOld, kNumber) : close(kNumber);
        close(mOld);
    }
    FirstPassedDescriptor(const FirstPassedDescriptor&) = delete;
    FirstPassedDescriptor& operator=(const FirstPassedDescriptor&) = delete;

private:
    static constexpr int kNumber = 3;
    const int mOld;
};

TEST_F(AnActivatedManager, HidesTheSocketFromItsChildren) {
    const LocalSocket unit = LocalSocket::listeningAt(socketPath());
    const FirstPassedDescriptor passed(unit.get());
    setenv("LISTEN_PID", std::to_string(getpid()).c_str(), 1);
    setenv("LISTEN_FDS", "1", 1);
    setenv("LISTEN_FDNAMES", "binder", 1);
    std::string error;
    const int taken = servicemanager::takeListeningSocket(error).release();
    EXPECT_EQ(3, taken);
    EXPECT_EQ("", error);
    for (const char* name : {"LISTEN_PID", "LISTEN_FDS", "LISTEN_FDNAMES"}) {
        EXPECT_EQ(nullptr, std::getenv(name)) << name;
    }
    EXPECT_EQ(FD_CLOEXEC, fcntl(taken, F_GETFD));
}

}  // namespace
