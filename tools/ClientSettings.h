// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_CLIENTSETTINGS_H
#define VOXTREL_TOOLS_CLIENTSETTINGS_H

#include "tools/Arguments.h"
#include "tools/Session.h"

namespace voxtrelctl {

/// Gives this run's speech its own profile, language, voice and numbers, in this order. Throws
/// Failure with the client library's status and the value that it refuses.
///
/// A voice belongs to a language: without --lang it is one of the service's language, which becomes
/// this run's language too.
void applyProsody(Session& session, const Prosody& prosody);

}  // namespace voxtrelctl

#endif
