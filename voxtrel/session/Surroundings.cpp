// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/session/Surroundings.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>

namespace voxtrel {
namespace {

/// 0 when somebody listens, or the error. A listener that takes nobody at the moment is one, too.
int tryToConnect(int socket, const std::string& path) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path.size() >= sizeof address.sun_path) {
        return ENAMETOOLONG;
    }
    std::memcpy(address.sun_path, path.data(), path.size());
    const auto* const plain = reinterpret_cast<const sockaddr*>(&address);
    return connect(socket, plain, sizeof address) == 0 || errno == EAGAIN ? 0 : errno;
}

Peer listenerOf(int socket) {
    ucred credentials = {};
    socklen_t size = sizeof credentials;
    Peer peer;
    if (getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &credentials, &size) == 0 &&
        credentials.pid > 0) {
        peer.process = static_cast<std::uint32_t>(credentials.pid);
        peer.user = credentials.uid;
        peer.isStopped = isStopped(peer.process);
    }
    return peer;
}

Reach reachOf(int error) {
    switch (error) {
        case 0:
            return Reach::Connected;
        case EACCES:
        case EPERM:
            return Reach::ManagerNotPermitted;
        default:
            return Reach::NoManager;
    }
}

}  // namespace

bool isStopped(std::uint32_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    std::string line;
    std::getline(file, line);
    const std::size_t name = line.rfind(')');  // which may have blanks and brackets in it
    const char state = name + 2 < line.size() ? line[name + 2] : '?';
    return name != std::string::npos && (state == 'T' || state == 't');
}

Diagnosis lookAtSocket(const std::string& path) {
    Diagnosis seen;
    seen.transport = "socket";
    seen.path = path;
    const int file = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    seen.error = file < 0 ? errno : tryToConnect(file, path);
    if (file < 0) {
        seen.reach = Reach::Connected;  // this process has no descriptor left; that tells nothing
        return seen;
    }
    seen.reach = reachOf(seen.error);
    if (seen.error == 0) {
        seen.manager = listenerOf(file);
    }
    close(file);
    return seen;
}

Diagnosis lookAtDriver(const std::string& path) {
    Diagnosis seen;
    seen.transport = "driver";
    seen.path = path;
    seen.error = access(path.c_str(), R_OK | W_OK) == 0 ? 0 : errno;
    seen.reach = reachOf(seen.error);
    return seen;
}

}  // namespace voxtrel
