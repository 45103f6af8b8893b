// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_OWNER_H
#define VOXTREL_TOOLS_OWNER_H

#include <optional>
#include <string>

#include <binder/IBinder.h>

#include "tools/Errors.h"

namespace voxtrelctl {

// Whoever registers under the service's name first is sent what is to be spoken. So this program
// talks to a service of its own user's, of root's, and of one user more that it is told to trust.

/// Trusts the services of this user as well. Throws Failure(-3) when there is no such user.
/// Called on: the main thread, before there are others.
void trustOwner(const std::string& user);

/// "user anna (1001)" for the owner of a service.
struct Owner {
    std::string name;
    bool isTrusted;
};

/// The owner of this very reference: of the user whose process registered it, as the service
/// manager was told by the kernel. Throws Failure(-5) when the name is another service's by now, or
/// the service manager does not tell. Empty optional on a platform where it cannot be asked. Called
/// on: any thread.
std::optional<Owner> ownerOf(const android::sp<android::IBinder>& service);

/// Why this service is not to be talked to, if it is not. Called on: any thread.
std::optional<Failure> doubtAbout(const android::sp<android::IBinder>& service);

}  // namespace voxtrelctl

#endif
