// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_EVENT_H
#define VOXTREL_EVENT_H

#include <cstdint>

#include "voxtrel/Outcome.h"
#include "voxtrel/Utterance.h"

namespace voxtrel {

/// Something that happened, as handlers see it. A plain value.
struct Event {
    enum class Kind {
        Started,       ///< `utterance` begins to sound
        Word,          ///< a word of it begins, at `position`
        Mark,          ///< the mark with the number `value` in its marked-up text was reached
        Ended,         ///< `utterance` has its `outcome`; the one such event about it
        Connected,     ///< the service is there; `value` is its process, 0 if that is not known
        Disconnected,  ///< it is not any more, and is being looked for
        Changed,       ///< something that all clients share: `setting` is now `value`
    };

    /// What `Changed` tells of; another service may tell of more, by numbers of its own.
    enum class Setting : std::uint32_t {
        Speech = 0,  ///< 1: switched on
        Verbosity = 1,
        Speed = 2,
        SpeedSwitch = 3,
        Pitch = 4,
        PitchSwitch = 5,
        Voice = 6,
        VoiceSwitch = 7,
        Volume = 8,
        VolumeSwitch = 9,
        MediaVolume = 10,
        MediaVolumeSwitch = 11,
        SpeechVolume = 12,
        SpeechVolumeSwitch = 13,
        Language = 14,
        Lock = 15,   ///< process id of the holder, 0: free
        Ready = 16,  ///< 1: the voices are loaded
        Reset = 17,  ///< all settings went back to their defaults
    };

    Kind kind = Kind::Ended;
    Utterance utterance = {};           ///< Started, Word, Mark, Ended
    Position position = {};             ///< Word: in the text that was given to `say`; Mark: of
                                        ///< the last word told before it
    Outcome outcome = {};               ///< Ended
    Setting setting = Setting::Speech;  ///< Changed
    std::uint32_t value = 0;            ///< numbers as their whole part
};

}  // namespace voxtrel

#endif
