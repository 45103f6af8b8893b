// SPDX-License-Identifier: Apache-2.0
#include "tests/support/ScriptedService.h"

#include <unistd.h>

#include <algorithm>
#include <sstream>

#include "tests/support/Journal.h"

namespace support {
namespace {

using android::Parcel;

/// How a request is taken apart: p pid, i integer, f float, s text, b binder, v value by key.
struct Request {
    const char* name;
    const char* values;
};

const std::map<uint32_t, Request>& requests() {
    static const std::map<uint32_t, Request> all = {
        {kSay, {"say", "pisifiiifi"}},
        {kSilence, {"silence", "piii"}},
        {kStopAndFlush, {"stopAndFlush", "pi"}},
        {kSetVerbosity, {"setVerbosity", "pi"}},
        {kSetGlobalRate, {"setGlobalRate", "pi"}},
        {kSetGlobalConfig, {"setGlobalConfig", "piv"}},
        {kEnabled, {"enabled", ""}},
        {kEnabled2, {"enabled2", "pi"}},
        {kVerbosity, {"verbosity", ""}},
        {kGlobalRate, {"globalRate", ""}},
        {kGlobalConfig, {"globalConfig", "pi"}},
        {kFactoryReset, {"factoryReset", "p"}},
        {kRegisterCallback, {"registerCallback", "pb"}},
        {kDeregisterCallback, {"deregisterCallback", "p"}},
        {kLock, {"lock", "p"}},
        {kUnlock, {"unlock", "p"}},
        {kLocked, {"locked", ""}},
        {kGetCapabilities, {"getCapabilities", ""}},
    };
    return all;
}

/// Two operations share a code; how much they send tells them apart.
Request requestOf(uint32_t code, const Parcel& data) {
    if (code == kSetEnable) {
        return data.dataAvail() > 8 ? Request{"setEnable2", "pii"} : Request{"setEnable", "pi"};
    }
    return requests().at(code);
}

std::string textOf(const Parcel& data, size_t length) {
    std::string text(length, '?');
    data.read(&text[0], length);
    return '"' + text + '"';
}

std::string configValue(const Parcel& data, int32_t key) {
    if (key == 14) {
        const auto length = static_cast<size_t>(data.readInt32());
        return textOf(data, length);
    }
    const bool isFloat = key == 4 || key == 8;
    return isFloat ? std::to_string(data.readFloat())
                   : std::to_string(static_cast<uint32_t>(data.readInt32()));
}

std::string describe(uint32_t code, const Parcel& data) {
    const Request request = requestOf(code, data);
    std::ostringstream line;
    line << "ask " << request.name << '(';
    int32_t last = 0;
    for (const char* value = request.values; *value != '\0'; ++value) {
        line << (value == request.values ? "" : ", ");
        switch (*value) {
            case 'p':
                last = data.readInt32();
                line << (last == getpid() ? "pid" : std::to_string(last));
                break;
            case 'i':
                last = data.readInt32();
                line << static_cast<uint32_t>(last);
                break;
            case 'f':
                line << data.readFloat();
                break;
            case 's':
                line << '"' << data.readCString() << '"';
                break;
            case 'v':
                line << configValue(data, last);
                break;
            default:
                line << (data.readStrongBinder() != nullptr ? "callback" : "null");
        }
    }
    line << ')';
    return line.str();
}

void writeText(Parcel& reply, const std::string& text) {
    reply.writeInt32(static_cast<int32_t>(text.size()));
    reply.write(text.data(), text.size());
}

}  // namespace

ScriptedService::ScriptedService(const android::sp<RecordingRemote>& remote)
    : fetches{usualCapabilities()}, binder(remote) {
    binder->answerBy([this](const Transaction& sent, const Parcel& request, Parcel& reply) {
        return answer(sent, request, reply);
    });
}

int32_t ScriptedService::statusOf(uint32_t code) const {
    const auto scripted = status.find(code);
    return scripted != status.end() ? scripted->second : 0;
}

android::status_t ScriptedService::answer(const Transaction& sent, const Parcel& request,
                                          Parcel& reply) {
    note(describe(sent.code, request));
    request.setDataPosition(0);
    if (onRequest != nullptr) {
        onRequest(sent.code);
    }
    switch (sent.code) {
        case kEnabled:
            return reply.writeInt32(enabled ? 1 : 0);
        case kEnabled2: {
            request.readInt32();
            const auto flag = flags.find(request.readInt32());
            reply.writeInt32(flag == flags.end() || flag->second ? 1 : 0);
            return reply.writeInt32(statusOf(sent.code));
        }
        case kVerbosity:
            return reply.writeInt32(verbosity);
        case kGlobalRate:
            return reply.writeInt32(rate);
        case kGlobalConfig:
            answerGlobalConfig(request, reply);
            return reply.writeInt32(statusOf(sent.code));
        case kLocked:
            return reply.writeInt32(locked ? 1 : 0);
        case kGetCapabilities:
            answerCapabilities(reply);
            return android::NO_ERROR;
        case kRegisterCallback:
            request.readInt32();
            callback = request.readStrongBinder();
            break;
        default:
            break;
    }
    return reply.writeInt32(statusOf(sent.code));
}

void ScriptedService::answerGlobalConfig(const Parcel& request, Parcel& reply) const {
    request.readInt32();
    switch (request.readInt32()) {
        case 1:
        case 2:
        case 6:
        case 10:
        case 12:
            reply.writeInt32(static_cast<int32_t>(number));
            break;
        case 4:
        case 8:
            reply.writeFloat(real);
            break;
        case 14:
            writeText(reply, language);
            break;
        default:
            break;
    }
}

void ScriptedService::answerCapabilities(Parcel& reply) {
    const TTS::Capabilities& caps = fetches[std::min(mFetches, fetches.size() - 1)];
    ++mFetches;
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
    for (const bool speaks : caps.languages) {
        reply.writeInt32(speaks ? 1 : 0);
    }
    for (const int32_t count : caps.voicesNum) {
        reply.writeInt32(count);
    }
    reply.writeInt32(static_cast<int32_t>(caps.voices.size()));
    for (const TTS::VoiceInfo& voice : caps.voices) {
        reply.write(&voice, sizeof voice);
    }
}

TTS::VoiceInfo voiceOf(EN_VOXTREL_LANGUAGE language, uint32_t id, const std::string& name) {
    TTS::VoiceInfo voice{};
    voice.langId = language;
    voice.id = id;
    name.copy(voice.name, sizeof voice.name);
    return voice;
}

TTS::Capabilities usualCapabilities() {
    TTS::Capabilities caps;
    caps.ready = true;
    caps.permitted = true;
    caps.pitchSupported = true;
    caps.pitchMin = 50.0F;
    caps.pitchMax = 200.0F;
    caps.volumeSupported = true;
    caps.volumeMin = 0.0F;
    caps.volumeMax = 100.0F;
    caps.speedSupported = true;
    caps.speedMin = 100;
    caps.speedMax = 400;
    caps.languages = {true, true, false, false, true};
    caps.voicesNum = {2, 1, 0, 0, 3};
    caps.voices = {voiceOf(LANG_EN_US, 1, "Anna"), voiceOf(LANG_FR_FR, 1, "Claire"),
                   voiceOf(LANG_EN_US, 2, "Ben"),  voiceOf(LANG_PT_PT, 1, "Rita"),
                   voiceOf(LANG_PT_PT, 2, "Rui"),  voiceOf(LANG_PT_PT, 3, "Sara")};
    return caps;
}

}  // namespace support
