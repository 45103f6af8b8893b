// SPDX-License-Identifier: Apache-2.0
#include "tests/speech_dispatcher/ServerConnection.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <stdexcept>

namespace voxtrel_test {

ServerConnection::ServerConnection(const std::string& path)
    : mSocket(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof(address.sun_path) - 1);
    if (connect(mSocket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
        throw std::runtime_error("the server does not listen");
    }
}

ServerConnection::~ServerConnection() {
    close(mSocket);
}

void ServerConnection::say(const std::string& line) {
    const std::string bytes = line + "\r\n";
    ASSERT_EQ(static_cast<ssize_t>(bytes.size()),
              send(mSocket, bytes.data(), bytes.size(), MSG_NOSIGNAL));
}

std::string ServerConnection::readLine() {
    constexpr int kLimitMs = 60000;
    std::size_t end = 0;
    while ((end = mBuffer.find('\n')) == std::string::npos) {
        pollfd source = {mSocket, POLLIN, 0};
        char bytes[4096];
        const ssize_t size =
            poll(&source, 1, kLimitMs) == 1 ? recv(mSocket, bytes, sizeof bytes, 0) : -1;
        if (size <= 0) {
            throw std::runtime_error("the server says no more");
        }
        mBuffer.append(bytes, static_cast<std::size_t>(size));
    }
    std::string line = mBuffer.substr(0, end);
    mBuffer.erase(0, end + 1);
    return line;
}

void ServerConnection::await(const std::string& begin) {
    while (readLine().compare(0, begin.size(), begin) != 0) {
    }
}

}  // namespace voxtrel_test
