// SPDX-License-Identifier: Apache-2.0
// Any reply to any operation of the service proxy. The first byte picks the operation, the rest is
// the reply.
#include <cstdint>
#include <memory>

#include "fuzz/Input.h"
#include "ipc/BpTextToSpeechFestival.h"
#include "tests/support/RecordingRemote.h"

namespace {

using android::sp;
using TTS::BpTextToSpeechFestival;
using voxtrel_fuzz::require;

void fetchCapabilities(BpTextToSpeechFestival& proxy, size_t replySize) {
    TTS::Capabilities caps;
    require(proxy.getCapabilities(caps) == 0);
    require(caps.languages.size() == 5 && caps.voicesNum.size() == 5);
    require(caps.voices.size() * sizeof(TTS::VoiceInfo) <= replySize);
}

/// Keys -1 to 16: all kinds of values, and keys without one. The sanitizers guard the 16 bytes.
void readConfig(BpTextToSpeechFestival& proxy, uint8_t pick) {
    const auto key = static_cast<VOXTRELAPI_GCONF>(pick % 18 - 1);
    const auto out = std::make_unique<unsigned char[]>(key == GCONF_LANGUAGE ? 16 : 4);
    (void)proxy.globalConfig(1, key, out.get());
}

void readFlags(BpTextToSpeechFestival& proxy) {
    const auto flag = std::make_unique<bool>();
    (void)proxy.enabled2(1, GCONF_SPEED_ENABLE, flag.get());
    (void)proxy.enabled();
    (void)proxy.locked();
}

void readNumbers(BpTextToSpeechFestival& proxy) {
    float real = 0.0F;
    unsigned number = 0;
    require(proxy.pitch(real) == 0 && proxy.voice(number) == 0 && proxy.speed(number) == 0);
    (void)proxy.language();
    (void)proxy.verbosity();
    (void)proxy.registerCallback(1, nullptr);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size == 0) {
        return 0;
    }
    const sp<support::RecordingRemote> remote = new support::RecordingRemote;
    remote->answerBy([=](const support::Transaction&, const android::Parcel&,
                         android::Parcel& reply) { return reply.setData(data + 1, size - 1); });
    const sp<BpTextToSpeechFestival> proxy = new BpTextToSpeechFestival(remote);
    switch (data[0] & 3) {
        case 0:
            fetchCapabilities(*proxy, size);
            break;
        case 1:
            readConfig(*proxy, data[0] >> 2);
            break;
        case 2:
            readFlags(*proxy);
            break;
        default:
            readNumbers(*proxy);
            break;
    }
    return 0;
}
