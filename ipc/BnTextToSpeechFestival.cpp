// SPDX-License-Identifier: Apache-2.0
#include "ipc/BnTextToSpeechFestival.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <tuple>
#include <type_traits>

#include "ipc/TransactionCodes.h"
#include "ipc/internal/ConfigValue.h"
#include "vocabulary/Status.h"

namespace TTS {
namespace {

using android::Parcel;
using Service = ITextToSpeechFestival;

/// A language with its terminator, in the buffers of an implementation.
constexpr size_t kTextSize = 256;

/// The text of a request; the protocol allows it to be missing.
std::string textOf(const char* text) {
    if (text == nullptr) {
        throw std::logic_error("say: the request holds no text");
    }
    return text;
}

template <typename Value>
Value take(const Parcel& request) {
    if constexpr (std::is_same_v<Value, float>) {
        return request.readFloat();
    } else if constexpr (std::is_same_v<Value, bool>) {
        return request.readInt32() != 0;
    } else if constexpr (std::is_same_v<Value, std::string>) {
        return textOf(request.readCString());
    } else if constexpr (std::is_same_v<Value, android::sp<ICallback>>) {
        return ICallback::asInterface(request.readStrongBinder());
    } else {
        static_assert(sizeof(Value) == sizeof(int32_t), "travels as int32 with the same bits");
        return static_cast<Value>(request.readInt32());
    }
}

template <typename Result, typename... Arguments>
void call(Service& service, Result (Service::*operation)(Arguments...),
          [[maybe_unused]] const Parcel& request, Parcel& reply) {
    // Braces: the values are read in the order of the arguments, which is that of the wire.
    const std::tuple<std::decay_t<Arguments>...> arguments{
        take<std::decay_t<Arguments>>(request)...};
    const Result result = std::apply(
        [&](const auto&... values) { return (service.*operation)(values...); }, arguments);
    reply.writeInt32(static_cast<int32_t>(result));
}

/// An operation whose request is its arguments and whose reply is its result.
template <auto Operation>
void serve(Service& service, const Parcel& request, Parcel& reply) {
    call(service, Operation, request, reply);
}

void serveEnabled(Service& service, const Parcel&, Parcel& reply) {
    reply.writeInt32(service.enabled() ? 1 : 0);
}

void serveEnabled2(Service& service, const Parcel& request, Parcel& reply) {
    const auto pid = take<unsigned>(request);
    const auto key = take<VOXTRELAPI_GCONF>(request);
    // Bytes, because a bool is stored here and a whole word is sent.
    alignas(int32_t) unsigned char word[sizeof(int32_t)] = {};
    const int status = service.enabled2(pid, key, word);
    int32_t value = 0;
    std::memcpy(&value, word, sizeof value);
    reply.writeInt32(value);
    reply.writeInt32(status);
}

template <typename Value>
int32_t setNumber(Service& service, unsigned pid, VOXTRELAPI_GCONF key, const Parcel& request) {
    auto value = take<Value>(request);
    return service.setGlobalConfig(pid, key, &value);
}

int32_t setText(Service& service, unsigned pid, VOXTRELAPI_GCONF key, const Parcel& request) {
    const int32_t length = request.readInt32();
    if (length < 0 || static_cast<size_t>(length) >= kTextSize) {
        return STATUS_BAD_PARAMETER;
    }
    char text[kTextSize] =
        {};  // its zeros are the terminator, and all of it if the request is short
    (void)request.read(text, static_cast<size_t>(length));
    return service.setGlobalConfig(pid, key, text);
}

int32_t setConfigValue(Service& service, const Parcel& request) {
    const auto pid = take<unsigned>(request);
    const auto key = take<VOXTRELAPI_GCONF>(request);
    switch (configValueOf(key)) {
        case ConfigValue::kInteger:
            return setNumber<uint32_t>(service, pid, key, request);
        case ConfigValue::kFloat:
            return setNumber<float>(service, pid, key, request);
        case ConfigValue::kText:
            return setText(service, pid, key, request);
        case ConfigValue::kNone:
            break;
    }
    return STATUS_BAD_PARAMETER;
}

void serveSetGlobalConfig(Service& service, const Parcel& request, Parcel& reply) {
    reply.writeInt32(setConfigValue(service, request));
}

int32_t writeText(Service& service, unsigned pid, VOXTRELAPI_GCONF key, Parcel& reply) {
    char text[kTextSize] = {};  // no stack bytes are sent for an implementation that stores nothing
    const int32_t status = service.globalConfig(pid, key, text);
    const auto length = static_cast<size_t>(std::find(text, text + kTextSize - 1, '\0') - text);
    reply.writeInt32(static_cast<int32_t>(length));
    reply.write(text, length);
    return status;
}

int32_t writeConfigValue(Service& service, const Parcel& request, Parcel& reply) {
    const auto pid = take<unsigned>(request);
    const auto key = take<VOXTRELAPI_GCONF>(request);
    int32_t status = STATUS_BAD_PARAMETER;
    switch (configValueOf(key)) {
        case ConfigValue::kInteger: {
            int32_t value = 0;
            status = service.globalConfig(pid, key, &value);
            reply.writeInt32(value);
            break;
        }
        case ConfigValue::kFloat: {
            float value = 0.0F;
            status = service.globalConfig(pid, key, &value);
            reply.writeFloat(value);
            break;
        }
        case ConfigValue::kText:
            return writeText(service, pid, key, reply);
        case ConfigValue::kNone:
            break;
    }
    return status;
}

void serveGlobalConfig(Service& service, const Parcel& request, Parcel& reply) {
    reply.writeInt32(writeConfigValue(service, request, reply));
}

void writeControls(const Capabilities& caps, Parcel& reply) {
    reply.writeInt32(caps.pitchSupported ? 1 : 0);
    reply.writeFloat(caps.pitchMin);
    reply.writeFloat(caps.pitchMax);
    reply.writeInt32(caps.volumeSupported ? 1 : 0);
    reply.writeFloat(caps.volumeMin);
    reply.writeFloat(caps.volumeMax);
    reply.writeInt32(caps.speedSupported ? 1 : 0);
    reply.writeInt32(static_cast<int32_t>(caps.speedMin));
    reply.writeInt32(static_cast<int32_t>(caps.speedMax));
    reply.writeInt32(caps.ready ? 1 : 0);
    reply.writeInt32(caps.permitted ? 1 : 0);
}

void writeLists(const Capabilities& caps, Parcel& reply) {
    for (const bool available : caps.languages) {
        reply.writeInt32(available ? 1 : 0);
    }
    for (const int32_t count : caps.voicesNum) {
        reply.writeInt32(count);
    }
    reply.writeInt32(static_cast<int32_t>(caps.voices.size()));
    for (const VoiceInfo& voice : caps.voices) {
        reply.write(&voice, sizeof voice);
    }
}

void serveGetCapabilities(Service& service, const Parcel&, Parcel& reply) {
    Capabilities caps;
    (void)service.getCapabilities(caps);  // the reply has no place for it
    writeControls(caps, reply);
    writeLists(caps, reply);
}

struct Row {
    Transaction transaction;
    void (*serve)(Service& service, const Parcel& request, Parcel& reply);
};

constexpr Row kRows[] = {
    {transaction::kSay, serve<&Service::say>},
    {transaction::kSilence, serve<&Service::silence>},
    {transaction::kStopAndFlush, serve<&Service::stopAndFlush>},
    {transaction::kSetEnable2, serve<&Service::setEnable2>},
    {transaction::kSetVerbosity, serve<&Service::setVerbosity>},
    {transaction::kSetGlobalRate, serve<&Service::setGlobalRate>},
    {transaction::kSetGlobalConfig, serveSetGlobalConfig},
    {transaction::kEnabled, serveEnabled},
    {transaction::kEnabled2, serveEnabled2},
    {transaction::kVerbosity, serve<&Service::verbosity>},
    {transaction::kGlobalRate, serve<&Service::globalRate>},
    {transaction::kGlobalConfig, serveGlobalConfig},
    {transaction::kFactoryReset, serve<&Service::factoryReset>},
    {transaction::kRegisterCallback, serve<&Service::registerCallback>},
    {transaction::kDeregisterCallback, serve<&Service::deregisterCallback>},
    {transaction::kLock, serve<&Service::lock>},
    {transaction::kUnlock, serve<&Service::unlock>},
    {transaction::kLocked, serve<&Service::locked>},
    {transaction::kGetCapabilities, serveGetCapabilities},
};

}  // namespace

android::status_t BnTextToSpeechFestival::onTransact(uint32_t code, const Parcel& data,
                                                     Parcel* reply, uint32_t flags) {
    const Row* row = std::find_if(std::begin(kRows), std::end(kRows), [code](const Row& each) {
        return each.transaction.code == code;
    });
    if (row == std::end(kRows)) {
        return android::BBinder::onTransact(code, data, reply, flags);
    }
    if (reply == nullptr) {
        Parcel dropped;
        row->serve(*this, data, dropped);
    } else {
        row->serve(*this, data, *reply);
    }
    return android::NO_ERROR;
}

}  // namespace TTS
