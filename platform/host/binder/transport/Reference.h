// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BINDER_TRANSPORT_REFERENCE_H
#define VOXTREL_BINDER_TRANSPORT_REFERENCE_H

#include <cstdint>

#include "binder/IBinder.h"

namespace android::transport {

/// One way to a node that lives in another process: what a proxy needs of a transport.
/// The node lives at least as long as the reference, unless its process dies.
///
/// Called on: any thread. Locks: the implementation's own; it calls nobody back with one held.
class Reference {
public:
    virtual ~Reference() = default;

    /// Carries out one call, as `IBinder::transact` says. `reply` is empty and stays so on failure.
    /// `DEAD_OBJECT` once the node is gone.
    virtual status_t call(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) = 0;

    /// Has the node gone? `call` may not have noticed yet.
    virtual bool hasEnded() const = 0;

    /// From here on the end of the node is reported, once, by `proxy->reportDeath()` on a thread of
    /// the pool: at once when it has gone already.
    virtual status_t watch(const wp<BpBinder>& proxy) = 0;
    virtual void unwatch() = 0;
};

}  // namespace android::transport

#endif
