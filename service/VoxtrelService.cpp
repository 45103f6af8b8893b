// SPDX-License-Identifier: Apache-2.0
#include "service/VoxtrelService.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <utility>

#include "service/Text.h"
#include "vocabulary/Status.h"

namespace voxtreld {

using namespace TTS;

namespace {

constexpr size_t kLanguageCount = LANG_NA;

/// Longest pause of one request: beyond it a mistyped number would silence a device for weeks.
constexpr uint32_t kLongestPauseMs = 60'000;

enum FlushScope : uint32_t { FLUSH_EVERYTHING = 0, FLUSH_OWN = 1 };

/// What a client can do before the voices are known: wait.
TTS::Capabilities emptyCapabilities() {
    TTS::Capabilities caps;
    caps.pitchSupported = caps.volumeSupported = caps.speedSupported = true;
    caps.pitchMin = kPitchMin;
    caps.pitchMax = kPitchMax;
    caps.volumeMin = kVolumeMin;
    caps.volumeMax = kVolumeMax;
    caps.speedMin = kSpeedMin;
    caps.speedMax = kSpeedMax;
    caps.languages.assign(kLanguageCount, false);
    caps.voicesNum.assign(kLanguageCount, 0);
    return caps;
}

}  // namespace

VoxtrelService::VoxtrelService(const Parts& parts)
    : mQueue(parts.queue),
      mProfile(parts.profile),
      mAdmission(parts.admission),
      mCaller(parts.caller),
      mLog(parts.log),
      mRefusals(parts.log),
      mLastRequest(std::chrono::steady_clock::now()),
      mSettings(parts.profile->load()),
      mCapabilities(emptyCapabilities()),
      mClients([this](uint32_t pid) { clientDied(pid); }) {
    const MutexLock lock(mMutex);
    mProfile->save(mSettings.profile());  // a fresh or repaired profile is on disk from the start
}

void VoxtrelService::announceVoices(const std::vector<EngineVoice>& voices) {
    const MutexLock lock(mMutex);
    for (const EngineVoice& voice : voices) {
        const auto index = static_cast<size_t>(voice.language);
        if (index >= kLanguageCount) {
            continue;
        }
        TTS::VoiceInfo info = {};
        info.langId = voice.language;
        info.id = static_cast<uint32_t>(++mCapabilities.voicesNum[index]);
        std::snprintf(info.name, sizeof info.name, "%s", voice.name.c_str());
        mCapabilities.voices.push_back(info);
        mCapabilities.languages[index] = true;
    }
    mCapabilities.ready = true;
    mSettings.setVoiceCounts(mCapabilities.voicesNum);
    mClients.tellAll(EVENT_STATE, STATE_READY, 1);
}

android::status_t VoxtrelService::onTransact(uint32_t code, const android::Parcel& data,
                                             android::Parcel* reply, uint32_t flags) {
    touch();
    try {
        return BnTextToSpeechFestival::onTransact(code, data, reply, flags);
    } catch (const std::exception& failure) {
        mLog(LogLevel::Warning,
             "request " + std::to_string(code) + " is broken: " + failure.what());
        return android::BAD_VALUE;
    }
}

void VoxtrelService::touch() {
    mLastRequest = std::chrono::steady_clock::now();
}

VoxtrelService::Duration VoxtrelService::idleTime() const {
    const auto quiet = mQueue->idleSince();
    if (!mClients.isEmpty() || !quiet.has_value()) {
        return Duration::zero();
    }
    return std::chrono::steady_clock::now() - std::max(*quiet, mLastRequest.load());
}

bool VoxtrelService::closeIfIdle(Duration limit) {
    const MutexLock lock(mMutex);
    if (idleTime() < limit) {
        return false;
    }
    mClosed = true;
    mCapabilities.ready = false;
    return true;
}

/// The process that sent the request of this thread, in which it names `pid`; 0 if nobody knows.
uint32_t VoxtrelService::senderOf(unsigned pid) const {
    const Caller caller = mCaller();
    // A kernel's driver does not name the sender of a one-way call; the user it came from must do.
    return caller.pid == 0 && mClients.isUser(pid, caller.uid) ? pid : caller.pid;
}

int VoxtrelService::admit(unsigned pid, const char* operation) {
    const uint32_t user = mCaller().uid;
    const uint32_t sender = senderOf(pid);
    std::string reason;
    if (sender == 0) {
        reason = "a process of user " + std::to_string(user) + " gave the process id " +
                 std::to_string(pid) + ", which is none of its";
    } else if (sender != pid) {
        reason =
            "process " + std::to_string(sender) + " gave the process id " + std::to_string(pid);
    } else if (!mAdmission.permits(user)) {
        reason = "user " + std::to_string(user) + " is not admitted";
    } else {
        return STATUS_OK;
    }
    mRefusals.refused(sender == 0 ? pid : sender, operation, STATUS_PERMISSION_DENIED,
                      std::string(operation) + ": " + reason + ", refused");
    return STATUS_PERMISSION_DENIED;
}

/// `status`, after it has been logged if it is a refusal that has not been yet.
int VoxtrelService::answered(unsigned pid, const char* operation, int status) {
    if (status < 0 && status != STATUS_PERMISSION_DENIED) {
        mRefusals.refused(pid, operation, status,
                          std::string(operation) + ": process " + std::to_string(pid) +
                              " is refused with " + std::to_string(status));
    }
    return status;
}

int VoxtrelService::mayChange(unsigned pid) const {
    if (mClients.isDead(pid)) {
        return STATUS_PERMISSION_DENIED;  // the last words of a client that is being forgotten
    }
    return mLockOwner == 0 || mLockOwner == pid ? STATUS_OK : STATUS_LOCKED;
}

int VoxtrelService::accept(Utterance utterance, const SpeechSettings& asked) {
    int status = mayChange(utterance.pid);
    if (status == STATUS_OK && utterance.pauseMs > kLongestPauseMs) {
        status = STATUS_BAD_PARAMETER;
    }
    if (status == STATUS_OK) {
        status = resolve(asked, mSettings, utterance);
    }
    if (status != STATUS_OK) {
        return status;
    }
    // A client asks whether speech is on before it says something, so this was sent while it was,
    // and ends like what was waiting when it was switched off.
    return mSettings.enabled() ? mQueue->push(std::move(utterance))
                               : mQueue->pushDropped(utterance, STATUS_DISABLED);
}

int VoxtrelService::enqueue(Utterance utterance, const SpeechSettings& asked,
                            const char* operation) {
    const uint32_t pid = utterance.pid;
    const uint32_t id = utterance.id;
    int status = admit(pid, operation);
    {
        const MutexLock lock(mMutex);
        if (status == STATUS_OK) {
            status = accept(std::move(utterance), asked);
        }
        if (status != STATUS_OK) {
            mClients.tell(senderOf(pid), EVENT_STOPPED, id, static_cast<uint32_t>(status));
        }
    }
    return answered(pid, operation, status);
}

int VoxtrelService::say(unsigned pid, unsigned id, const std::string& text, unsigned speed,
                        float volume, unsigned voice, unsigned bgVolume, unsigned ttsVolume,
                        float pitch, EN_VOXTREL_LANGUAGE language) {
    Utterance utterance;
    utterance.pid = pid;
    utterance.id = id;
    utterance.text = validUtf8(text);
    return enqueue(std::move(utterance),
                   {speed, volume, voice, bgVolume, ttsVolume, pitch, language}, "say");
}

int VoxtrelService::silence(unsigned pid, unsigned first, unsigned second, unsigned bgVolume) {
    Utterance utterance;
    utterance.pid = pid;
    utterance.id = first;
    utterance.pauseMs = second;
    SpeechSettings asked;
    asked.bgVolume = bgVolume;
    return enqueue(std::move(utterance), asked, "silence");
}

int VoxtrelService::stopAndFlush(unsigned pid, unsigned arg) {
    const int status = admit(pid, "stopAndFlush");
    return status != STATUS_OK ? status : answered(pid, "stopAndFlush", flush(pid, arg));
}

int VoxtrelService::flush(unsigned pid, unsigned arg) {
    const MutexLock lock(mMutex);
    const int status = mayChangeOrIsTold(pid);
    if (status != STATUS_OK) {
        return status;
    }
    if (arg == FLUSH_EVERYTHING) {
        mQueue->drop(std::nullopt, STATUS_OK);
    } else if (arg == FLUSH_OWN) {
        mQueue->drop(pid, STATUS_OK);
    } else {
        return STATUS_BAD_PARAMETER;
    }
    return STATUS_OK;
}

/// Who is refused because of the lock is told who holds it.
int VoxtrelService::mayChangeOrIsTold(unsigned pid) {
    const int status = mayChange(pid);
    if (status == STATUS_LOCKED) {
        mClients.tell(pid, EVENT_STATE, STATE_LOCK, mLockOwner);
    }
    return status;
}

int VoxtrelService::registerCallback(unsigned pid, const android::sp<TTS::ICallback>& cb) {
    const int status = admit(pid, "registerCallback");
    if (status != STATUS_OK) {
        return status;
    }
    // The service's own binder, sent back, never dies: nothing would free what its sender holds.
    const bool usable = cb != nullptr && android::IInterface::asBinder(cb).get() != this;
    const uint32_t user = mCaller().uid;
    const int added = usable ? mClients.add(pid, user, cb) : STATUS_BAD_PARAMETER;
    if (added == STATUS_QUEUE_FULL) {
        mRefusals.refused(pid, "registerCallback", added,
                          "registerCallback: no room for process " + std::to_string(pid) +
                              ", too many clients are registered; try again when one has left");
        return added;
    }
    if (added != STATUS_OK) {
        return answered(pid, "registerCallback", added);
    }
    if (!stays(pid)) {
        return answered(pid, "registerCallback", STATUS_BAD_PARAMETER);
    }
    mLog(LogLevel::Debug,
         "process " + std::to_string(pid) + " of user " + std::to_string(user) + " has come");
    return STATUS_OK;
}

/// False, and it is forgotten, for a client that came when the service was already to end.
bool VoxtrelService::stays(unsigned pid) {
    const MutexLock lock(mMutex);
    if (mClosed) {
        (void)mClients.remove(pid);
    }
    return !mClosed;
}

int VoxtrelService::deregisterCallback(unsigned pid) {
    const int status = admit(pid, "deregisterCallback");
    if (status != STATUS_OK) {
        return status;
    }
    if (mClients.remove(pid)) {  // leaving twice is leaving
        mLog(LogLevel::Debug, "process " + std::to_string(pid) + " has left");
    }
    mRefusals.forget(pid);
    const MutexLock lock(mMutex);
    if (mLockOwner == pid) {
        setLockOwner(0);
    }
    return STATUS_OK;
}

void VoxtrelService::clientDied(uint32_t pid) {
    touch();
    mRefusals.forget(pid);
    mLog(LogLevel::Debug, "process " + std::to_string(pid) + " has died");
    const MutexLock lock(mMutex);
    mQueue->forget(pid);
    if (mLockOwner == pid) {
        setLockOwner(0);
    }
}

void VoxtrelService::setLockOwner(uint32_t pid) {
    mLockOwner = pid;
    mClients.tellAll(EVENT_STATE, STATE_LOCK, pid);
}

int VoxtrelService::lock(unsigned pid) {
    const int status = admit(pid, "lock");
    return status != STATUS_OK ? status : answered(pid, "lock", takeLock(pid));
}

int VoxtrelService::takeLock(unsigned pid) {
    const MutexLock lock(mMutex);
    const int status = mayChangeOrIsTold(pid);
    if (status != STATUS_OK) {
        return status;
    }
    if (!mClients.contains(pid)) {
        return STATUS_PERMISSION_DENIED;  // nothing would free the lock when this process dies
    }
    if (mLockOwner == pid) {
        return 1;
    }
    setLockOwner(pid);
    return STATUS_OK;
}

int VoxtrelService::unlock(unsigned pid) {
    const int status = admit(pid, "unlock");
    return status != STATUS_OK ? status : answered(pid, "unlock", freeLock(pid));
}

int VoxtrelService::freeLock(unsigned pid) {
    const MutexLock lock(mMutex);
    const int status = mayChange(pid);
    if (status != STATUS_OK) {
        return status;
    }
    if (mLockOwner == 0) {
        return 1;
    }
    setLockOwner(0);
    return STATUS_OK;
}

bool VoxtrelService::locked() {
    const MutexLock lock(mMutex);
    return mLockOwner != 0;
}

int VoxtrelService::getCapabilities(TTS::Capabilities& caps) {
    const bool permitted = mAdmission.permits(mCaller().uid);
    const MutexLock lock(mMutex);
    caps = mCapabilities;
    caps.permitted = permitted;
    return STATUS_OK;
}

}  // namespace voxtreld
