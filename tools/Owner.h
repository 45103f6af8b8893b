// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_OWNER_H
#define VOXTREL_TOOLS_OWNER_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/Errors.h"
#include "tools/Options.h"

namespace voxtrelctl {

// Whoever registers under the service's name first is sent what is to be spoken. So this program
// talks to a service of its own user's, of root's, and of one user more that it is told to trust.

/// The one that `--trust-owner` names, or none. Throws Failure(-3) when there is no such user.
/// Called on: the main thread.
std::vector<std::uint32_t> trustedUsers(const Options& options);

/// "user anna (1001)". Called on: any thread.
std::string ownerName(std::uint32_t user);

/// The problem with a service of a user who is not trusted; empty: the owner is not known.
Problem untrustedOwner(std::optional<std::uint32_t> owner);

}  // namespace voxtrelctl

#endif
