// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BINDER_SERVICEOWNER_H
#define VOXTREL_BINDER_SERVICEOWNER_H

#include <sys/types.h>

#include <cstdint>

#include "binder/IBinder.h"
#include "utils/Errors.h"
#include "utils/String16.h"

namespace android {

/// A service and the user whose process registered it, as the kernel gave it at that moment: later
/// changes of that process's user do not matter.
struct OwnedService {
    sp<IBinder> service;  ///< null: there is none of that name
    uid_t owner = static_cast<uid_t>(-1);
    pid_t process = 0;  ///< that registered it; 0: not known to an older service manager
};

/// The service of that name with its owner, both from one reply of the service manager: it is the
/// owner of this very reference, whoever has the name by now. Not in a device's runtime, whose
/// service manager does not tell.
/// @param found receives both; untouched on failure.
/// @return OK; DEAD_OBJECT when there is no service manager; UNKNOWN_TRANSACTION from one that is
///     too old to tell; what a device's service manager answers to a question it does not know,
///     which is PERMISSION_DENIED (-1) from those written in C. Called on: any thread.
status_t findOwnedService(const String16& name, OwnedService& found);

/// The service manager's transaction for it: a name; answered with a binder and, for one that is
/// not null, an int32 with its owner's uid and one with the process id.
constexpr uint32_t GET_OWNED_SERVICE_TRANSACTION = IBinder::FIRST_CALL_TRANSACTION + 0x100;

}  // namespace android

#endif
