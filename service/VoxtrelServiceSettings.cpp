// SPDX-License-Identifier: Apache-2.0
// The operations on settings that all clients share.
#include "service/VoxtrelService.h"
#include "vocabulary/Status.h"

namespace voxtreld {

using namespace TTS;

namespace {

// `setEnable` has no transaction of its own: it arrives as `setEnable2` with one of these keys.
constexpr int32_t kSpeechOff = 0;
constexpr int32_t kSpeechOn = 1;

}  // namespace

void VoxtrelService::keep(uint32_t state) {
    mProfile->save(mSettings.profile());
    uint32_t value = 0;
    switch (state) {
        case STATE_ENABLED:
            value = mSettings.enabled() ? 1 : 0;
            break;
        case STATE_VERBOSITY:
            value = static_cast<uint32_t>(mSettings.verbosity());
            break;
        default:
            value = mSettings.eventValue(static_cast<VOXTRELAPI_GCONF>(state));
    }
    mClients.tellAll(EVENT_STATE, state, value);
}

int VoxtrelService::change(unsigned pid, Operation operation, uint32_t state, const Change& apply) {
    const int status = admit(pid, operation);
    return status != STATUS_OK ? status : answered(pid, operation, applied(pid, state, apply));
}

int VoxtrelService::applied(unsigned pid, uint32_t state, const Change& apply) {
    const MutexLock lock(mMutex);
    int status = mayChange(pid);
    if (status != STATUS_OK) {
        return status;
    }
    const GlobalSettings before = mSettings;
    status = apply(mSettings);
    if (status == STATUS_OK && !mSettings.isSameAs(before)) {
        keep(state);
    }
    return status;
}

int VoxtrelService::switchSpeech(unsigned pid, bool on) {
    return change(pid, Operation::SetEnable, STATE_ENABLED, [this, on](GlobalSettings& settings) {
        settings.setEnabled(on);
        if (!on) {
            mQueue->drop(std::nullopt, STATUS_DISABLED);
        }
        return STATUS_OK;
    });
}

int VoxtrelService::setEnable(unsigned pid, bool enable) {
    return switchSpeech(pid, enable);
}

int VoxtrelService::setEnable2(unsigned pid, VOXTRELAPI_GCONF key, bool enable) {
    if (key == kSpeechOff || key == kSpeechOn) {
        return switchSpeech(pid, key == kSpeechOn);
    }
    return change(pid, Operation::SetEnable2, static_cast<uint32_t>(key),
                  [=](GlobalSettings& settings) { return settings.setFlag(key, enable); });
}

int VoxtrelService::setVerbosity(unsigned pid, int verbosity) {
    return change(pid, Operation::SetVerbosity, STATE_VERBOSITY,
                  [=](GlobalSettings& settings) { return settings.setVerbosity(verbosity); });
}

int VoxtrelService::setGlobalRate(unsigned pid, unsigned rate) {
    return change(pid, Operation::SetGlobalRate, GCONF_SPEED,
                  [&](GlobalSettings& settings) { return settings.set(GCONF_SPEED, &rate); });
}

int VoxtrelService::setGlobalConfig(unsigned pid, VOXTRELAPI_GCONF key, void* value) {
    return change(pid, Operation::SetGlobalConfig, static_cast<uint32_t>(key),
                  [=](GlobalSettings& settings) { return settings.set(key, value); });
}

int VoxtrelService::factoryReset(unsigned pid) {
    return change(pid, Operation::FactoryReset, STATE_RESET, [](GlobalSettings& settings) {
        settings.reset();
        return STATUS_OK;
    });
}

int VoxtrelService::enabled2(unsigned pid, VOXTRELAPI_GCONF key, void* out) {
    const int status = admit(pid, Operation::Enabled2);
    if (status != STATUS_OK || out == nullptr) {
        return status == STATUS_OK ? STATUS_BAD_PARAMETER : status;
    }
    const MutexLock lock(mMutex);
    return mSettings.flag(key, *static_cast<bool*>(out));
}

int VoxtrelService::globalConfig(unsigned pid, VOXTRELAPI_GCONF key, void* out) {
    const int status = admit(pid, Operation::GlobalConfig);
    if (status != STATUS_OK) {
        return status;
    }
    const MutexLock lock(mMutex);
    return mSettings.get(key, out);
}

bool VoxtrelService::enabled() const {
    const MutexLock lock(mMutex);
    return mSettings.enabled();
}

int VoxtrelService::verbosity() {
    const MutexLock lock(mMutex);
    return mSettings.verbosity();
}

int VoxtrelService::globalRate() {
    const MutexLock lock(mMutex);
    return static_cast<int>(mSettings.speed());
}

}  // namespace voxtreld
