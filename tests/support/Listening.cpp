// SPDX-License-Identifier: Apache-2.0
#include "tests/support/Listening.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <stdexcept>

#include "tests/support/Eventually.h"

namespace voxtrel_test {
namespace {

bool listens(const std::string& path, int type) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::strncpy(address.sun_path, path.c_str(), sizeof(address.sun_path) - 1);
    const int probe = socket(AF_UNIX, type | SOCK_CLOEXEC, 0);
    const bool connected =
        connect(probe, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
    close(probe);
    return connected;
}

}  // namespace

void awaitListener(const std::string& path, int type, const std::string& who) {
    if (!eventually([&] { return listens(path, type); })) {
        throw std::runtime_error(who + " does not listen");
    }
}

}  // namespace voxtrel_test
