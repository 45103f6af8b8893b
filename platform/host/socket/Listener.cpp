// SPDX-License-Identifier: Apache-2.0
#include "socket/Listener.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
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
// Of 1 ms each, while the backlog of a service manager is full.
constexpr int kConnectAttempts = 100;
constexpr int kOutOfDescriptorsMs = 10;
constexpr int kLeavingAttempts = 5000;  // 1 ms each
constexpr const char* kLeaving = ".leaving";

bool fill(const std::string& path, sockaddr_un* address) {
    *address = {};
    address->sun_family = AF_UNIX;
    if (path.size() >= sizeof(address->sun_path)) {
        logLine("the socket path is too long: %s", path.c_str());
        return false;
    }
    std::memcpy(address->sun_path, path.data(), path.size());
    return true;
}

Fd spare() {
    return Fd(::open("/dev/null", O_RDONLY | O_CLOEXEC));
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

bool isListenedAt(const sockaddr_un& address) {
    const Fd probe(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    return probe.valid() && (connect(probe.get(), reinterpret_cast<const sockaddr*>(&address),
                                     sizeof(address)) == 0 ||
                             errno == EAGAIN);
}

// The socket of a service manager that has died; any other file is left alone.
bool removeOldSocket(const std::string& path, const sockaddr_un& address) {
    struct stat status {};
    if (lstat(path.c_str(), &status) != 0) {
        return true;
    }
    if (!S_ISSOCK(status.st_mode)) {
        logLine("%s is there already, and is no socket", path.c_str());
        return false;
    }
    if (isListenedAt(address)) {
        logLine("somebody else listens at %s, perhaps a socket unit of systemd's", path.c_str());
        return false;
    }
    return unlink(path.c_str()) == 0;
}

/// The file of the socket that this process has bound, whatever its path leads to by now.
Fd fileOf(const std::string& path) {
    Fd file(::open(path.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    struct stat status {};
    const bool isOurs = file.valid() && fstat(file.get(), &status) == 0 &&
                        S_ISSOCK(status.st_mode) && status.st_uid == geteuid();
    errno = file.valid() && !isOurs ? EPERM : errno;
    return isOurs ? std::move(file) : Fd();
}

/// Opens the file as far as it is to be. Nobody can connect yet: the socket does not listen.
bool grant(const std::string& path, const SocketAccess& access) {
    const Fd file = fileOf(path);
    if (!file.valid()) {
        return false;
    }
    if (access.group.has_value() &&
        fchownat(file.get(), "", static_cast<uid_t>(-1), *access.group, AT_EMPTY_PATH) != 0) {
        const int error = errno;
        logLine("cannot give %s to group %u: %s; its members and root may", path.c_str(),
                static_cast<unsigned>(*access.group), strerrordesc_np(error));
        errno = error;
        return false;
    }
    // A path that leads elsewhere by now would open somebody else's file.
    return chmod(("/proc/self/fd/" + std::to_string(file.get())).c_str(), access.mode) == 0;
}

/// The mode that a socket has before it is bound is the most that its file gets.
bool bindFor(const Fd& socket, const std::string& path, const sockaddr_un& address,
             const SocketAccess& access) {
    if (fchmod(socket.get(), SocketAccess::kOwnerOnly) != 0 ||
        bind(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
        return false;
    }
    if (grant(path, access)) {
        return true;
    }
    const int error = errno;
    (void)unlink(path.c_str());
    errno = error;
    return false;
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
    if (!lock.valid() || !removeOldSocket(path, address)) {
        return nullptr;
    }
    Fd socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    if (!socket.valid() || !nameSenders(socket) || !bindFor(socket, path, address, access) ||
        listen(socket.get(), kBacklog) != 0) {
        logLine("cannot listen at %s: %s", path.c_str(), strerrordesc_np(errno));
        return nullptr;
    }
    warnOfClosedFolder(path, access);
    auto listener =
        std::make_shared<Listener>(context, std::move(socket), std::move(lock), path, manager);
    return context.reactor.add(listener) ? listener : nullptr;
}

std::shared_ptr<Listener> Listener::openAt(const Context& context, Fd socket,
                                           const sp<BBinder>& manager) {
    const int flags = fcntl(socket.get(), F_GETFL);
    if (flags < 0 || fcntl(socket.get(), F_SETFL, flags | O_NONBLOCK) != 0 ||
        !nameSenders(socket)) {
        logLine("cannot use the socket that was handed over: %s", strerrordesc_np(errno));
        return nullptr;
    }
    auto listener = std::make_shared<Listener>(context, std::move(socket), Fd(), "", manager);
    return context.reactor.add(listener) ? listener : nullptr;
}

Listener::Listener(const Context& context, Fd socket, Fd lock, std::string path,
                   const sp<BBinder>& manager)
    : EventHandler(std::move(socket)),
      mContext(context),
      mLock(std::move(lock)),
      mPath(std::move(path)),
      mSpare(spare()),
      mManager(manager) {}

bool Listener::hasConnections() const {
    pollfd request = {socket().get(), POLLIN, 0};
    return poll(&request, 1, 0) != 0 || !mContext.quotas.unusedSince().has_value();
}

bool Listener::hideSocket() const {
    return mPath.empty() || rename(mPath.c_str(), (mPath + kLeaving).c_str()) == 0;
}

void Listener::showSocket() const {
    if (!mPath.empty()) {
        (void)rename((mPath + kLeaving).c_str(), mPath.c_str());
    }
}

bool Listener::leaveIfUnused() {
    Mutex::Autolock held(mAdmitting);
    if (mLeft || hasConnections() || !hideSocket()) {
        return mLeft;
    }
    if (hasConnections()) {  // made before the socket was renamed
        showSocket();
        return false;
    }
    mLeft = true;
    if (!mPath.empty()) {
        (void)unlink((mPath + kLeaving).c_str());
    }
    return true;
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
            if (!turnOneAway()) {
                break;
            }
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

bool Listener::turnOneAway() {
    if (!mSpare.valid()) {
        // Another thread of the process has taken its number: wait for descriptors.
        (void)poll(nullptr, 0, kOutOfDescriptorsMs);
    }
    mSpare.reset();
    Fd unlucky(sys::accept(socket().get()));
    logLimited("out of file descriptors: a connection is refused");
    unlucky.reset();
    mSpare = spare();
    return mSpare.valid();
}

Fd connectTo(const std::string& path) {
    sockaddr_un address;
    if (!fill(path, &address) || !folderIsTrusted(path)) {
        return Fd();
    }
    Fd socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    for (int attempt = 0; socket.valid() && attempt < kConnectAttempts; ++attempt) {
        if (connect(socket.get(), reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0) {
            return socket;
        }
        if (errno != EAGAIN && errno != EINTR) {
            return Fd();
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return Fd();
}

}  // namespace android::transport
