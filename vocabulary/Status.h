// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_VOCABULARY_STATUS_H
#define VOXTREL_VOCABULARY_STATUS_H

#include <cstdint>

namespace TTS {

/// The status codes. The client's operations return them, a service answers requests with them, and
/// they are the third number of `EVENT_STOPPED` (vocabulary/Events.h). The client passes every
/// non-zero value of a service up unchanged, so an application may meet codes of a service's own
/// that have no name here.
enum Status : int32_t {
    STATUS_OK = 0,                   ///< success
    STATUS_DISABLED = -1,            ///< `say`, `silence`, `stopAndFlush`: speech is switched off
    STATUS_BAD_PARAMETER = -3,       ///< value out of range, or a key that carries no value
    STATUS_NO_SERVICE = -5,          ///< not connected to the service
    STATUS_PROFILE_ERROR = -6,       ///< a profile could not be read or written
    STATUS_LOCKED = -7,              ///< another client holds the service lock
    STATUS_SERVICE_NOT_FOUND = -8,   ///< `connect`: no service within the search time
    STATUS_NOT_SUPPORTED = -9,       ///< missing, switched off, or refused by the device's filter
    STATUS_PERMISSION_DENIED = -10,  ///< the service does not admit this client
    STATUS_NO_LANGUAGE = -11,        ///< `setVoice`: the client has no language of its own

    // Of the reference service, and free to other services that have the same to say.
    STATUS_QUEUE_FULL = -12,    ///< too much is waiting already; say it again later
    STATUS_AUDIO_FAILED = -13,  ///< the engine or the audio output failed
    STATUS_SHUTDOWN = -14,      ///< the service is ending; a later one can be asked again
};

}  // namespace TTS

#endif
