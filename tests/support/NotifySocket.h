// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SUPPORT_NOTIFYSOCKET_H
#define VOXTREL_TESTS_SUPPORT_NOTIFYSOCKET_H

#include <string>

namespace voxtrel_test {

/// Where a program tells systemd that it is ready; found by every process that the test starts from
/// now on. One at a time.
class NotifySocket {
public:
    explicit NotifySocket(const std::string& path);
    ~NotifySocket();
    NotifySocket(const NotifySocket&) = delete;
    NotifySocket& operator=(const NotifySocket&) = delete;

    /// The next message; empty when there is none for 60 s.
    std::string next() const;
    /// Is a message there already?
    bool hasMessage() const;

private:
    int mSocket;
};

}  // namespace voxtrel_test

#endif
