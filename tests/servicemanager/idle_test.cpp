// SPDX-License-Identifier: Apache-2.0
// A service manager that was told to leave when nobody needs it.
#include <binder/Binder.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

#include "socket/Listener.h"
#include "socket/SocketRuntime.h"
#include "tests/servicemanager/LocalSocket.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TempFolder.h"

using namespace voxtrel_test;
using android::transport::Listener;
using android::transport::SocketRuntime;

namespace {

using Clock = std::chrono::steady_clock;

class AnIdleManager : public ::testing::Test {
protected:
    AnIdleManager() { setenv("VOXTREL_BINDER_SOCKET", socketPath().c_str(), 1); }
    std::string socketPath() const { return mFolder.path("binder"); }

    static std::unique_ptr<ChildProcess> start(const std::string& seconds) {
        auto manager = std::make_unique<ChildProcess>(
            ChildProcess::Words{VOXTREL_SERVICEMANAGER, "--exit-when-idle", seconds}, "");
        EXPECT_TRUE(manager->awaitError("voxtrel-servicemanager: ready\n"));
        return manager;
    }

    const TempFolder mFolder;
};

TEST_F(AnIdleManager, LeavesAndTakesItsSocketAlong) {
    const auto begin = Clock::now();
    const Outcome outcome = start("1")->finish();
    EXPECT_EQ(0, outcome.status);
    EXPECT_EQ("voxtrel-servicemanager: ready\nvoxtrel-servicemanager: idle\n", outcome.err);
    EXPECT_GE(Clock::now() - begin, std::chrono::seconds(1));
    EXPECT_FALSE(std::filesystem::exists(socketPath()));
}

TEST_F(AnIdleManager, StaysWhileSomebodyIsConnected) {
    const auto manager = start("5");  // long enough to connect on a busy machine
    {
        const LocalSocket client = LocalSocket::connectedTo(socketPath());
        ASSERT_TRUE(client.valid());
        // Another one shows when the time has been long enough.
        const TempFolder elsewhere;
        setenv("VOXTREL_BINDER_SOCKET", elsewhere.path("binder").c_str(), 1);
        EXPECT_EQ(0, start("6")->finish().status);
        EXPECT_TRUE(LocalSocket::connectedTo(socketPath()).valid());
    }
    EXPECT_EQ(0, manager->finish().status);
}

// Without threads nobody accepts: the connection waits where one waits that comes at the last
// moment.
TEST_F(AnIdleManager, DoesNotLeaveWhenSomebodyHasJustCome) {
    SocketRuntime runtime;
    const auto listener = Listener::open(runtime.context(), socketPath(), new android::BBinder());
    ASSERT_NE(nullptr, listener);
    {
        const LocalSocket client = LocalSocket::connectedTo(socketPath());
        ASSERT_TRUE(client.valid());
        EXPECT_FALSE(listener->leaveIfUnused());
    }
    EXPECT_TRUE(LocalSocket::connectedTo(socketPath()).valid()) << "it can still be found";
}

TEST_F(AnIdleManager, IsOutOfReachOnceItLeaves) {
    SocketRuntime runtime;
    const auto listener = Listener::open(runtime.context(), socketPath(), new android::BBinder());
    ASSERT_NE(nullptr, listener);
    EXPECT_TRUE(listener->leaveIfUnused());
    EXPECT_FALSE(LocalSocket::connectedTo(socketPath()).valid());
    EXPECT_FALSE(std::filesystem::exists(socketPath() + ".leaving"));
}

TEST_F(AnIdleManager, LeavesASocketOfAnotherOwnerWithThoseWhoCome) {
    const LocalSocket unit = LocalSocket::listeningAt(socketPath());
    SocketRuntime runtime;
    const auto listener = Listener::openAt(
        runtime.context(), android::transport::Fd(dup(unit.get())), new android::BBinder());
    ASSERT_NE(nullptr, listener);
    EXPECT_TRUE(listener->leaveIfUnused());
    const LocalSocket late = LocalSocket::connectedTo(socketPath());
    EXPECT_TRUE(late.valid());
    listener->onReady();
    const int accepted = accept(unit.get(), nullptr, nullptr);
    EXPECT_GE(accepted, 0) << "the one who came late is there for the next manager";
    close(accepted);
}

}  // namespace
