// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BINDER_INTERNAL_SERVECALL_H
#define VOXTREL_BINDER_INTERNAL_SERVECALL_H

#include <sys/types.h>

#include <cstdint>

#include "binder/Binder.h"
#include "binder/Parcel.h"

namespace android::transport {

/// The sender of a call, as the kernel gives it.
struct Caller {
    pid_t pid;
    uid_t uid;
};

/// Has `object` carry out a call from another process. Meanwhile `getCallingPid` and
/// `getCallingUid` are `caller`'s; they are restored afterwards, so that calls may nest in a
/// thread. An exception that leaves the implementation is logged and gives `UNKNOWN_ERROR`, one for
/// lack of memory `NO_MEMORY`. `data` is empty afterwards, so that the binders in a request are
/// released before its reply is sent.
status_t serveCall(BBinder& object, const Caller& caller, uint32_t code, Parcel& data,
                   Parcel* reply, uint32_t flags);

}  // namespace android::transport

#endif
