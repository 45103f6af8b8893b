// SPDX-License-Identifier: Apache-2.0
// How open the socket is from one system call to the next, while it is made.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>

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

Sight look(const std::string& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0 ? Sight{status.st_mode & 07777, status.st_gid}
                                             : Sight{};
}

/// What the file was when a call had been made, or was about to be.
struct Sights {
    std::string path;  // by which it is found
    std::string made;  // as which it was made
    Sight bound;
    Sight listening;
    bool foundTooEarly = false;
    std::function<void()> onListening = [] {};
};

Sights* gSights = nullptr;

}  // namespace

// In the place of the C library's.
extern "C" {

int bind(int socket, const sockaddr* address, socklen_t length) {
    const auto result = static_cast<int>(syscall(SYS_bind, socket, address, length));
    if (gSights != nullptr) {
        gSights->made = reinterpret_cast<const sockaddr_un*>(address)->sun_path;
        gSights->bound = look(gSights->made);
    }
    return result;
}

int listen(int socket, int backlog) {
    if (gSights != nullptr) {
        gSights->listening = look(gSights->made);
        gSights->foundTooEarly = access(gSights->path.c_str(), F_OK) == 0;
        gSights->onListening();
    }
    return static_cast<int>(syscall(SYS_listen, socket, backlog));
}
}

namespace {

// A service that starts as soon as the file is there would find nobody listening.
TEST(ASocketThatIsMade, IsFoundOnceItListensAndIsWhatWasAskedForAndItsUsersAloneBefore) {
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
    EXPECT_FALSE(sights.foundTooEarly);
    EXPECT_EQ(0620U, look(sights.path).mode);
    EXPECT_EQ(group, look(sights.path).group);
    EXPECT_NE(0, access(sights.made.c_str(), F_OK));
}

std::shared_ptr<Listener> openOnce(const std::string& path) {
    SocketRuntime runtime;
    return Listener::open(runtime.context(), path, new android::BBinder());
}

TEST(ASocketThatIsMade, ReplacesThoseOfDeadServiceManagers) {
    const voxtrel_test::TempFolder folder;
    Sights sights;
    sights.path = folder.path("binder");
    gSights = &sights;
    EXPECT_NE(nullptr, openOnce(sights.path));
    ASSERT_EQ(0, link(sights.path.c_str(), sights.made.c_str()));  // it died before it was done
    EXPECT_NE(nullptr, openOnce(sights.path));
    gSights = nullptr;
    EXPECT_NE(0, access(sights.made.c_str(), F_OK));
}

TEST(ASocketThatIsMade, ReplacesNoOtherFileOfEitherName) {
    const voxtrel_test::TempFolder folder;
    const std::string path = folder.path("binder");
    for (const std::string& taken : {path, path + ".new"}) {
        std::ofstream(taken) << "mine";
        EXPECT_EQ(nullptr, openOnce(path));
        EXPECT_EQ(4U, std::filesystem::file_size(taken));
        std::filesystem::remove(taken);
    }
    EXPECT_NE(nullptr, openOnce(path));
}

TEST(ASocketThatIsMade, ReplacesNoOtherSocketThatIsInUse) {
    const voxtrel_test::TempFolder folder;
    const std::string path = folder.path("binder");
    for (const std::string& taken : {path, path + ".new"}) {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        taken.copy(address.sun_path, sizeof(address.sun_path) - 1);
        const android::transport::Fd other(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        ASSERT_EQ(0,
                  bind(other.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address));
        ASSERT_EQ(0, listen(other.get(), 1));
        EXPECT_EQ(nullptr, openOnce(path));
        EXPECT_EQ(0, access(taken.c_str(), F_OK));
        std::filesystem::remove(taken);
    }
}

// As a socket unit's, which holds no lock.
TEST(ASocketThatIsMade, ReplacesNoneThatIsMadeMeanwhile) {
    const voxtrel_test::TempFolder folder;
    Sights sights;
    sights.path = folder.path("binder");
    sights.onListening = [&sights] { std::ofstream(sights.path) << "mine"; };
    gSights = &sights;
    EXPECT_EQ(nullptr, openOnce(sights.path));
    gSights = nullptr;
    EXPECT_EQ(4U, std::filesystem::file_size(sights.path));
    EXPECT_NE(0, access(sights.made.c_str(), F_OK));
}

TEST(ASocketThatIsMade, MayHaveAPathAsLongAsAnAddressHolds) {
    const voxtrel_test::TempFolder folder;
    const size_t longest = sizeof(sockaddr_un::sun_path) - 1;
    const std::string begin = folder.path("");
    for (const size_t length : {longest - 4, longest - 3, longest}) {
        const std::string path = begin + std::string(length - begin.size(), 'x');
        EXPECT_NE(nullptr, openOnce(path)) << length;
        EXPECT_EQ(0, access(path.c_str(), F_OK)) << length;
    }
    const std::string path = begin + std::string(longest + 1 - begin.size(), 'y');
    EXPECT_EQ(nullptr, openOnce(path));
    EXPECT_NE(0, access((path + ".lock").c_str(), F_OK));
}

}  // namespace
