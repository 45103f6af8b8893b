// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BENCH_IPC_PLAINCODING_H
#define VOXTREL_BENCH_IPC_PLAINCODING_H

#include <string>

#include "vocabulary/Capabilities.h"

/// The arguments of one `say`.
struct Utterance {
    uint32_t pid;
    uint32_t id;
    std::string text;
    uint32_t speed;
    float volume;
    uint32_t voice;
    uint32_t bgVolume;
    uint32_t ttsVolume;
    float pitch;
    EN_VOXTREL_LANGUAGE language;
};

/// Bytes and nothing else: the least that carrying fields from one place to another can cost.
/// Fields are copied one behind the other, without a check of the room that is left.
struct PlainBuffer {
    unsigned char bytes[4096];
};

/// Writes the fields in the order of the wire; gives the number of bytes.
size_t encode(const Utterance& utterance, PlainBuffer& buffer);
void decode(const PlainBuffer& buffer, Utterance& utterance);

/// The same for the reply of `getCapabilities`; `decode` replaces what `caps` holds.
size_t encode(const TTS::Capabilities& caps, PlainBuffer& buffer);
void decode(const PlainBuffer& buffer, TTS::Capabilities& caps);

#endif
