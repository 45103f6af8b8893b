// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_IPC_BPTEXTTOSPEECHFESTIVAL_H
#define VOXTREL_IPC_BPTEXTTOSPEECHFESTIVAL_H

#include <string>

#include "ipc/BinderHeaders.h"
#include "ipc/ITextToSpeechFestival.h"

namespace TTS {

/// The service as its clients hold it: one call, one transaction.
///
/// Without a remote every operation returns at once and touches nothing: -5 where it returns a
/// status, false from `enabled()`, true from `locked()` (no service, no access), 0 from
/// `language()`. With one, the result is the reply's status. The status of the transaction itself
/// is not looked at: a dead or silent service leaves the reply empty, and that reads as 0 (false,
/// 0.0). So the one-way operations `say`, `silence`, `stopAndFlush`, `lock` and `unlock` return 0,
/// and `locked` false, whatever the service did.
///
/// Called on: any thread, several at once. Locks: none; each call has parcels of its own.
class BpTextToSpeechFestival : public android::BpInterface<ITextToSpeechFestival> {
public:
    /// Shares the ownership of `remote`, which may be null.
    explicit BpTextToSpeechFestival(const android::sp<android::IBinder>& remote);

    /// `text` ends at its first NUL byte, if it holds one.
    int say(unsigned pid, unsigned id, const std::string& text, unsigned speed, float volume,
            unsigned voice, unsigned bgVolume, unsigned ttsVolume, float pitch,
            EN_VOXTREL_LANGUAGE language) override;
    int silence(unsigned pid, unsigned first, unsigned second, unsigned bgVolume) override;
    int stopAndFlush(unsigned pid, unsigned arg) override;
    int setEnable(unsigned pid, bool enable) override;
    int setVerbosity(unsigned pid, int verbosity) override;
    int setGlobalRate(unsigned pid, unsigned rate) override;
    int setEnable2(unsigned pid, VOXTRELAPI_GCONF key, bool enable) override;

    /// @param out the `bool` that receives the flag: false when the service does not reply.
    /// @return -3 for a null `out`, without a transaction.
    int enabled2(unsigned pid, VOXTRELAPI_GCONF key, void* out) override;

    /// @return -3 without a transaction for a key that carries no value, and for a null `value`.
    int setGlobalConfig(unsigned pid, VOXTRELAPI_GCONF key, void* value) override;

    /// Sends the request for every key, also for those that the service refuses.
    /// @param out for `GCONF_LANGUAGE` the bytes of the code are stored without a NUL, and never
    /// more than 16 of them: a longer answer is cut, one that the reply does not hold in full is
    /// not relied on.
    /// @return -3 without a transaction for a null `out` where the key carries a value.
    int globalConfig(unsigned pid, VOXTRELAPI_GCONF key, void* out) override;

    bool enabled() const override;
    int verbosity() override;
    int globalRate() override;
    int factoryReset(unsigned pid) override;
    int registerCallback(unsigned pid, const android::sp<ICallback>& cb) override;
    int deregisterCallback(unsigned pid) override;
    int lock(unsigned pid) override;
    int unlock(unsigned pid) override;
    bool locked() override;

    /// Overwrites `caps`; its vectors keep their storage. A silent service leaves zeros, five false
    /// languages, five zero voice counts and no voice. `voices` ends where the reply's data ends,
    /// whatever count it claims.
    /// @return 0, whatever the transaction did; -5 without a remote, with `caps` untouched.
    int getCapabilities(Capabilities& caps) override;

    // Four queries that the stub of today's services does not implement: they return 0.

    virtual int language();
    virtual int pitch(float& out);
    virtual int voice(unsigned& out);
    virtual int speed(unsigned& out);
};

}  // namespace TTS

#endif
