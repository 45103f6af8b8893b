// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_EVENTS_H
#define VOXTREL_SERVICE_EVENTS_H

#include <cstdint>

/// What `voxtreld` tells a client's notification function, `void f(unsigned event, unsigned second,
/// unsigned third)`. Plain constants without other includes, so that applications can copy the
/// file.
namespace voxtreld {

/// The first number of a notification.
///
/// An utterance that the service accepts gives, to the client that asked and to no other: one
/// `EVENT_STARTED`, then any number of `EVENT_WORD`, then exactly one of `EVENT_FINISHED` and
/// `EVENT_STOPPED`. One that is dropped while it waits gives `EVENT_STARTED` and at once
/// `EVENT_STOPPED`, so that a client counts both the same way. One that is refused gives
/// `EVENT_STOPPED` alone, with the reason as third number.
enum Event : uint32_t {
    EVENT_STARTED = 1,   ///< (utterance, 0): its sound begins
    EVENT_FINISHED = 2,  ///< (utterance, 0): spoken to its end, and all of it heard or written
    EVENT_STOPPED = 3,   ///< (utterance, a `Status` as 32-bit pattern): cut, dropped or refused
    EVENT_WORD = 4,      ///< (utterance, offset in characters from 0): a word begins
    EVENT_STATE = 5,     ///< (a `State`, its new value): something shared by all clients changed
    EVENT_SETTING = 6,  ///< a client's own change; made by the client library, never by the service
};

/// The second number of `EVENT_STATE`. Values 2 to 14 are the keys of global settings
/// (`VOXTRELAPI_GCONF`): flags come as 0 or 1, numbers as their whole part, the language as its id.
enum State : uint32_t {
    STATE_ENABLED = 0,    ///< speech switched on (1) or off (0)
    STATE_VERBOSITY = 1,  ///< 0 or 1
    STATE_LOCK = 15,      ///< process id of the client that holds the lock; 0: it is free
    STATE_READY = 16,     ///< 1: the voices are loaded
    STATE_RESET = 17,     ///< every setting went back to its default; third number 0
};

/// The third number of `EVENT_STOPPED`, and what requests with an answer return.
enum Status : int32_t {
    STATUS_OK = 0,                   ///< stopped by a flush
    STATUS_DISABLED = -1,            ///< speech is switched off
    STATUS_BAD_PARAMETER = -3,       ///< a number outside its range
    STATUS_LOCKED = -7,              ///< another client holds the lock
    STATUS_NOT_SUPPORTED = -9,       ///< switched off, or a language the engine lacks
    STATUS_PERMISSION_DENIED = -10,  ///< not admitted, or a process id that is not the caller's
    STATUS_QUEUE_FULL = -12,         ///< too much is waiting already; say it again later
    STATUS_AUDIO_FAILED = -13,       ///< the engine or the audio output failed
};

}  // namespace voxtreld

#endif
