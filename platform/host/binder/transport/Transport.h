// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BINDER_TRANSPORT_TRANSPORT_H
#define VOXTREL_BINDER_TRANSPORT_TRANSPORT_H

#include <cstddef>
#include <string>

#include "binder/IBinder.h"

namespace android::transport {

/// What the classes of the public API need of a transport, beside the references themselves.
///
/// Called on: any thread. Locks: the implementation's own.
class Transport {
public:
    virtual ~Transport() = default;

    /// The proxy of the service manager's node, or the node itself in its own process; null when
    /// there is none. One that has died is looked for anew.
    virtual sp<IBinder> contextObject() = 0;
    /// This process becomes the service manager, for processes of its own user at least. False when
    /// there is one already, or its place cannot be had; the log says which.
    virtual bool becomeContext(const sp<BBinder>& manager) = 0;
    /// Where the service manager is looked for: a path, for the log.
    virtual std::string contextPlace() const = 0;

    /// Starts threads of the transport's own that serve calls and death notices.
    virtual void startThreads() = 0;
    /// How many of them there may be. At least one serves once they have started.
    virtual void setMaxThreads(size_t count) = 0;
    /// The calling thread serves as well. Returns only where it cannot: in a forked child, or when
    /// the kernel serves this process no longer, as the log says.
    virtual void serveForever() = 0;

    /// Returns when everything that the calling thread has let go of has left the process.
    virtual void flush() = 0;
};

/// The process's one transport, chosen and made at the first use, and never destroyed.
Transport& transport();

}  // namespace android::transport

#endif
