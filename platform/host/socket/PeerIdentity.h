// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_PEERIDENTITY_H
#define VOXTREL_SOCKET_PEERIDENTITY_H

#include <sys/types.h>

namespace android::transport {

/// A process and its user, as the kernel names them.
struct PeerIdentity {
    pid_t pid;
    uid_t uid;
};

}  // namespace android::transport

#endif
