// SPDX-License-Identifier: Apache-2.0
#include "service/VoxtrelService.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <new>
#include <utility>

#include "service/Text.h"
#include "service/UncaughtException.h"
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
      mPolicy(parts.policy),
      mCaller(parts.caller),
      mLog(parts.log),
      mRefusals(parts.log),
      mLastRequest(std::chrono::steady_clock::now()),
      mSettings(parts.profile->load()),
      mCapabilities(emptyCapabilities()),
      mClients([this](uint32_t pid) { clientDied(pid); }, parts.policy->ownUser(),
               parts.maxClients) {
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
    const auto bare = bareOperation(code);
    if (bare.has_value() && permit(mCaller().pid, *bare) != STATUS_OK) {
        return android::PERMISSION_DENIED;
    }
    try {
        return BnTextToSpeechFestival::onTransact(code, data, reply, flags);
    } catch (const std::bad_alloc&) {
        endAtOnce();  // a proxy would read a request that has failed as done
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

/// The process that sent the current request, which names `pid`; 0 if it is not known.
uint32_t VoxtrelService::senderOf(unsigned pid) const {
    const Caller caller = mCaller();
    // The kernel's driver does not report the pid of a one-way call, only its uid.
    return caller.pid == 0 && mClients.isUser(pid, caller.uid) ? pid : caller.pid;
}

int VoxtrelService::admit(unsigned pid, Operation operation) {
    const uint32_t user = mCaller().uid;
    const uint32_t sender = senderOf(pid);
    std::string reason;
    if (sender == 0) {
        reason = "a process of user " + std::to_string(user) + " gave the process id " +
                 std::to_string(pid) + ", which is none of its";
    } else if (sender != pid) {
        reason =
            "process " + std::to_string(sender) + " gave the process id " + std::to_string(pid);
    } else {
        return permit(sender, operation);
    }
    const char* name = ruleOf(operation).name;
    mRefusals.refused(sender == 0 ? pid : sender, name, STATUS_PERMISSION_DENIED,
                      std::string(name) + ": " + reason + ", refused");
    return STATUS_PERMISSION_DENIED;
}

/// Checks the permission of the user who sent the current request. A refusal of an operation
/// without a status is reported by an event.
int VoxtrelService::permit(uint32_t sender, Operation operation) {
    const OperationRule& rule = ruleOf(operation);
    const uint32_t user = mCaller().uid;
    if (mPolicy->permits(user, rule.permission)) {
        return STATUS_OK;
    }
    mRefusals.refused(sender, rule.name, STATUS_PERMISSION_DENIED,
                      std::string(rule.name) + ": user " + std::to_string(user) +
                          " lacks the permission " + wordOf(rule.permission) + ", refused");
    if (rule.refusal == Refusal::InState) {
        mClients.tell(sender, EVENT_STATE, STATE_REFUSED, rule.transaction.code);
    }
    return STATUS_PERMISSION_DENIED;
}

/// Logs `status` if it is a refusal that has not been logged yet. @return `status`.
int VoxtrelService::answered(unsigned pid, Operation operation, int status) {
    if (status < 0 && status != STATUS_PERMISSION_DENIED) {
        const char* name = ruleOf(operation).name;
        mRefusals.refused(pid, name, status,
                          std::string(name) + ": process " + std::to_string(pid) +
                              " is refused with " + std::to_string(status));
    }
    return status;
}

int VoxtrelService::mayChange(unsigned pid) const {
    if (mClients.isDead(pid)) {
        return STATUS_PERMISSION_DENIED;  // a late request of a client that has died
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
    // Clients check whether speech is enabled before they send, so this was sent while it was, and
    // ends like the utterances that waited when it was disabled.
    return mSettings.enabled() ? mQueue->push(std::move(utterance))
                               : mQueue->pushDropped(utterance, STATUS_DISABLED);
}

int VoxtrelService::enqueue(Utterance utterance, const SpeechSettings& asked, Operation operation) {
    const uint32_t pid = utterance.pid;
    const uint32_t id = utterance.id;
    utterance.user = mCaller().uid;
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
                   {speed, volume, voice, bgVolume, ttsVolume, pitch, language}, Operation::Say);
}

int VoxtrelService::silence(unsigned pid, unsigned first, unsigned second, unsigned bgVolume) {
    Utterance utterance;
    utterance.pid = pid;
    utterance.id = first;
    utterance.pauseMs = second;
    SpeechSettings asked;
    asked.bgVolume = bgVolume;
    return enqueue(std::move(utterance), asked,
                   second > kLongestPauseMs ? Operation::SilenceTooLong : Operation::Silence);
}

int VoxtrelService::stopAndFlush(unsigned pid, unsigned arg) {
    const Operation asked = arg == FLUSH_EVERYTHING ? Operation::StopAll : Operation::StopOwn;
    const Caller caller = mCaller();
    // A user may stop the speech of any of their processes, even of one that has ended.
    const bool isOfUser = arg == FLUSH_OWN && mQueue->isOfUser(pid, caller.uid);
    const uint32_t sender = isOfUser && caller.pid != 0 ? caller.pid : pid;
    const int status = isOfUser ? permit(sender, asked) : admit(pid, asked);
    if (status != STATUS_OK && asked == Operation::StopOwn && caller.pid != pid) {
        mClients.tell(caller.pid, EVENT_STATE, STATE_REFUSED, ruleOf(asked).transaction.code);
    }
    return status != STATUS_OK ? status : answered(sender, asked, flush(sender, pid, arg));
}

int VoxtrelService::flush(unsigned sender, unsigned pid, unsigned arg) {
    const MutexLock lock(mMutex);
    const int status = mayChangeOrIsTold(sender);
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

/// A client that is refused because of the lock gets an event that names the holder.
int VoxtrelService::mayChangeOrIsTold(unsigned pid) {
    const int status = mayChange(pid);
    if (status == STATUS_LOCKED) {
        mClients.tell(pid, EVENT_STATE, STATE_LOCK, mLockOwner);
    }
    return status;
}

int VoxtrelService::registerCallback(unsigned pid, const android::sp<TTS::ICallback>& cb) {
    const int status = admit(pid, Operation::RegisterCallback);
    if (status != STATUS_OK) {
        return status;
    }
    // The service's own binder never dies: nothing would release the sender's resources.
    const bool usable = cb != nullptr && android::IInterface::asBinder(cb).get() != this;
    const uint32_t user = mCaller().uid;
    const int added = usable ? mClients.add(pid, user, cb) : STATUS_BAD_PARAMETER;
    if (added == STATUS_QUEUE_FULL) {
        mRefusals.refused(pid, "registerCallback", added,
                          "registerCallback: no room for process " + std::to_string(pid) +
                              ", too many clients are registered, of its user or in all; try "
                              "again when one has left");
        return added;
    }
    if (added != STATUS_OK) {
        return answered(pid, Operation::RegisterCallback, added);
    }
    if (!stays(pid)) {
        return answered(pid, Operation::RegisterCallback, STATUS_BAD_PARAMETER);
    }
    mLog(LogLevel::Debug,
         "process " + std::to_string(pid) + " of user " + std::to_string(user) + " has come");
    return STATUS_OK;
}

/// False if the service is being closed; the client is removed then.
bool VoxtrelService::stays(unsigned pid) {
    const MutexLock lock(mMutex);
    if (mClosed) {
        (void)mClients.remove(pid);
    }
    return !mClosed;
}

int VoxtrelService::deregisterCallback(unsigned pid) {
    const int status = admit(pid, Operation::DeregisterCallback);
    if (status != STATUS_OK) {
        return status;
    }
    if (mClients.remove(pid)) {  // not an error the second time
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
    const int status = admit(pid, Operation::Lock);
    return status != STATUS_OK ? status : answered(pid, Operation::Lock, takeLock(pid));
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
    if (isLockOfAnother(pid)) {
        return breakLock(pid);
    }
    const int status = admit(pid, Operation::Unlock);
    return status != STATUS_OK ? status : answered(pid, Operation::Unlock, freeLock(pid));
}

/// True where a request names the process that holds the lock, and comes from another one.
bool VoxtrelService::isLockOfAnother(unsigned pid) const {
    const bool isSender = senderOf(pid) == pid;
    const MutexLock lock(mMutex);
    return !isSender && pid != 0 && mLockOwner == pid;
}

/// A client does not know whether its `lock` succeeded, and unlocks in any case. So breaking
/// another's lock takes a request that names the holder instead of the sender.
int VoxtrelService::breakLock(unsigned holder) {
    const Caller caller = mCaller();
    const int status = permit(caller.pid, Operation::BreakLock);
    if (status != STATUS_OK) {
        return status;
    }
    {
        const MutexLock lock(mMutex);
        if (mLockOwner != holder) {
            return 1;  // released meanwhile
        }
        setLockOwner(0);
    }
    mLog(LogLevel::Info, "user " + std::to_string(caller.uid) + " has broken the lock of process " +
                             std::to_string(holder));
    return STATUS_OK;
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
    const Caller caller = mCaller();
    // Clients ignore the status of their registration and read this one.
    const bool permitted =
        mPolicy->permits(caller.uid, Permission::Connect) && !mClients.isRefused(caller.pid);
    const MutexLock lock(mMutex);
    caps = mCapabilities;
    caps.permitted = permitted;
    return STATUS_OK;
}

}  // namespace voxtreld
