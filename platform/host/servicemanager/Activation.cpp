// SPDX-License-Identifier: Apache-2.0
#include "servicemanager/Activation.h"

#ifdef VOXTREL_HAVE_SYSTEMD
#include <sys/socket.h>
#include <systemd/sd-daemon.h>
#include <unistd.h>

#include <cstring>
#else
#include <unistd.h>

#include <cstdlib>
#endif

namespace servicemanager {

using android::transport::Fd;

#ifdef VOXTREL_HAVE_SYSTEMD

Fd takeListeningSocket(std::string& error) {
    const int count = sd_listen_fds(1);
    if (count == 0) {
        return Fd();
    }
    if (count < 0) {
        error = std::string("cannot take the socket over: ") + strerrordesc_np(-count);
    } else if (count > 1) {
        error = "takes over one socket, not " + std::to_string(count);
    } else if (sd_is_socket_unix(SD_LISTEN_FDS_START, SOCK_SEQPACKET, 1, nullptr, 0) <= 0) {
        error =
            "the descriptor that was handed over is no listening SOCK_SEQPACKET unix socket; "
            "the socket unit wants ListenSequentialPacket=";
    }
    for (int fd = 0; !error.empty() && fd < count; ++fd) {
        close(SD_LISTEN_FDS_START + fd);
    }
    return error.empty() ? Fd(SD_LISTEN_FDS_START) : Fd();
}

void tellReady() {
    (void)sd_notify(0, "READY=1\nSTATUS=Listening");  // fails where systemd did not start us
}

void tellStopping() {
    (void)sd_notify(0, "STOPPING=1");
}

#else

Fd takeListeningSocket(std::string& error) {
    // Not ignored: the socket would be taken for a stale one.
    const char* pid = std::getenv("LISTEN_PID");  // NOLINT(concurrency-mt-unsafe): read only
    if (pid != nullptr && pid == std::to_string(getpid())) {
        error = "was handed a socket, but has been built without systemd (VOXTREL_SYSTEMD)";
    }
    return Fd();
}

void tellReady() {}

void tellStopping() {}

#endif

}  // namespace servicemanager
