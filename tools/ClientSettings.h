// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_CLIENTSETTINGS_H
#define VOXTREL_TOOLS_CLIENTSETTINGS_H

#include "tools/Connection.h"

namespace voxtrelctl {

/// Gives the client the profile, language, voice and numbers of this run, in this order. Throws
/// Failure with the value that is refused, and why.
///
/// A voice belongs to a language: without --lang it is one of the service's language, which becomes
/// this run's language too.
void applyProsody(Connection& connection, const Prosody& prosody);

}  // namespace voxtrelctl

#endif
