// SPDX-License-Identifier: Apache-2.0
// Who may listen where the service manager is looked for.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>

#include "tests/servicemanager/LocalSocket.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Eventually.h"
#include "tests/support/TempFolder.h"

using namespace voxtrel_test;

namespace {

constexpr const char* kReady = "voxtrel-servicemanager: ready\n";

class ThePlace : public ::testing::Test {
protected:
    ThePlace() { setenv("VOXTREL_BINDER_SOCKET", socketPath().c_str(), 1); }
    std::string socketPath() const { return mFolder.path("binder"); }

    static std::unique_ptr<ChildProcess> start() {
        return std::make_unique<ChildProcess>(ChildProcess::Words{VOXTREL_SERVICEMANAGER}, "");
    }

    const TempFolder mFolder;
};

ino_t fileAt(const std::string& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0 ? status.st_ino : 0;
}

TEST_F(ThePlace, OfASocketUnitIsNotTaken) {
    const LocalSocket unit = LocalSocket::listeningAt(socketPath());
    ASSERT_TRUE(unit.valid());
    const ino_t before = fileAt(socketPath());
    const Outcome outcome = start()->finish();
    EXPECT_EQ(1, outcome.status);
    EXPECT_NE(std::string::npos, outcome.err.find("somebody else listens at " + socketPath()))
        << outcome.err;
    EXPECT_EQ(before, fileAt(socketPath()));
}

TEST_F(ThePlace, OfADeadOneIsTaken) {
    const auto first = start();
    ASSERT_TRUE(first->awaitError(kReady));
    first->kill(SIGKILL);
    EXPECT_EQ(128 + SIGKILL, first->finish().status);
    ASSERT_NE(0U, fileAt(socketPath()));
    const auto second = start();
    EXPECT_TRUE(second->awaitError(kReady));
    EXPECT_TRUE(LocalSocket::connectedTo(socketPath()).valid());
}

TEST_F(ThePlace, OfALivingOneIsNotTaken) {
    const auto first = start();
    ASSERT_TRUE(first->awaitError(kReady));
    const Outcome second = start()->finish();
    EXPECT_EQ(1, second.status);
    EXPECT_NE(std::string::npos,
              second.err.find("there is a service manager already at " + socketPath()))
        << second.err;
}

bool isTriedByAnother(const std::string& path) {
    // The one that waits has the file open: only it and this process do.
    using Folder = std::filesystem::directory_iterator;
    int holders = 0;
    std::error_code gone;  // processes and their files may go while they are looked at
    for (Folder process("/proc", gone), end; process != end; process.increment(gone)) {
        for (Folder file(process->path() / "fd", gone); file != end; file.increment(gone)) {
            holders += std::filesystem::read_symlink(file->path(), gone) == path ? 1 : 0;
        }
    }
    return holders >= 2;
}

TEST_F(ThePlace, OfOneThatIsLeavingIsTakenWhenItHasLeft) {
    const std::string lockPath = socketPath() + ".lock";
    const int lock = open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    ASSERT_EQ(0, flock(lock, LOCK_EX | LOCK_NB));
    const auto next = start();
    ASSERT_TRUE(eventually([&] { return isTriedByAnother(lockPath); }));
    close(lock);
    EXPECT_TRUE(next->awaitError(kReady));
}

TEST_F(ThePlace, IsLeftInOrderOnASignal) {
    for (const auto& [number, line] :
         {std::pair{SIGTERM, "voxtrel-servicemanager: stopped\n"},
          std::pair{SIGINT, "voxtrel-servicemanager: interrupted\n"}}) {
        const auto manager = start();
        ASSERT_TRUE(manager->awaitError(kReady));
        manager->kill(number);
        const Outcome outcome = manager->finish();
        EXPECT_EQ(0, outcome.status);
        EXPECT_EQ(std::string(kReady) + line, outcome.err);
    }
}

}  // namespace
