// SPDX-License-Identifier: Apache-2.0
#include "tests/support/NotifySocket.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <stdexcept>

namespace voxtrel_test {
namespace {

constexpr int kLimitMs = 60'000;

bool becomesReadable(int socket, int limitMs) {
    pollfd request = {socket, POLLIN, 0};
    return poll(&request, 1, limitMs) > 0;
}

}  // namespace

NotifySocket::NotifySocket(const std::string& path)
    : mSocket(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof(address.sun_path) - 1);
    if (bind(mSocket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
        throw std::runtime_error("cannot listen at " + path);
    }
    setenv("NOTIFY_SOCKET", path.c_str(), 1);
}

NotifySocket::~NotifySocket() {
    unsetenv("NOTIFY_SOCKET");
    close(mSocket);
}

std::string NotifySocket::next() const {
    char text[4096];
    const ssize_t size =
        becomesReadable(mSocket, kLimitMs) ? recv(mSocket, text, sizeof(text), 0) : 0;
    return std::string(text, size > 0 ? static_cast<size_t>(size) : 0);
}

bool NotifySocket::hasMessage() const {
    return becomesReadable(mSocket, 0);
}

}  // namespace voxtrel_test
