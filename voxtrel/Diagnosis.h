// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_DIAGNOSIS_H
#define VOXTREL_DIAGNOSIS_H

#include <cstdint>
#include <optional>
#include <string>

#include "voxtrel/Result.h"

namespace voxtrel {

/// How far a client gets on its way to the service.
enum class Reach {
    NoManager,            ///< there is no service manager
    ManagerNotPermitted,  ///< this user may not talk to it
    ManagerSilent,        ///< it does not answer
    NoService,            ///< no service is registered
    NotTrusted,     ///< another user's, and not asked for anything: `ClientOptions::trustedUsers`
    ServiceSilent,  ///< it is registered and does not answer
    Loading,        ///< it answers and is loading its voices
    NotAdmitted,    ///< it does not let this user in, or has too many clients
    Connected,
};

/// Who stands at the other end, as far as the system tells. A plain value.
struct Peer {
    std::uint32_t process = 0;               ///< 0: not known
    std::optional<std::uint32_t> user = {};  ///< the number of the user that started it
    bool isStopped = false;  ///< the process is stopped, as by SIGSTOP or a debugger
};

/// What a client sees on its way to the service. A plain value.
struct Diagnosis {
    Reach reach = Reach::NoManager;
    std::string transport = {};  ///< "socket", or "driver": the device's own
    std::string path = {};       ///< where the service manager is looked for; empty: not a file
    int error = 0;               ///< errno of the attempt to get there; 0: none, or not known
    Peer manager = {};
    Peer service = {};

    /// The service has begun a pause of 49 days, which it must refuse at once
    /// (docs/writing-a-service.md). It was told to drop it again, and with it what was said.
    bool takesAnyPause = false;

    /// Why there is no connection, in words that say what to do; `Ok` when there is one.
    Error whyNot() const;
};

}  // namespace voxtrel

#endif
