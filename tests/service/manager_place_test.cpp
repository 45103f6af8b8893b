// SPDX-License-Identifier: Apache-2.0
// The socket of a service manager that is started at the same moment as the service.
#include "service/ManagerPlace.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <string>
#include <utility>

#include "tests/support/TempFolder.h"

namespace {

std::function<void()> gAfterLook;

}  // namespace

// In the place of the C library's: the test has its turn once somebody has looked.
extern "C" int access(const char* path, int mode) noexcept {
    const auto result = static_cast<int>(syscall(SYS_faccessat, AT_FDCWD, path, mode));
    const int error = errno;
    if (gAfterLook != nullptr) {
        std::exchange(gAfterLook, nullptr)();
    }
    errno = error;
    return result;
}

namespace voxtreld {
namespace {

void bindSocketAt(const std::string& path) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const int bound = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    EXPECT_EQ(0, bind(bound, reinterpret_cast<const sockaddr*>(&address), sizeof address));
    close(bound);
}

TEST(ThePlaceOfAManager, IsUsableWhenTheSocketComesAMomentLater) {
    const voxtrel_test::TempFolder folder;
    const std::string path = folder.path("binder");
    setenv("VOXTREL_BINDER_SOCKET", path.c_str(), 1);
    bool hasCome = false;
    gAfterLook = [&] {
        bindSocketAt(path);
        hasCome = true;
    };
    sigset_t none;
    sigemptyset(&none);
    std::string error;
    EXPECT_TRUE(isManagerPlaceUsable(none, error)) << error;
    EXPECT_TRUE(hasCome) << "and was missing at first";
    EXPECT_EQ("", error);
}

}  // namespace
}  // namespace voxtreld
