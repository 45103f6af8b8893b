// SPDX-License-Identifier: Apache-2.0
#include "tests/servicemanager/LocalSocket.h"

#include <poll.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <utility>

namespace voxtrel_test {
namespace {

constexpr int kLimitMs = 60'000;

sockaddr_un addressOf(const std::string& path) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof(address.sun_path) - 1);
    return address;
}

using Operation = int (*)(int, const sockaddr*, socklen_t);

int makeSocket(const std::string& path, int type, Operation operation) {
    const sockaddr_un address = addressOf(path);
    const int made = socket(AF_UNIX, type | SOCK_CLOEXEC, 0);
    if (operation(made, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0) {
        return made;
    }
    close(made);
    return -1;
}

}  // namespace

LocalSocket LocalSocket::listeningAt(const std::string& path) {
    LocalSocket made(makeSocket(path, SOCK_SEQPACKET, &bind));
    (void)listen(made.mFd, 8);
    return made;
}

LocalSocket LocalSocket::connectedTo(const std::string& path, int type) {
    return LocalSocket(makeSocket(path, type, &connect));
}

LocalSocket::LocalSocket(LocalSocket&& other) noexcept : mFd(std::exchange(other.mFd, -1)) {}

LocalSocket::~LocalSocket() {
    if (mFd >= 0) {
        close(mFd);
    }
}

bool LocalSocket::hangsUp() const {
    pollfd request = {mFd, POLLRDHUP, 0};
    return poll(&request, 1, kLimitMs) > 0;
}

}  // namespace voxtrel_test
