// SPDX-License-Identifier: Apache-2.0
#include "bench/ipc/PlainCoding.h"

#include <cstring>

namespace {

class Writer {
public:
    explicit Writer(PlainBuffer& buffer) : mStart(buffer.bytes), mNext(buffer.bytes) {}

    template <typename Value>
    void put(const Value& value) {
        copy(&value, sizeof value);
    }
    void putText(const std::string& text) { copy(text.c_str(), text.size() + 1); }
    size_t size() const { return static_cast<size_t>(mNext - mStart); }

private:
    void copy(const void* from, size_t size) {
        std::memcpy(mNext, from, size);
        mNext += size;
    }

    unsigned char* mStart;
    unsigned char* mNext;
};

class Reader {
public:
    explicit Reader(const PlainBuffer& buffer) : mNext(buffer.bytes) {}

    template <typename Value>
    void get(Value& value) {
        std::memcpy(&value, mNext, sizeof value);
        mNext += sizeof value;
    }
    void getText(std::string& text) {
        text = reinterpret_cast<const char*>(mNext);
        mNext += text.size() + 1;
    }
    bool getFlag() {
        int32_t value = 0;
        get(value);
        return value != 0;
    }

private:
    const unsigned char* mNext;
};

}  // namespace

size_t encode(const Utterance& utterance, PlainBuffer& buffer) {
    Writer out(buffer);
    out.put(utterance.pid);
    out.put(utterance.id);
    out.putText(utterance.text);
    out.put(utterance.speed);
    out.put(utterance.volume);
    out.put(utterance.voice);
    out.put(utterance.bgVolume);
    out.put(utterance.ttsVolume);
    out.put(utterance.pitch);
    out.put(utterance.language);
    return out.size();
}

void decode(const PlainBuffer& buffer, Utterance& utterance) {
    Reader in(buffer);
    in.get(utterance.pid);
    in.get(utterance.id);
    in.getText(utterance.text);
    in.get(utterance.speed);
    in.get(utterance.volume);
    in.get(utterance.voice);
    in.get(utterance.bgVolume);
    in.get(utterance.ttsVolume);
    in.get(utterance.pitch);
    in.get(utterance.language);
}

size_t encode(const TTS::Capabilities& caps, PlainBuffer& buffer) {
    Writer out(buffer);
    for (const bool flag : {caps.pitchSupported, caps.volumeSupported, caps.speedSupported,
                            caps.ready, caps.permitted}) {
        out.put<int32_t>(flag ? 1 : 0);
    }
    for (const float bound : {caps.pitchMin, caps.pitchMax, caps.volumeMin, caps.volumeMax}) {
        out.put(bound);
    }
    out.put(caps.speedMin);
    out.put(caps.speedMax);
    for (const bool spoken : caps.languages) {
        out.put<int32_t>(spoken ? 1 : 0);
    }
    for (const int32_t count : caps.voicesNum) {
        out.put(count);
    }
    out.put(static_cast<int32_t>(caps.voices.size()));
    for (const TTS::VoiceInfo& voice : caps.voices) {
        out.put(voice);
    }
    return out.size();
}

void decode(const PlainBuffer& buffer, TTS::Capabilities& caps) {
    Reader in(buffer);
    caps.pitchSupported = in.getFlag();
    caps.volumeSupported = in.getFlag();
    caps.speedSupported = in.getFlag();
    caps.ready = in.getFlag();
    caps.permitted = in.getFlag();
    for (float* bound : {&caps.pitchMin, &caps.pitchMax, &caps.volumeMin, &caps.volumeMax}) {
        in.get(*bound);
    }
    in.get(caps.speedMin);
    in.get(caps.speedMax);
    caps.languages.clear();
    caps.voicesNum.clear();
    caps.voices.clear();
    for (int i = 0; i < 5; ++i) {
        caps.languages.push_back(in.getFlag());
    }
    int32_t number = 0;
    for (int i = 0; i < 5; ++i) {
        in.get(number);
        caps.voicesNum.push_back(number);
    }
    in.get(number);
    TTS::VoiceInfo voice;
    for (; number > 0; --number) {
        in.get(voice);
        caps.voices.push_back(voice);
    }
}
