// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_IPC_ITEXTTOSPEECHFESTIVAL_H
#define VOXTREL_IPC_ITEXTTOSPEECHFESTIVAL_H

#include <string>

#include "ipc/BinderHeaders.h"
#include "ipc/ICallback.h"
#include "vocabulary/Capabilities.h"
#include "vocabulary/GlobalConfig.h"
#include "vocabulary/Language.h"

namespace TTS {

/// The speech service as its clients see it. `descriptor`, "tavix.ITextToSpeechFestival", is also
/// the name under which a service registers and its clients search.
///
/// `pid` is the client's process id, under which the service knows it. Operations that return `int`
/// give a status: 0 for success, else a negative code of the service's own. The order of the
/// declarations is the order of the virtual table and part of the binary interface: never change
/// it.
///
/// `asInterface(binder)` gives null for a null binder, the service itself when it lives in this
/// process, and otherwise a new `BpTextToSpeechFestival`.
///
/// Called on: any thread. Locks: none here; an implementation says its own.
class ITextToSpeechFestival : public android::IInterface {
public:
    DECLARE_META_INTERFACE(TextToSpeechFestival)

    /// Queues `text` to be spoken as utterance `id`. The numbers are the client's own settings;
    /// 65535 in one of them means that the client never set it.
    virtual int say(unsigned pid, unsigned id, const std::string& text, unsigned speed,
                    float volume, unsigned voice, unsigned bgVolume, unsigned ttsVolume,
                    float pitch, EN_VOXTREL_LANGUAGE language) = 0;

    /// Queues a pause; `first` and `second` are the service's to interpret.
    virtual int silence(unsigned pid, unsigned first, unsigned second, unsigned bgVolume) = 0;

    /// Stops and drops queued speech; `arg` is the service's to interpret.
    virtual int stopAndFlush(unsigned pid, unsigned arg) = 0;

    /// Switches speech. Reaches a service as `setEnable2(pid, enable ? 1 : 0, false)`.
    virtual int setEnable(unsigned pid, bool enable) = 0;

    /// Sets how much the service announces, for all clients; the scale is the service's.
    virtual int setVerbosity(unsigned pid, int verbosity) = 0;

    /// Sets the speech rate that serves every client without a speed of its own.
    virtual int setGlobalRate(unsigned pid, unsigned rate) = 0;

    /// Sets the enable flag `key`.
    virtual int setEnable2(unsigned pid, VOXTRELAPI_GCONF key, bool enable) = 0;

    /// Reads the enable flag `key`. @param out a `bool` that receives it.
    virtual int enabled2(unsigned pid, VOXTRELAPI_GCONF key, void* out) = 0;

    /// Sets a global value. @param value the 32-bit integer or float that `key` carries; for
    /// `GCONF_LANGUAGE` the NUL-terminated code itself, at most 255 bytes.
    /// @return -3 for a key that carries no value.
    virtual int setGlobalConfig(unsigned pid, VOXTRELAPI_GCONF key, void* value) = 0;

    /// Reads a global value. @param out the 32-bit integer or float that `key` carries. For
    /// `GCONF_LANGUAGE`: a caller of the proxy gives 16 zeroed bytes, and an implementation behind
    /// the stub gets 256 and stores a NUL-terminated code.
    /// @return -3 for a key that carries no value, with `out` untouched.
    virtual int globalConfig(unsigned pid, VOXTRELAPI_GCONF key, void* out) = 0;

    /// Whether speech is switched on. A proxy without a remote says false.
    virtual bool enabled() const = 0;

    /// The value that `setVerbosity` set last, for any client.
    virtual int verbosity() = 0;

    /// The rate that `setGlobalRate` set last, for any client.
    virtual int globalRate() = 0;

    /// Puts the service's own settings back to what it was delivered with.
    virtual int factoryReset(unsigned pid) = 0;

    /// Registers the object that the service notifies. An implementation keeps its own reference;
    /// `cb` may be null.
    virtual int registerCallback(unsigned pid, const android::sp<ICallback>& cb) = 0;

    /// Forgets the callback of `pid`; nothing is notified to it from then on.
    virtual int deregisterCallback(unsigned pid) = 0;

    /// Reserves the service for `pid`. One-way: over the wire a proxy reads 0 whatever came of it.
    virtual int lock(unsigned pid) = 0;

    /// Gives the reservation of `pid` up. One-way, as `lock`.
    virtual int unlock(unsigned pid) = 0;

    /// Whether some client has reserved the service. One-way: over the wire a proxy always reads
    /// false; a proxy without a remote says true.
    virtual bool locked() = 0;

    /// Fills `caps`. An implementation stores exactly five `languages` and five `voicesNum`.
    virtual int getCapabilities(Capabilities& caps) = 0;
};

}  // namespace TTS

#endif
