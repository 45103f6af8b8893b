// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTING_FAKEREMOTE_H
#define VOXTREL_TESTING_FAKEREMOTE_H

#include "ipc/BnTextToSpeechFestival.h"
#include "voxtrel/session/Port.h"
#include "voxtrel/testing/FakeState.h"

namespace voxtrel::testing {

/// The way of a session to a fake service.
class FakePort : public Port {
public:
    explicit FakePort(std::weak_ptr<FakeState> service) : mService(std::move(service)) {}
    Found find(std::function<void()> died) override;

private:
    const std::weak_ptr<FakeState> mService;
};

/// One life of a fake service, as a session calls it. Stays usable, and useless, after it.
class FakeRemote : public TTS::BnTextToSpeechFestival {
public:
    FakeRemote(std::shared_ptr<FakeState> service, std::uint64_t life)
        : mService(std::move(service)), mLife(life) {}

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
    android::status_t pingBinder() override;

private:
    int answer(const std::function<int(FakeState&)>& serve) const;
    int take(std::function<void(FakeState&)> serve) const;

    const std::shared_ptr<FakeState> mService;
    const std::uint64_t mLife;
};

}  // namespace voxtrel::testing

#endif
