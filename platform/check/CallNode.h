// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_PLATFORM_CHECK_CALLNODE_H
#define VOXTREL_PLATFORM_CHECK_CALLNODE_H

#include <condition_variable>
#include <cstdint>
#include <mutex>

#include "check/Headers.h"

namespace check {

/// An object of this process that the peer calls back.
class CallNode : public android::BBinder {
public:
    /// False when no call with `number` comes soon.
    bool waitForCall(int32_t number);

protected:
    android::status_t onTransact(uint32_t code, const android::Parcel& data, android::Parcel* reply,
                                 uint32_t flags) override;

private:
    std::mutex mLock;
    std::condition_variable mChanged;
    int32_t mNumber = 0;
};

/// Has `peer` call `node` back with `number`.
/// @return the status of that call, or of the one to the peer if that fails.
int32_t callThrough(const android::sp<android::IBinder>& peer,
                    const android::sp<android::IBinder>& node, int32_t number, uint32_t flags);

}  // namespace check

#endif
