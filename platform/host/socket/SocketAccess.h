// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_SOCKETACCESS_H
#define VOXTREL_SOCKET_SOCKETACCESS_H

#include <sys/types.h>

#include <optional>

namespace android::transport {

/// Who may connect to the service manager's socket: whoever the mode of its file lets write.
struct SocketAccess {
    static constexpr mode_t kOwnerOnly = 0600;

    mode_t mode = kOwnerOnly;
    std::optional<gid_t> group;  ///< of the file; else the one that the kernel gives it
};

}  // namespace android::transport

#endif
