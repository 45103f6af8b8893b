// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_STATUS_H
#define VOXTREL_STATUS_H

#include <cstdint>

namespace voxtrel {

/// Why something was not done. Values from -1 to -99 are the service's own and may include numbers
/// that have no name here; those below are this library's.
enum class Status : std::int32_t {
    Ok = 0,
    Disabled = -1,           ///< speech is switched off for everybody
    BadParameter = -3,       ///< a value out of range, too long a pause, or a text not in UTF-8
    NoService = -5,          ///< the service died, or there is no connection to it
    ProfileError = -6,       ///< a profile could not be read or written
    Locked = -7,             ///< another process holds the service's lock
    ServiceNotFound = -8,    ///< no service is registered
    NotSupported = -9,       ///< the service has no such language, voice or setting
    PermissionDenied = -10,  ///< the service does not let this user do that
    NoLanguage = -11,        ///< a voice was named without a language
    QueueFull = -12,         ///< too much is waiting at the service
    AudioFailed = -13,       ///< the engine or the audio output failed
    Shutdown = -14,          ///< the service was ended by its owner

    TimedOut = -100,      ///< no answer before the deadline; it may still be done
    Unresponsive = -101,  ///< an earlier request is still not answered, so nothing was tried
    Lost = -102,          ///< the request was lost on its way, or the event about it
    Closed = -103,        ///< the client ended
};

/// What a status means and what to do about it, one line of English without a line end. Never null;
/// static. Called on: any thread.
const char* describe(Status status) noexcept;

}  // namespace voxtrel

#endif
