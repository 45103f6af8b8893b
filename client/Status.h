// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_CLIENT_STATUS_H
#define VOXTREL_CLIENT_STATUS_H

namespace TTS {

/// The status codes that the client itself returns. Any other non-zero value comes from the
/// service and is passed up unchanged.
namespace status {

constexpr int kOk = 0;
constexpr int kSpeechDisabled = -1;   ///< `say`, `silence`, `stopAndFlush`: speech is switched off
constexpr int kBadParameter = -3;     ///< value out of range, or a key that carries no value
constexpr int kNoService = -5;        ///< not connected to the service
constexpr int kProfileError = -6;     ///< a profile could not be read or written
constexpr int kLocked = -7;           ///< another client holds the service lock
constexpr int kServiceNotFound = -8;  ///< `connect`: no service within the search time
constexpr int kNotSupported = -9;     ///< missing, switched off, or refused by the device's filter
constexpr int kPermissionDenied = -10;  ///< `connect`: the service does not admit this client
constexpr int kNoLanguage = -11;        ///< `setVoice`: the client has no language of its own

}  // namespace status
}  // namespace TTS

#endif
