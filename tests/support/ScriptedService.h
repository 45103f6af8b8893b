// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SUPPORT_SCRIPTEDSERVICE_H
#define VOXTREL_TESTS_SUPPORT_SCRIPTEDSERVICE_H

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "tests/support/RecordingRemote.h"
#include "vocabulary/Capabilities.h"

namespace support {

/// Transaction codes of the service interface, for setting answers.
enum ServiceCode : uint32_t {
    kSay = 1,
    kSilence = 2,
    kStopAndFlush = 3,
    kSetEnable = 5,
    kSetVerbosity = 10,
    kSetGlobalRate = 11,
    kSetGlobalConfig = 12,
    kEnabled = 13,
    kEnabled2 = 14,
    kVerbosity = 19,
    kGlobalRate = 20,
    kGlobalConfig = 21,
    kFactoryReset = 22,
    kRegisterCallback = 23,
    kDeregisterCallback = 24,
    kLock = 25,
    kUnlock = 26,
    kLocked = 27,
    kGetCapabilities = 28,
};

/// The service as a remote binder: takes requests apart by hand, notes each in the journal as
/// "ask say(pid, 7, \"Hello\", ...)" ("pid" when it is this process's), and answers what the script
/// says. It answers one-way requests too, so that a script can make them fail.
///
/// Set the script before the calls that it is to answer, on the thread that makes them.
class ScriptedService {
public:
    /// @param remote is made to answer; a test that watches more than requests gives its own.
    explicit ScriptedService(const android::sp<RecordingRemote>& remote = new RecordingRemote);

    int32_t statusOf(uint32_t code) const;

    std::map<uint32_t, int32_t> status;  ///< by transaction code; 0 when absent
    std::map<int32_t, bool> flags;       ///< `enabled2` by key; true when absent
    bool enabled = true;
    bool locked = false;
    int32_t verbosity = 0;
    int32_t rate = 0;
    uint32_t number = 0;                     ///< `globalConfig` for integer keys
    float real = 0.0F;                       ///< `globalConfig` for float keys
    std::string language;                    ///< `globalConfig` for the language
    std::vector<TTS::Capabilities> fetches;  ///< one answer a fetch; the last one repeats
    android::sp<android::IBinder> callback;  ///< what the last registration brought

    /// Called with the code of each request, before it is answered.
    std::function<void(uint32_t code)> onRequest;

    /// Where it is found; a new one is a service that has been started again.
    android::sp<RecordingRemote> binder;

private:
    android::status_t answer(const Transaction& sent, const android::Parcel& request,
                             android::Parcel& reply);
    void answerGlobalConfig(const android::Parcel& request, android::Parcel& reply) const;
    void answerCapabilities(android::Parcel& reply);

    size_t mFetches = 0;
};

/// A ready service that admits everybody: pitch 50 to 200, volume 0 to 100, speed 100 to 400;
/// English (Anna 1, Ben 2), French (Claire 1) and Portuguese (Rita 1, Rui 2, Sara 3).
TTS::Capabilities usualCapabilities();

TTS::VoiceInfo voiceOf(EN_VOXTREL_LANGUAGE language, uint32_t id, const std::string& name);

}  // namespace support

#endif
