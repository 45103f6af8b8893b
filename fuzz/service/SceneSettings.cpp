// SPDX-License-Identifier: Apache-2.0
// The settings that all clients share: who changes one changes it for everybody, everybody is told,
// and a restart of the service changes nothing.
#include <cstdio>
#include <cstring>

#include "fuzz/service/Scene.h"
#include "vocabulary/Status.h"

namespace voxtrel_fuzz {
namespace {

using android::Parcel;
using namespace TTS;

/// The service's own user, who may read everything.
constexpr voxtreld::Caller kReader = {101, 1000};

bool isFloat(uint32_t key) {
    return key == GCONF_PITCH || key == GCONF_VOLUME;
}

bool isFlag(uint32_t key) {
    return key % 2 == 1;
}

/// What stands at the front of an answer.
template <typename Value>
Value first(const std::string& answer) {
    Value value = {};
    require(answer.size() >= sizeof value);
    std::memcpy(&value, answer.data(), sizeof value);
    return value;
}

}  // namespace

/// Exactly what changes is told.
void Scene::judgeChange(uint32_t code, uint32_t key, int status) {
    switch (code) {
        case transaction::kSetEnable2.code:
        case transaction::kSetVerbosity.code:
        case transaction::kSetGlobalRate.code:
        case transaction::kSetGlobalConfig.code:
        case transaction::kFactoryReset.code:
            break;
        default:
            return;
    }
    const std::string now = allSettings();
    if (now != mSettings) {
        require(status == STATUS_OK);
        mClients.expectAll(changeBy(code, key));
        mSettings = now;
    }
}

Notice Scene::changeBy(uint32_t code, uint32_t key) {
    if (code == transaction::kFactoryReset.code) {
        return {EVENT_STATE, STATE_RESET, 0};
    }
    if (code == transaction::kSetVerbosity.code) {
        return {EVENT_STATE, STATE_VERBOSITY, static_cast<uint32_t>(mService->verbosity())};
    }
    if (code == transaction::kSetEnable2.code && key <= 1) {
        return {EVENT_STATE, STATE_ENABLED, mService->enabled() ? 1U : 0U};
    }
    const uint32_t changed = code == transaction::kSetGlobalRate.code ? GCONF_SPEED : key;
    return {EVENT_STATE, changed, eventValue(changed)};
}

/// As vocabulary/Events.h has it: a number's whole part, the language's id.
uint32_t Scene::eventValue(uint32_t key) {
    if (isFlag(key)) {
        return first<uint32_t>(answerTo(transaction::kEnabled2, key));
    }
    const std::string answer = answerTo(transaction::kGlobalConfig, key);
    if (isFloat(key)) {
        return static_cast<uint32_t>(first<float>(answer));
    }
    if (key == GCONF_LANGUAGE) {
        return static_cast<uint32_t>(
            langStr2Id(answer.substr(sizeof(uint32_t), first<uint32_t>(answer))));
    }
    return first<uint32_t>(answer);
}

std::string Scene::answerTo(Transaction transaction, uint32_t key) {
    const voxtreld::Caller caller = mCaller;
    mCaller = kReader;
    Parcel request;
    Parcel reply;
    request.writeUint32(mCaller.pid);
    request.writeUint32(key);
    request.setDataPosition(0);
    require(mService->onTransact(transaction.code, request, &reply, transaction.flags) ==
            android::OK);
    mCaller = caller;
    return {reinterpret_cast<const char*>(reply.data()), reply.dataSize()};
}

std::string Scene::allSettings(int digits) {
    std::string all = std::to_string(mService->verbosity()) + (mService->enabled() ? "+" : "-");
    for (uint32_t key = GCONF_SPEED; key <= GCONF_LANGUAGE; ++key) {
        const std::string answer =
            answerTo(isFlag(key) ? transaction::kEnabled2 : transaction::kGlobalConfig, key);
        if (isFloat(key)) {
            char text[32];
            (void)std::snprintf(text, sizeof text, "%.*g,", digits,
                                static_cast<double>(first<float>(answer)));
            all += text;
        } else {
            all += answer;
        }
    }
    return all;
}

/// What one service has kept, the next one has.
void Scene::requireSettingsSurvive() {
    constexpr int kDigitsOfProfile = 6;
    require(allSettings() == mSettings);
    const std::string before = allSettings(kDigitsOfProfile);
    newService();
    require(allSettings(kDigitsOfProfile) == before);
}

}  // namespace voxtrel_fuzz
