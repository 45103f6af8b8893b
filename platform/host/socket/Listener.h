// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_LISTENER_H
#define VOXTREL_SOCKET_LISTENER_H

#include <memory>
#include <string>

#include "binder/Binder.h"
#include "socket/Context.h"
#include "socket/Reactor.h"
#include "socket/SocketPath.h"
#include "utils/Mutex.h"

namespace android::transport {

/// The service manager's socket: each connection to it is a reference to the manager's node.
class Listener final : public EventHandler {
public:
    /// Takes the place at `path` for this process. At no time can anybody connect whom `access`
    /// does not let in. Null when another service manager has it, or it cannot be had; the log says
    /// which.
    static std::shared_ptr<Listener> open(const Context& context, const std::string& path,
                                          const sp<BBinder>& manager,
                                          const SocketAccess& access = {});

    /// The same at a socket that listens already. It stays its owner's: its path is left alone.
    static std::shared_ptr<Listener> openAt(const Context& context, Fd socket,
                                            const sp<BBinder>& manager);

    /// `path`: of a socket that this process has made, else empty.
    Listener(const Context& context, Fd socket, Fd lock, std::string path,
             const sp<BBinder>& manager);
    void onReady() override;

    /// Gives the place up, for good, if nobody is connected or about to be. A socket that somebody
    /// else owns keeps later connections waiting for the next service manager.
    bool leaveIfUnused();

private:
    void admit(Fd control) const;

    bool hasConnections() const;

    const Context& mContext;
    const Fd mLock;  // held for as long as the place is taken
    const std::string mPath;
    const sp<BBinder> mManager;
    Mutex mAdmitting;
    bool mLeft PLATFORM_GUARDED_BY(mAdmitting) = false;
};

/// A reference to the service manager's node; invalid when there is none.
Fd connectTo(const std::string& path);

}  // namespace android::transport

#endif
