// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_VOCABULARY_EVENTS_H
#define VOXTREL_VOCABULARY_EVENTS_H

#include <cstdint>

/// What a client's notification function, `void f(unsigned event, unsigned second, unsigned
/// third)`, is told. The numbers are those of the reference service; the library passes on
/// whatever a service sends and makes nothing but `EVENT_SETTING` itself.
namespace TTS {

/// The first number of a notification.
///
/// An utterance that the service accepts gives, to the client that asked and to no other: one
/// `EVENT_STARTED`, then any number of `EVENT_WORD` and `EVENT_MARK`, then exactly one of
/// `EVENT_FINISHED` and `EVENT_STOPPED`. One that is dropped while it waits gives `EVENT_STARTED`
/// and at once `EVENT_STOPPED`, so that a client counts both the same way. One that is refused
/// gives `EVENT_STOPPED` alone, with the reason as third number.
///
/// A later service may send more: an application lets a number that it does not know pass.
enum Event : uint32_t {
    EVENT_STARTED = 1,   ///< (utterance, 0): its sound begins
    EVENT_FINISHED = 2,  ///< (utterance, 0): spoken to its end, and all of it heard or written
    EVENT_STOPPED = 3,   ///< (utterance, a `Status` as 32-bit pattern): cut, dropped or refused
    EVENT_WORD = 4,      ///< (utterance, offset in characters from 0): a word begins
    EVENT_STATE = 5,     ///< (a `State`, its new value): something shared by all clients changed
    EVENT_SETTING = 6,   ///< (0, a `SettingKind`): a setter of this client stored a new value; made
                         ///< by the client library, never by the service
    EVENT_MARK = 7,      ///< (utterance, number of the mark): a mark in marked-up text is reached;
                         ///< marks are numbered from 1 as they appear in the text, whatever their
                         ///< names. A service need not know marked-up text
};

/// The second number of `EVENT_STATE`. Values 2 to 14 are the keys of global settings
/// (`VOXTRELAPI_GCONF`): flags come as 0 or 1, numbers as their whole part, the language as its id.
enum State : uint32_t {
    STATE_ENABLED = 0,    ///< speech switched on (1) or off (0)
    STATE_VERBOSITY = 1,  ///< 0 or 1
    STATE_LOCK = 15,      ///< process id of the client that holds the lock; 0: it is free
    STATE_READY = 16,     ///< 1: the voices are loaded
    STATE_RESET = 17,     ///< every setting went back to its default; third number 0
    STATE_REFUSED = 18,   ///< to one client alone: its user may not do what a request of it asked
                          ///< for that brings no status back; third: a `RefusedRequest`
};

/// The third number of `STATE_REFUSED`: the code of the transaction.
enum RefusedRequest : uint32_t {
    REQUEST_STOP = 3,     ///< `stopAndFlush`
    REQUEST_LOCK = 25,    ///< `lock`
    REQUEST_UNLOCK = 26,  ///< `unlock`
};

/// The third number of `EVENT_SETTING`.
enum SettingKind : uint32_t {
    SETTING_LANGUAGE = 0,
    SETTING_SPEED = 1,
    SETTING_PITCH = 2,
    SETTING_VOICE = 3,
    SETTING_VOLUME = 4,
    SETTING_BG_VOLUME = 5,
    SETTING_TTS_VOLUME = 6,
};

}  // namespace TTS

#endif
