// SPDX-License-Identifier: Apache-2.0
#include "ipc/BpTextToSpeechFestival.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <initializer_list>

#include "ipc/TransactionCodes.h"
#include "ipc/internal/ConfigValue.h"
#include "vocabulary/Status.h"

namespace TTS {
namespace {

using android::IBinder;
using android::Parcel;

/// What a number, key, language or flag is sent as.
template <typename Value>
int32_t wordOf(Value value) {
    return static_cast<int32_t>(value);
}

int32_t wordOf(float value) {
    int32_t bits = 0;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

using Words = std::initializer_list<int32_t>;

void put(Parcel& request, Words words) {
    for (const int32_t word : words) {
        request.writeInt32(word);
    }
}

// A transaction that failed leaves the reply empty, and that reads as zeros.
void exchange(IBinder& remote, Transaction transaction, const Parcel& request, Parcel& reply) {
    (void)remote.transact(transaction.code, request, &reply, transaction.flags);
}

void send(IBinder& remote, Transaction transaction, Parcel& reply, Words words) {
    Parcel request;
    put(request, words);
    exchange(remote, transaction, request, reply);
}

/// The reply's one int32.
int32_t answerTo(IBinder& remote, Transaction transaction, const Parcel& request) {
    Parcel reply;
    exchange(remote, transaction, request, reply);
    return reply.readInt32();
}

int32_t askWords(IBinder* remote, Transaction transaction, int32_t noRemote, Words words) {
    if (remote == nullptr) {
        return noRemote;
    }
    Parcel request;
    put(request, words);
    return answerTo(*remote, transaction, request);
}

/// Sends the values and gives the reply's one int32, or `noRemote` where there is none to ask. No
/// more than this is compiled for each list of values.
template <typename... Values>
int32_t ask(IBinder* remote, Transaction transaction, int32_t noRemote, Values... values) {
    return askWords(remote, transaction, noRemote, {wordOf(values)...});
}

// Callers hand on what an application pointed to, and that may be unaligned.
template <typename Value>
Value load(const void* from) {
    Value value;
    std::memcpy(&value, from, sizeof value);
    return value;
}

/// The text goes as its length and its bytes, without a terminator.
int32_t sendText(IBinder& remote, unsigned pid, VOXTRELAPI_GCONF key, const char* text) {
    const size_t length = std::strlen(text);
    Parcel request;
    put(request, {wordOf(pid), wordOf(key), wordOf(length)});
    request.write(text, length);
    return answerTo(remote, transaction::kSetGlobalConfig, request);
}

template <typename Value>
void store(Value value, void* to) {
    std::memcpy(to, &value, sizeof value);
}

bool readFlag(const Parcel& reply) {
    return reply.readInt32() != 0;
}

void skip(const Parcel& reply, size_t bytes) {
    char dropped[64];
    while (bytes > 0) {
        const size_t step = std::min(bytes, sizeof dropped);
        if (reply.read(dropped, step) != android::NO_ERROR) {
            return;
        }
        bytes -= step;
    }
}

void readText(const Parcel& reply, void* out) {
    const int32_t length = reply.readInt32();
    if (length <= 0) {
        return;
    }
    // Both are multiples of 4, so no piece but the last is followed by padding.
    static_assert(kLanguageOutSize % 4 == 0, "");
    const size_t kept = std::min(static_cast<size_t>(length), kLanguageOutSize);
    if (reply.read(out, kept) == android::NO_ERROR) {
        skip(reply, static_cast<size_t>(length) - kept);
    }
}

void readConfigValue(const Parcel& reply, VOXTRELAPI_GCONF key, void* out) {
    switch (configValueOf(key)) {
        case ConfigValue::kInteger:
            store(reply.readInt32(), out);
            break;
        case ConfigValue::kFloat:
            store(reply.readFloat(), out);
            break;
        case ConfigValue::kText:
            readText(reply, out);
            break;
        case ConfigValue::kNone:
            break;
    }
}

void readControls(const Parcel& reply, Capabilities& caps) {
    caps.pitchSupported = readFlag(reply);
    caps.pitchMin = reply.readFloat();
    caps.pitchMax = reply.readFloat();
    caps.volumeSupported = readFlag(reply);
    caps.volumeMin = reply.readFloat();
    caps.volumeMax = reply.readFloat();
    caps.speedSupported = readFlag(reply);
    caps.speedMin = static_cast<uint32_t>(reply.readInt32());
    caps.speedMax = static_cast<uint32_t>(reply.readInt32());
    caps.ready = readFlag(reply);
    caps.permitted = readFlag(reply);
}

void readLists(const Parcel& reply, Capabilities& caps) {
    constexpr int32_t kLanguages = LANG_NA;
    caps.languages.clear();
    caps.voicesNum.clear();
    caps.voices.clear();
    for (int32_t i = 0; i < kLanguages; ++i) {
        caps.languages.push_back(reply.readInt32() == 1);  // not any non-zero value, as elsewhere
    }
    for (int32_t i = 0; i < kLanguages; ++i) {
        caps.voicesNum.push_back(reply.readInt32());
    }
    VoiceInfo voice{};
    for (int32_t left = reply.readInt32(); left > 0; --left) {
        if (reply.read(&voice, sizeof voice) != android::NO_ERROR) {
            return;  // the count may exceed the data
        }
        caps.voices.push_back(voice);
    }
}

}  // namespace

IMPLEMENT_META_INTERFACE(TextToSpeechFestival, "tavix.ITextToSpeechFestival")

BpTextToSpeechFestival::BpTextToSpeechFestival(const android::sp<IBinder>& remote)
    : android::BpInterface<ITextToSpeechFestival>(remote) {}

int BpTextToSpeechFestival::say(unsigned pid, unsigned id, const std::string& text, unsigned speed,
                                float volume, unsigned voice, unsigned bgVolume, unsigned ttsVolume,
                                float pitch, EN_VOXTREL_LANGUAGE language) {
    if (remote() == nullptr) {
        return STATUS_NO_SERVICE;
    }
    Parcel request;  // value by value: the one request whose time counts
    request.writeInt32(wordOf(pid));
    request.writeInt32(wordOf(id));
    request.writeCString(text.c_str());
    request.writeInt32(wordOf(speed));
    request.writeFloat(volume);
    request.writeInt32(wordOf(voice));
    request.writeInt32(wordOf(bgVolume));
    request.writeInt32(wordOf(ttsVolume));
    request.writeFloat(pitch);
    request.writeInt32(wordOf(language));
    return answerTo(*remote(), transaction::kSay, request);
}

int BpTextToSpeechFestival::silence(unsigned pid, unsigned first, unsigned second,
                                    unsigned bgVolume) {
    return ask(remote(), transaction::kSilence, STATUS_NO_SERVICE, pid, first, second, bgVolume);
}

int BpTextToSpeechFestival::stopAndFlush(unsigned pid, unsigned arg) {
    return ask(remote(), transaction::kStopAndFlush, STATUS_NO_SERVICE, pid, arg);
}

int BpTextToSpeechFestival::setEnable(unsigned pid, bool enable) {
    return ask(remote(), transaction::kSetEnable, STATUS_NO_SERVICE, pid, enable);
}

int BpTextToSpeechFestival::setVerbosity(unsigned pid, int verbosity) {
    return ask(remote(), transaction::kSetVerbosity, STATUS_NO_SERVICE, pid, verbosity);
}

int BpTextToSpeechFestival::setGlobalRate(unsigned pid, unsigned rate) {
    return ask(remote(), transaction::kSetGlobalRate, STATUS_NO_SERVICE, pid, rate);
}

int BpTextToSpeechFestival::setEnable2(unsigned pid, VOXTRELAPI_GCONF key, bool enable) {
    return ask(remote(), transaction::kSetEnable2, STATUS_NO_SERVICE, pid, key, enable);
}

int BpTextToSpeechFestival::enabled2(unsigned pid, VOXTRELAPI_GCONF key, void* out) {
    if (remote() == nullptr) {
        return STATUS_NO_SERVICE;
    }
    if (out == nullptr) {
        return STATUS_BAD_PARAMETER;
    }
    Parcel reply;
    send(*remote(), transaction::kEnabled2, reply, {wordOf(pid), wordOf(key)});
    *static_cast<bool*>(out) = readFlag(reply);
    return reply.readInt32();
}

int BpTextToSpeechFestival::setGlobalConfig(unsigned pid, VOXTRELAPI_GCONF key, void* value) {
    constexpr Transaction set = transaction::kSetGlobalConfig;
    if (remote() == nullptr) {
        return STATUS_NO_SERVICE;
    }
    if (value == nullptr) {
        return STATUS_BAD_PARAMETER;
    }
    switch (configValueOf(key)) {
        case ConfigValue::kInteger:
            return ask(remote(), set, STATUS_NO_SERVICE, pid, key, load<int32_t>(value));
        case ConfigValue::kFloat:
            return ask(remote(), set, STATUS_NO_SERVICE, pid, key, load<float>(value));
        case ConfigValue::kText:
            return sendText(*remote(), pid, key, static_cast<const char*>(value));
        case ConfigValue::kNone:
            break;
    }
    return STATUS_BAD_PARAMETER;
}

int BpTextToSpeechFestival::globalConfig(unsigned pid, VOXTRELAPI_GCONF key, void* out) {
    if (remote() == nullptr) {
        return STATUS_NO_SERVICE;
    }
    if (out == nullptr && configValueOf(key) != ConfigValue::kNone) {
        return STATUS_BAD_PARAMETER;
    }
    Parcel reply;
    send(*remote(), transaction::kGlobalConfig, reply, {wordOf(pid), wordOf(key)});
    readConfigValue(reply, key, out);
    return reply.readInt32();
}

bool BpTextToSpeechFestival::enabled() const {
    return ask(remote(), transaction::kEnabled, 0) != 0;
}

int BpTextToSpeechFestival::verbosity() {
    return ask(remote(), transaction::kVerbosity, STATUS_NO_SERVICE);
}

int BpTextToSpeechFestival::globalRate() {
    return ask(remote(), transaction::kGlobalRate, STATUS_NO_SERVICE);
}

int BpTextToSpeechFestival::factoryReset(unsigned pid) {
    return ask(remote(), transaction::kFactoryReset, STATUS_NO_SERVICE, pid);
}

int BpTextToSpeechFestival::registerCallback(unsigned pid, const android::sp<ICallback>& cb) {
    if (remote() == nullptr) {
        return STATUS_NO_SERVICE;
    }
    Parcel request;
    put(request, {wordOf(pid)});
    request.writeStrongBinder(android::IInterface::asBinder(cb));
    return answerTo(*remote(), transaction::kRegisterCallback, request);
}

int BpTextToSpeechFestival::deregisterCallback(unsigned pid) {
    return ask(remote(), transaction::kDeregisterCallback, STATUS_NO_SERVICE, pid);
}

int BpTextToSpeechFestival::lock(unsigned pid) {
    return ask(remote(), transaction::kLock, STATUS_NO_SERVICE, pid);
}

int BpTextToSpeechFestival::unlock(unsigned pid) {
    return ask(remote(), transaction::kUnlock, STATUS_NO_SERVICE, pid);
}

bool BpTextToSpeechFestival::locked() {
    return ask(remote(), transaction::kLocked, 1) != 0;
}

int BpTextToSpeechFestival::getCapabilities(Capabilities& caps) {
    if (remote() == nullptr) {
        return STATUS_NO_SERVICE;
    }
    Parcel reply;
    send(*remote(), transaction::kGetCapabilities, reply, {});
    readControls(reply, caps);
    readLists(reply, caps);
    return 0;
}

int BpTextToSpeechFestival::language() {
    return ask(remote(), transaction::kLanguage, 0);
}

int BpTextToSpeechFestival::pitch(float& out) {
    if (remote() == nullptr) {
        return STATUS_NO_SERVICE;
    }
    Parcel reply;
    send(*remote(), transaction::kPitch, reply, {});
    out = reply.readFloat();
    return 0;
}

int BpTextToSpeechFestival::voice(unsigned& out) {
    if (remote() == nullptr) {
        return STATUS_NO_SERVICE;
    }
    out = static_cast<unsigned>(ask(remote(), transaction::kVoice, STATUS_NO_SERVICE));
    return 0;
}

int BpTextToSpeechFestival::speed(unsigned& out) {
    if (remote() == nullptr) {
        return STATUS_NO_SERVICE;
    }
    out = static_cast<unsigned>(ask(remote(), transaction::kSpeed, STATUS_NO_SERVICE));
    return 0;
}

}  // namespace TTS
