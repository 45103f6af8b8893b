// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/testing/FakeRemote.h"

#include "vocabulary/Status.h"
#include "voxtrel/session/Wire.h"

namespace voxtrel::testing {

using State = FakeState;

Port::Found FakePort::find(std::function<void()> died) {
    const std::shared_ptr<State> service = mService.lock();
    const auto life = service != nullptr ? service->link(std::move(died)) : std::nullopt;
    if (!life) {
        return {nullptr, Reach::NoService};
    }
    return {new FakeRemote(service, *life)};
}

int FakeRemote::answer(const std::function<int(State&)>& serve) const {
    return mService->answer(mLife, [&] { return serve(*mService); });
}

int FakeRemote::take(std::function<void(State&)> serve) const {
    // The service keeps what it was asked, and must not be kept by it.
    return mService->take(
        mLife, [service = mService.get(), serve = std::move(serve)] { serve(*service); });
}

int FakeRemote::say(unsigned pid, unsigned id, const std::string& text, unsigned speed,
                    float volume, unsigned voice, unsigned bgVolume, unsigned ttsVolume,
                    float pitch, EN_VOXTREL_LANGUAGE language) {
    const WireSettings wire = {speed, volume, voice, bgVolume, ttsVolume, pitch, language};
    return take([=](State& service) { service.say(pid, id, text, wire); });
}

int FakeRemote::silence(unsigned pid, unsigned first, unsigned second, unsigned) {
    return take([=](State& service) { service.pause(pid, first, second); });
}

int FakeRemote::stopAndFlush(unsigned pid, unsigned arg) {
    return take([=](State& service) { service.stop(pid, arg == wire::kFlushEverything); });
}

int FakeRemote::setEnable(unsigned pid, bool enable) {
    return answer([=](State& service) { return service.enable(pid, enable); });
}

int FakeRemote::setVerbosity(unsigned pid, int verbosity) {
    return answer([=](State& service) { return service.setVerbosity(pid, verbosity); });
}

int FakeRemote::setGlobalRate(unsigned pid, unsigned rate) {
    return setGlobalConfig(pid, GCONF_SPEED, &rate);
}

int FakeRemote::setEnable2(unsigned pid, VOXTRELAPI_GCONF key, bool enable) {
    if (key == 0 || key == 1) {
        return setEnable(pid, key == 1);
    }
    return answer([=](State& service) { return service.turn(pid, key, enable); });
}

int FakeRemote::enabled2(unsigned, VOXTRELAPI_GCONF key, void* out) {
    return answer(
        [=](State& service) { return service.settings().isOn(key, *static_cast<bool*>(out)); });
}

int FakeRemote::setGlobalConfig(unsigned pid, VOXTRELAPI_GCONF key, void* value) {
    return answer([=](State& service) { return service.set(pid, key, value); });
}

int FakeRemote::globalConfig(unsigned, VOXTRELAPI_GCONF key, void* out) {
    return answer([=](State& service) { return service.settings().get(key, out); });
}

bool FakeRemote::enabled() const {
    return answer([](State& service) { return service.settings().isEnabled() ? 1 : 0; }) == 1;
}

int FakeRemote::verbosity() {
    return answer([](State& service) { return service.settings().verbosity(); });
}

int FakeRemote::globalRate() {
    std::uint32_t rate = 0;
    const int status = globalConfig(0, GCONF_SPEED, &rate);
    return status == TTS::STATUS_OK ? static_cast<int>(rate) : status;
}

int FakeRemote::factoryReset(unsigned pid) {
    return answer([=](State& service) { return service.reset(pid); });
}

int FakeRemote::registerCallback(unsigned pid, const android::sp<TTS::ICallback>& cb) {
    return answer([&](State& service) { return service.enroll(pid, cb), TTS::STATUS_OK; });
}

int FakeRemote::deregisterCallback(unsigned pid) {
    return answer([=](State& service) { return service.expel(pid), TTS::STATUS_OK; });
}

int FakeRemote::lock(unsigned pid) {
    return take([=](State& service) { service.lock(pid); });
}

int FakeRemote::unlock(unsigned pid) {
    return take([=](State& service) { service.unlock(pid); });
}

bool FakeRemote::locked() {
    return false;
}

int FakeRemote::getCapabilities(TTS::Capabilities& caps) {
    return answer([&](State&) { return caps = FakeSettings::capabilities(), TTS::STATUS_OK; });
}

android::status_t FakeRemote::pingBinder() {
    return mService->isAlive(mLife) ? android::OK : android::DEAD_OBJECT;
}

}  // namespace voxtrel::testing
