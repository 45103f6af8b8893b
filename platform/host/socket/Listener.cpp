// SPDX-License-Identifier: Apache-2.0
#include "socket/Listener.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>

#include "socket/ControlChannel.h"
#include "socket/Syscalls.h"
#include "support/Log.h"

namespace android::transport {

namespace {

constexpr int kBacklog = 128;
// While the backlog of a service manager is full.
constexpr std::chrono::milliseconds kConnectTimeout{100};
constexpr int kOutOfDescriptorsMs = 10;
constexpr int kLeavingAttempts = 5000;  // 1 ms each

bool fill(const std::string& path, sockaddr_un* address) {
    *address = {};
    address->sun_family = AF_UNIX;
    if (path.size() >= sizeof(address->sun_path)) {
        logLine("the socket path is too long: %s", path.c_str());
        errno = ENAMETOOLONG;
        return false;
    }
    std::memcpy(address->sun_path, path.data(), path.size());
    return true;
}

// A manager that is leaving has given its socket up already, and holds the lock for a moment more.
bool lockInTime(const Fd& lock, const std::string& path) {
    for (int attempt = 0; flock(lock.get(), LOCK_EX | LOCK_NB) != 0; ++attempt) {
        if (attempt == kLeavingAttempts || access(path.c_str(), F_OK) == 0) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

// The file lock, not the socket, decides who is the service manager: a socket outlives its process.
Fd takeLock(const std::string& path) {
    Fd lock(::open((path + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!lock.valid()) {
        logLine("cannot make %s.lock: %s", path.c_str(), strerrordesc_np(errno));
    } else if (!lockInTime(lock, path)) {
        logLine("there is a service manager already at %s", path.c_str());
        lock.reset();
    }
    return lock;
}

/// What a connection fails with: 0 where somebody takes it. Nobody has a socket any more that
/// refuses.
int errorOfConnecting(const sockaddr_un& address) {
    const Fd probe(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    const bool connects =
        probe.valid() &&
        connect(probe.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
    return connects ? 0 : errno;
}

// Removes the socket of a service manager that has died; any other file is left alone.
bool removeOldSocket(const std::string& path) {
    sockaddr_un address;
    if (!fill(path, &address)) {
        return false;
    }
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0) {
        return true;
    }
    if (!S_ISSOCK(status.st_mode)) {
        logLine("%s is there already, and is no socket", path.c_str());
        return false;
    }
    const int error = errorOfConnecting(address);
    if (error == 0 || error == EAGAIN || error == EPROTOTYPE) {
        logLine("somebody else listens at %s, perhaps a socket unit of systemd's", path.c_str());
        return false;
    }
    if (error != ECONNREFUSED && error != ENOENT) {
        logLine("cannot tell whether somebody listens at %s: %s", path.c_str(),
                strerrordesc_np(error));
        return false;
    }
    if (unlink(path.c_str()) != 0 && errno != ENOENT) {
        logLine("cannot remove %s, of a service manager that has died: %s", path.c_str(),
                strerrordesc_np(errno));
        return false;
    }
    return true;
}

/// Opens the file as far as it is to be. Nobody can connect yet: the socket does not listen. A link
/// that has taken its place is not followed: it would open somebody else's file.
bool grant(const std::string& path, const SocketAccess& access) {
    if (access.group.has_value() &&
        lchown(path.c_str(), static_cast<uid_t>(-1), *access.group) != 0) {
        const int error = errno;
        logLine("cannot give the socket to group %u: %s; its members and root may",
                static_cast<unsigned>(*access.group), strerrordesc_np(error));
        errno = error;
        return false;
    }
    return fchmodat(AT_FDCWD, path.c_str(), access.mode, AT_SYMLINK_NOFOLLOW) == 0;
}

/// The mode that a socket has before it is bound is the most that its file gets.
bool bindFor(const Fd& socket, const std::string& path) {
    sockaddr_un address;
    return fill(path, &address) && fchmod(socket.get(), SocketAccess::kOwnerOnly) == 0 &&
           bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
}

/// Under another name, for whoever waits for the file may connect as soon as it is there: it gets
/// its own when the socket listens. A path that leaves no room for another name is there at once.
std::string unreadyName(const std::string& path) {
    const std::string name = path + ".new";
    return name.size() < sizeof(sockaddr_un::sun_path) ? name : path;
}

bool listenAt(const std::string& path, const Fd& socket, const SocketAccess& access) {
    const std::string unready = unreadyName(path);
    if (!bindFor(socket, unready)) {
        return false;
    }
    const bool listens = grant(unready, access) && listen(socket.get(), kBacklog) == 0;
    // A link is refused where somebody has taken the name meanwhile, and a renaming is not.
    const bool isDone = listens && (unready == path || link(unready.c_str(), path.c_str()) == 0);
    const int error = errno;
    if (!isDone || unready != path) {
        (void)unlink(unready.c_str());
    }
    errno = error;
    return isDone;
}

constexpr mode_t kMayEnter = S_IXGRP | S_IXOTH;

/// A socket that others may open is of no use to them where its folder lets nobody in.
void warnOfClosedFolder(const std::string& path, const SocketAccess& access) {
    const std::string folder = folderOf(path);
    struct stat status {};
    if ((access.mode & (S_IWGRP | S_IWOTH)) != 0 && stat(folder.c_str(), &status) == 0 &&
        (status.st_mode & kMayEnter) == 0) {
        logLine("other users may open %s, but not enter its folder %s (mode %03o)", path.c_str(),
                folder.c_str(), static_cast<unsigned>(status.st_mode & 0777));
    }
}

std::shared_ptr<Listener> added(const Context& context, std::shared_ptr<Listener> listener) {
    if (!context.reactor.add(listener)) {
        logLine("cannot wait for connections: out of memory, or of what may be waited for");
        return nullptr;
    }
    return listener;
}

}  // namespace

std::shared_ptr<Listener> Listener::open(const Context& context, const std::string& path,
                                         const sp<BBinder>& manager, const SocketAccess& access) {
    makeFolderOf(path);
    sockaddr_un address;
    if (!fill(path, &address)) {
        return nullptr;
    }
    if (!folderIsTrusted(path)) {
        logLine("the folder of %s is not this user's alone", path.c_str());
        return nullptr;
    }
    Fd lock = takeLock(path);
    if (!lock.valid() || !removeOldSocket(path) || !removeOldSocket(unreadyName(path))) {
        return nullptr;
    }
    Fd socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!socket.valid() || !nameSenders(socket) || !listenAt(path, socket, access)) {
        logLine("cannot listen at %s: %s", path.c_str(), strerrordesc_np(errno));
        return nullptr;
    }
    warnOfClosedFolder(path, access);
    auto listener =
        std::make_shared<Listener>(context, std::move(socket), std::move(lock), path, manager);
    return added(context, std::move(listener));
}

std::shared_ptr<Listener> Listener::openAt(const Context& context, Fd socket,
                                           const sp<BBinder>& manager) {
    const int flags = fcntl(socket.get(), F_GETFL);
    // Those who connect are told who has called listen() last: the manager is to be this process
    // for them, not whoever has made the socket.
    if (flags < 0 || fcntl(socket.get(), F_SETFL, flags | O_NONBLOCK) != 0 ||
        listen(socket.get(), SOMAXCONN) != 0 || !nameSenders(socket)) {
        logLine("cannot use the socket that was handed over: %s", strerrordesc_np(errno));
        return nullptr;
    }
    auto listener = std::make_shared<Listener>(context, std::move(socket), Fd(), "", manager);
    return added(context, std::move(listener));
}

Listener::Listener(const Context& context, Fd socket, Fd lock, std::string path,
                   const sp<BBinder>& manager)
    : EventHandler(std::move(socket)),
      mContext(context),
      mLock(std::move(lock)),
      mPath(std::move(path)),
      mManager(manager) {}

bool Listener::hasConnections() const {
    pollfd request = {socket().get(), POLLIN, 0};
    return poll(&request, 1, 0) != 0 || !mContext.quotas.unusedSince().has_value();
}

bool Listener::leaveIfUnused() {
    Mutex::Autolock held(mAdmitting);
    const std::string hidden = mPath + ".leaving";
    if (mLeft || hasConnections() ||
        (!mPath.empty() && rename(mPath.c_str(), hidden.c_str()) != 0)) {
        return mLeft;
    }
    mLeft = !hasConnections();  // some may have come before it was renamed
    if (!mPath.empty()) {
        (void)(mLeft ? unlink(hidden.c_str()) : rename(hidden.c_str(), mPath.c_str()));
    }
    return mLeft;
}

void Listener::onReady() {
    Mutex::Autolock held(mAdmitting);
    if (mLeft) {
        return;  // a late connection is for the next service manager
    }
    for (;;) {
        Fd control(sys::accept(socket().get()));
        if (control.valid()) {
            admit(std::move(control));
        } else if (errno == EMFILE || errno == ENFILE) {
            // The reserve is used up by what calls bring along, and soon there again.
            logLimited("out of file descriptors: connections wait");
            (void)poll(nullptr, 0, kOutOfDescriptorsMs);
            break;
        } else if (errno != EINTR && errno != ECONNABORTED) {
            break;
        }
    }
    mContext.reactor.rearm(*this);
}

void Listener::admit(Fd control) const {
    const PeerIdentity peer = peerOf(control);
    if (peer.pid == 0) {
        logLimited("a connection of a process that cannot be seen from here is refused");
        return;
    }
    QuotaCharge charge(mContext.quotas, peer, control.get());
    if (!charge.granted()) {
        logLimited("process %d or its user has too many connections: another one is refused",
                   static_cast<int>(peer.pid));
        return;
    }
    if (nameSenders(control)) {
        // When that fails the channel goes, and its peer sees a hang-up.
        (void)mContext.reactor.add(std::make_shared<ControlChannel>(mContext, std::move(control),
                                                                    mManager, std::move(charge)));
    }
}

Fd connectTo(const std::string& path) {
    sockaddr_un address;
    if (!fill(path, &address) || !folderIsTrusted(path)) {
        return Fd();
    }
    Fd socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
    const timeval timeout = {0, std::chrono::microseconds(kConnectTimeout).count()};
    (void)setsockopt(socket.get(), SOL_SOCKET, SO_SNDTIMEO, &timeout,
                     sizeof(timeout));  // fails where there is no socket
    // The kernel's time limit begins anew after each signal.
    const auto end = std::chrono::steady_clock::now() + kConnectTimeout;
    int result = 0;
    do {
        result =
            connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address));
    } while (result != 0 && errno == EINTR && std::chrono::steady_clock::now() < end);
    return result == 0 ? std::move(socket) : Fd();
}

}  // namespace android::transport
