// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_VOXTRELSERVICE_H
#define VOXTREL_SERVICE_VOXTRELSERVICE_H

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "ipc/BnTextToSpeechFestival.h"
#include "service/Caller.h"
#include "service/ClientRegistry.h"
#include "service/Engine.h"
#include "service/GlobalSettings.h"
#include "service/Locking.h"
#include "service/Log.h"
#include "service/Operations.h"
#include "service/Policy.h"
#include "service/ProfileStore.h"
#include "service/RefusalLog.h"
#include "service/SpeechQueue.h"
#include "service/SpeechSettings.h"

namespace voxtreld {

/// The speech service: decides which requests are good, resolves their settings and queues them.
/// docs/service.md has a table of what each operation takes and answers.
///
/// Every request with a process id is first refused with -10 if that is not the caller's own or the
/// caller's user may not ask for it (`Policy`, `Operations`); one that changes something is then
/// refused with -7 while another client holds the lock. The lock is enforced here because `locked`
/// over the wire is always false. `say` and `silence` travel one way, so what becomes of them is
/// told by events.
///
/// Called on: binder threads, any number at once; no request waits for sound, disks or clients.
/// Locks: one of its own, taken before those of its parts, and not while it logs. The runtime may
/// hold the service longer than its maker does, so it keeps its parts itself.
class VoxtrelService : public TTS::BnTextToSpeechFestival {
public:
    using CallerSource = std::function<Caller()>;
    using Duration = std::chrono::steady_clock::duration;

    struct Parts {
        std::shared_ptr<SpeechQueue> queue;
        std::shared_ptr<ProfileStore> profile;
        std::shared_ptr<const Policy> policy;
        CallerSource caller;  ///< who sent the request that this thread serves
        Log log;
        size_t maxClients = ClientRegistry::kMaxClients;
    };

    /// Starts with the settings of the profile, which it loads, and without voices.
    explicit VoxtrelService(const Parts& parts);

    /// Fills the capabilities; from now on clients find the service ready.
    void announceVoices(const std::vector<EngineVoice>& voices);

    /// Where the speech thread reports to.
    Listener& listener() { return mClients; }

    /// Returns when all events posted before the call have been sent, or the time is up.
    void flushEvents(std::chrono::milliseconds atMost) { mClients.flush(atMost); }

    /// How long the service has been idle: no client, no utterance, no request.
    Duration idleTime() const;

    /// If that is `limit` or more, no client is taken from now on, and the program is to end: a
    /// client that comes between this and the end finds a service that is not ready, and then its
    /// death. One that came before makes this false.
    bool closeIfIdle(Duration limit);

    /// A request that makes the stub throw (`say` without a text) is answered with BAD_VALUE.
    android::status_t onTransact(uint32_t code, const android::Parcel& data, android::Parcel* reply,
                                 uint32_t flags) override;

    int say(unsigned pid, unsigned id, const std::string& text, unsigned speed, float volume,
            unsigned voice, unsigned bgVolume, unsigned ttsVolume, float pitch,
            EN_VOXTREL_LANGUAGE language) override;
    int silence(unsigned pid, unsigned first, unsigned second, unsigned bgVolume) override;
    int stopAndFlush(unsigned pid, unsigned arg) override;
    int setEnable(unsigned pid, bool enable) override;
    int setVerbosity(unsigned pid, int verbosity) override;
    int setGlobalRate(unsigned pid, unsigned rate) override;
    int setEnable2(unsigned pid, VOXTRELAPI_GCONF key, bool enable) override;
    int enabled2(unsigned pid, VOXTRELAPI_GCONF key, void* out) override;
    int setGlobalConfig(unsigned pid, VOXTRELAPI_GCONF key, void* value) override;
    int globalConfig(unsigned pid, VOXTRELAPI_GCONF key, void* out) override;
    bool enabled() const override;
    int verbosity() override;
    int globalRate() override;
    int factoryReset(unsigned pid) override;
    int registerCallback(unsigned pid, const android::sp<TTS::ICallback>& cb) override;
    int deregisterCallback(unsigned pid) override;
    int lock(unsigned pid) override;
    int unlock(unsigned pid) override;
    bool locked() override;
    int getCapabilities(TTS::Capabilities& caps) override;

private:
    using Change = std::function<int(GlobalSettings& settings)>;

    void touch();
    uint32_t senderOf(unsigned pid) const;
    int answered(unsigned pid, Operation operation, int status);
    int admit(unsigned pid, Operation operation);
    int permit(uint32_t sender, Operation operation);
    int mayChange(unsigned pid) const VOXTRELD_REQUIRES(mMutex);
    int mayChangeOrIsTold(unsigned pid) VOXTRELD_REQUIRES(mMutex);
    int accept(Utterance utterance, const SpeechSettings& asked) VOXTRELD_REQUIRES(mMutex);
    int flush(unsigned sender, unsigned pid, unsigned arg);
    int takeLock(unsigned pid);
    int freeLock(unsigned pid);
    bool isLockOfAnother(unsigned pid) const;
    int breakLock(unsigned holder);
    bool stays(unsigned pid);
    int applied(unsigned pid, uint32_t state, const Change& apply);
    int enqueue(Utterance utterance, const SpeechSettings& asked, Operation operation);
    int change(unsigned pid, Operation operation, uint32_t state, const Change& apply);
    int switchSpeech(unsigned pid, bool on);
    void keep(uint32_t state) VOXTRELD_REQUIRES(mMutex);
    void setLockOwner(uint32_t pid) VOXTRELD_REQUIRES(mMutex);
    void clientDied(uint32_t pid);

    const std::shared_ptr<SpeechQueue> mQueue;
    const std::shared_ptr<ProfileStore> mProfile;
    const std::shared_ptr<const Policy> mPolicy;
    const CallerSource mCaller;
    const Log mLog;
    RefusalLog mRefusals;
    std::atomic<std::chrono::steady_clock::time_point> mLastRequest;
    mutable Mutex mMutex;
    GlobalSettings mSettings VOXTRELD_GUARDED_BY(mMutex);
    TTS::Capabilities mCapabilities VOXTRELD_GUARDED_BY(mMutex);
    bool mClosed VOXTRELD_GUARDED_BY(mMutex) = false;
    uint32_t mLockOwner VOXTRELD_GUARDED_BY(mMutex) = 0;  ///< 0: nobody
    ClientRegistry mClients;
};

}  // namespace voxtreld

#endif
