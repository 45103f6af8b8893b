// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BINDER_INTERNAL_SERVECALL_H
#define VOXTREL_BINDER_INTERNAL_SERVECALL_H

#include <sys/types.h>

#include <cstdint>

#include "binder/Binder.h"
#include "binder/Parcel.h"

namespace android::transport {

/// The sender of a call, by the kernel's word.
struct Caller {
    pid_t pid;
    uid_t uid;
};

/// Has `object` carry out a call that came from another process: `getCallingPid` and
/// `getCallingUid` are `caller`'s meanwhile, and what they were before afterwards, so that calls
/// may nest in a thread. An exception that the implementation lets out is logged, and
/// `UNKNOWN_ERROR`. `data` is empty afterwards: the caller may rely on it that what it sent along
/// has been let go when the reply is there.
status_t serveCall(BBinder& object, const Caller& caller, uint32_t code, Parcel& data,
                   Parcel* reply, uint32_t flags);

}  // namespace android::transport

#endif
