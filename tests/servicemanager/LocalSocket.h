// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SERVICEMANAGER_LOCALSOCKET_H
#define VOXTREL_TESTS_SERVICEMANAGER_LOCALSOCKET_H

#include <sys/socket.h>

#include <string>

namespace voxtrel_test {

/// A unix socket of the test's own; SOCK_SEQPACKET, like the service manager's.
class LocalSocket {
public:
    static LocalSocket listeningAt(const std::string& path);
    /// Not valid when nobody listens there.
    static LocalSocket connectedTo(const std::string& path, int type = SOCK_SEQPACKET);

    LocalSocket(LocalSocket&& other) noexcept;
    LocalSocket& operator=(LocalSocket&& other) = delete;
    ~LocalSocket();

    bool valid() const { return mFd >= 0; }
    int get() const { return mFd; }
    /// Has the other side closed it? Waits up to 60 s for that.
    bool hangsUp() const;

private:
    explicit LocalSocket(int fd) : mFd(fd) {}

    int mFd;
};

}  // namespace voxtrel_test

#endif
