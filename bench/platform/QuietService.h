// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BENCH_PLATFORM_QUIETSERVICE_H
#define VOXTREL_BENCH_PLATFORM_QUIETSERVICE_H

#include <map>
#include <mutex>

#include "ipc/BnTextToSpeechFestival.h"

namespace bench {

/// A speech service that is always ready, keeps its clients' callbacks and says nothing: what is
/// left is the cost of getting there.
class QuietService : public TTS::BnTextToSpeechFestival {
public:
    int say(unsigned, unsigned, const std::string&, unsigned, float, unsigned, unsigned, unsigned,
            float, EN_VOXTREL_LANGUAGE) override {
        return 0;
    }
    int silence(unsigned, unsigned, unsigned, unsigned) override { return 0; }
    int stopAndFlush(unsigned, unsigned) override { return 0; }
    int setEnable(unsigned, bool) override { return 0; }
    int setVerbosity(unsigned, int) override { return 0; }
    int setGlobalRate(unsigned, unsigned) override { return 0; }
    int setEnable2(unsigned, VOXTRELAPI_GCONF, bool) override { return 0; }
    int enabled2(unsigned, VOXTRELAPI_GCONF, void*) override { return 0; }
    int setGlobalConfig(unsigned, VOXTRELAPI_GCONF, void*) override { return 0; }
    int globalConfig(unsigned, VOXTRELAPI_GCONF, void*) override { return 0; }
    bool enabled() const override { return true; }
    int verbosity() override { return 0; }
    int globalRate() override { return 0; }
    int factoryReset(unsigned) override { return 0; }
    int registerCallback(unsigned pid, const android::sp<TTS::ICallback>& cb) override {
        const std::lock_guard<std::mutex> held(mLock);
        mCallbacks[pid] = cb;
        return 0;
    }
    int deregisterCallback(unsigned pid) override {
        const std::lock_guard<std::mutex> held(mLock);
        mCallbacks.erase(pid);
        return 0;
    }
    int lock(unsigned) override { return 0; }
    int unlock(unsigned) override { return 0; }
    bool locked() override { return false; }
    int getCapabilities(TTS::Capabilities& caps) override {
        caps.ready = true;
        caps.permitted = true;
        caps.languages.assign(5, true);
        caps.voicesNum.assign(5, 2);
        caps.voices.resize(10);
        return 0;
    }

private:
    std::mutex mLock;
    std::map<unsigned, android::sp<TTS::ICallback>> mCallbacks;
};

}  // namespace bench

#endif
