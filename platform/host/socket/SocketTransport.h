// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_SOCKETTRANSPORT_H
#define VOXTREL_SOCKET_SOCKETTRANSPORT_H

#include <chrono>
#include <memory>
#include <optional>

#include "binder/transport/Transport.h"
#include "socket/SocketPath.h"
#include "socket/SocketRuntime.h"
#include "support/Fd.h"
#include "utils/Mutex.h"

namespace android::transport {

class Listener;

/// Calls travel over sockets between the processes themselves; see docs/transport.md.
class SocketTransport final : public Transport {
public:
    SocketTransport();
    ~SocketTransport() override;

    sp<IBinder> contextObject() override;
    bool becomeContext(const sp<BBinder>& manager) override;
    std::string contextPlace() const override;
    void startThreads() override;
    void setMaxThreads(size_t count) override;
    void serveForever() override;
    void flush() override;

    // For the service manager's program, whose place is a socket here.

    /// The same for those whom `access` lets in.
    bool becomeContext(const sp<BBinder>& manager, const SocketAccess& access);
    /// The same at a socket that listens already and belongs to whoever handed it over.
    bool becomeContextAt(Fd socket, const sp<BBinder>& manager);
    /// The service manager gives its place up if nobody is connected to it. True: nobody can reach
    /// it any more, and the process may end. False: all is as it was.
    bool leaveIfUnused();
    /// Since when nobody has been connected to this process; empty while somebody is.
    std::optional<std::chrono::steady_clock::time_point> unusedSince();

private:
    bool serve(std::shared_ptr<Listener> listener, const sp<BBinder>& manager)
        PLATFORM_REQUIRES(mLock);
    sp<IBinder> knownContext() PLATFORM_REQUIRES(mLock);

    SocketRuntime mRuntime;
    Mutex mLock;
    sp<IBinder> mManagerProxy PLATFORM_GUARDED_BY(mLock);
    sp<BBinder> mManager PLATFORM_GUARDED_BY(mLock);
    std::shared_ptr<Listener> mListener PLATFORM_GUARDED_BY(mLock);
};

}  // namespace android::transport

#endif
