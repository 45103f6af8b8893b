// SPDX-License-Identifier: Apache-2.0
#include "tests/soak/StrangerLife.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "tests/soak/Orders.h"

namespace soak {
namespace {

/// -1 where nobody listens.
int connectionTo(const std::string& path) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof(address.sun_path) - 1);
    const int file = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (connect(file, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
        close(file);
        return -1;
    }
    return file;
}

}  // namespace

StrangerLife::StrangerLife(const std::string& ledger, unsigned seed)
    : mLedger(ledger), mRandom(seed) {}

int StrangerLife::live() {
    obeyOrders([this] { return std::chrono::milliseconds(upTo(300)); }, [this] { act(); });
    std::for_each(mConnections.begin(), mConnections.end(), close);
    mLedger.exited("stranger", mWasHeard ? 0 : 1);
    mLedger.left();
    confirmEnd();
    return 0;
}

void StrangerLife::act() {
    constexpr std::size_t kMostKept = 4;
    const int connection = connectionTo(std::getenv("VOXTREL_BINDER_SOCKET"));
    if (connection < 0) {
        return;
    }
    mConnections.push_back(connection);
    if (mConnections.size() > kMostKept) {
        close(mConnections.front());
        mConnections.erase(mConnections.begin());
    }
    for (const int each : mConnections) {
        sendTo(each);
    }
}

void StrangerLife::sendTo(int connection) {
    const std::string bytes = anyBytes();
    // It may have been closed.
    mWasHeard |= send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL) >= 0;
}

/// Mostly short, and mostly with small numbers, as what means something has.
std::string StrangerLife::anyBytes() {
    std::string bytes(upTo(upTo(3) == 0 ? 2000 : 64), '\0');
    const unsigned most = upTo(1) == 0 ? 255 : 4;
    for (char& byte : bytes) {
        byte = static_cast<char>(upTo(most));
    }
    return bytes;
}

unsigned StrangerLife::upTo(unsigned most) {
    return std::uniform_int_distribution<unsigned>(0, most)(mRandom);
}

}  // namespace soak
