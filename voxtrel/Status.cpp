// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/Status.h"

#include <algorithm>
#include <iterator>

#include "vocabulary/Status.h"

namespace voxtrel {
namespace {

struct Meaning {
    Status status;
    const char* text;
};

constexpr Meaning kMeanings[] = {
    {Status::Ok, "done"},
    {Status::Disabled, "speech is switched off for everybody: switch it on (Switch::Speech)"},
    {Status::BadParameter,
     "a value is out of range (the features tell the ranges), a pause is too long for the service, "
     "or a text is not UTF-8"},
    {Status::NoService,
     "there is no connection to the service, or it broke off: start it, or wait until it is back"},
    {Status::ProfileError,
     "the profile could not be read or written: look at its path and its folder's permissions"},
    {Status::Locked, "another process holds the service's lock: try again when it is free"},
    {Status::ServiceNotFound, "no speech service is registered: start it"},
    {Status::NotSupported,
     "the service has no such language, voice or setting, or it is switched off (the features list "
     "what it has)"},
    {Status::PermissionDenied, "the service does not let this user do that: ask whoever runs it"},
    {Status::NoLanguage, "a voice is named without its language: name both"},
    {Status::QueueFull, "too much is waiting at the service: say it again later"},
    {Status::AudioFailed, "the service's engine or its audio output failed: look at its log"},
    {Status::Shutdown, "the service was ended: say it again when it is back"},
    {Status::TimedOut, "no answer in time: it may still be done"},
    {Status::Unresponsive,
     "the service has not answered an earlier request yet: it may be stopped; nothing was tried"},
    {Status::Lost, "it was lost on its way: try again"},
    {Status::Closed, "the client has ended"},
};

constexpr bool isSame(Status own, TTS::Status service) {
    return static_cast<std::int32_t>(own) == static_cast<std::int32_t>(service);
}

static_assert(isSame(Status::Disabled, TTS::STATUS_DISABLED));
static_assert(isSame(Status::BadParameter, TTS::STATUS_BAD_PARAMETER));
static_assert(isSame(Status::NoService, TTS::STATUS_NO_SERVICE));
static_assert(isSame(Status::ProfileError, TTS::STATUS_PROFILE_ERROR));
static_assert(isSame(Status::Locked, TTS::STATUS_LOCKED));
static_assert(isSame(Status::ServiceNotFound, TTS::STATUS_SERVICE_NOT_FOUND));
static_assert(isSame(Status::NotSupported, TTS::STATUS_NOT_SUPPORTED));
static_assert(isSame(Status::PermissionDenied, TTS::STATUS_PERMISSION_DENIED));
static_assert(isSame(Status::NoLanguage, TTS::STATUS_NO_LANGUAGE));
static_assert(isSame(Status::QueueFull, TTS::STATUS_QUEUE_FULL));
static_assert(isSame(Status::AudioFailed, TTS::STATUS_AUDIO_FAILED));
static_assert(isSame(Status::Shutdown, TTS::STATUS_SHUTDOWN));

}  // namespace

const char* describe(Status status) noexcept {
    const auto* found = std::find_if(std::begin(kMeanings), std::end(kMeanings),
                                     [status](const Meaning& m) { return m.status == status; });
    return found != std::end(kMeanings) ? found->text
                                        : "the service gave a status of its own: look at its log";
}

}  // namespace voxtrel
