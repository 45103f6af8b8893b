// SPDX-License-Identifier: Apache-2.0
// How open the socket is from one system call to the next, while it is made.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <binder/Binder.h>

#include "socket/Listener.h"
#include "socket/SocketRuntime.h"
#include "tests/support/TempFolder.h"

using android::transport::Listener;
using android::transport::SocketRuntime;

namespace {

struct Sight {
    mode_t mode = 0;
    gid_t group = 0;
};

/// What the file was when a call had been made, or was about to be.
struct Sights {
    std::string path;
    Sight bound;
    Sight listening;

    Sight look() const {
        struct stat status {};
        return lstat(path.c_str(), &status) == 0 ? Sight{status.st_mode & 07777, status.st_gid}
                                                 : Sight{};
    }
};

Sights* gSights = nullptr;

}  // namespace

// In the place of the C library's.
extern "C" {

int bind(int socket, const sockaddr* address, socklen_t length) {
    const auto result = static_cast<int>(syscall(SYS_bind, socket, address, length));
    if (gSights != nullptr) {
        gSights->bound = gSights->look();
    }
    return result;
}

int listen(int socket, int backlog) {
    if (gSights != nullptr) {
        gSights->listening = gSights->look();
    }
    return static_cast<int>(syscall(SYS_listen, socket, backlog));
}
}

namespace {

TEST(ASocketThatIsMade, IsItsUsersAloneUntilItIsWhatWasAskedForAndListensThenOnly) {
    const voxtrel_test::TempFolder folder;
    const gid_t group = geteuid() == 0 ? 54321 : getegid();
    Sights sights;
    sights.path = folder.path("binder");
    gSights = &sights;
    const mode_t before = umask(0);
    SocketRuntime runtime;
    const auto listener =
        Listener::open(runtime.context(), sights.path, new android::BBinder(), {0620, group});
    umask(before);
    gSights = nullptr;
    ASSERT_NE(nullptr, listener);
    EXPECT_EQ(0600U, sights.bound.mode);
    EXPECT_EQ(0620U, sights.listening.mode);
    EXPECT_EQ(group, sights.listening.group);
}

}  // namespace
