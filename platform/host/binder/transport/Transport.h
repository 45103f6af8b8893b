// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BINDER_TRANSPORT_TRANSPORT_H
#define VOXTREL_BINDER_TRANSPORT_TRANSPORT_H

#include <chrono>
#include <cstddef>
#include <optional>

#include "binder/IBinder.h"
#include "socket/Fd.h"
#include "socket/SocketAccess.h"

namespace android::transport {

/// What the classes of the public API ask of whatever moves calls between processes, beside the
/// references themselves. Another way of moving them (the kernel's own driver) takes its place
/// here.
///
/// Called on: any thread. Locks: the implementation's own.
class Transport {
public:
    virtual ~Transport() = default;

    /// The proxy of the service manager's node; null when there is none.
    virtual sp<IBinder> contextObject() = 0;
    /// This process becomes the service manager, for those whom `access` lets in. False when there
    /// is one already, or its place cannot be had; the log says which.
    virtual bool becomeContext(const sp<BBinder>& manager, const SocketAccess& access) = 0;
    /// The same at a socket that listens already and belongs to whoever handed it over.
    virtual bool becomeContextAt(Fd socket, const sp<BBinder>& manager) = 0;
    /// The service manager gives its place up if nobody is connected to it. True: nobody can reach
    /// it any more, and the process may end. False: all is as it was.
    virtual bool leaveIfUnused() = 0;
    /// Since when nobody has been connected to this process; empty while somebody is.
    virtual std::optional<std::chrono::steady_clock::time_point> unusedSince() = 0;

    /// From here on threads of the transport's own serve calls and deaths.
    virtual void startThreads() = 0;
    virtual void setMostThreads(size_t count) = 0;
    /// The calling thread serves, too, and does not return, but in a forked child, which cannot.
    virtual void serveForever() = 0;
};

/// The process's one transport, made at the first use and never destroyed.
Transport& transport();

}  // namespace android::transport

#endif
