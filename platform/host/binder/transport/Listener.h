// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BINDER_TRANSPORT_LISTENER_H
#define VOXTREL_BINDER_TRANSPORT_LISTENER_H

#include <memory>
#include <string>

#include "binder/Binder.h"
#include "binder/transport/Reactor.h"

namespace android::transport {

/// The service manager's place: who connects there holds a reference to its node.
class Listener final : public Source {
public:
    /// Takes the place at `path` for this process. Null when another service manager has it, or it
    /// cannot be had; the log says which.
    static std::shared_ptr<Listener> open(const std::string& path, const sp<BBinder>& manager);

    Listener(Fd socket, Fd lock, const sp<BBinder>& manager);
    void onReady() override;

private:
    void admit(Fd door) const;
    /// False when there is no use in trying on at once.
    bool turnOneAway();

    const Fd mLock;  // held for as long as the place is taken
    Fd mSpare;       // given up for a moment when there are no descriptors left
    const sp<BBinder> mManager;
};

/// A reference to the service manager's node; invalid when there is none.
Fd connectTo(const std::string& path);

}  // namespace android::transport

#endif
