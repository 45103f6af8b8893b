// SPDX-License-Identifier: Apache-2.0
// Any request of any code, sent to the service stub and to the callback stub. The first byte is the
// code, the second how many bytes of text the service stores without a NUL when it is asked for the
// language, the third how many words of text follow the request, which is the rest: lengths beyond
// a buffer are dangerous only where the data backs them, and the fuzzer favours short inputs.
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <vector>

#include "fuzz/Input.h"
#include "ipc/BnTextToSpeechFestival.h"
#include "ipc/Callback.h"
#include "tests/support/RecordingService.h"

namespace {

using android::Parcel;
using android::sp;
using voxtrel_fuzz::require;

/// Reads all that it is given, so that the sanitizers see where a pointer leads.
class CarefulService : public support::RecordingService {
public:
    explicit CarefulService(size_t stored) : mStored(stored) {}

    int setGlobalConfig(unsigned pid, VOXTRELAPI_GCONF key, void* value) override {
        require(key >= 1 && key <= 14 && value != nullptr);
        require(key != GCONF_LANGUAGE || std::strlen(static_cast<const char*>(value)) <= 255);
        return RecordingService::setGlobalConfig(pid, key, value);
    }
    int globalConfig(unsigned pid, VOXTRELAPI_GCONF key, void* out) override {
        require(key >= 1 && key <= 14 && out != nullptr);
        if (key == GCONF_LANGUAGE) {
            std::memset(out, 'x', mStored);
            return 0;
        }
        return RecordingService::globalConfig(pid, key, out);
    }
    int registerCallback(unsigned pid, const sp<TTS::ICallback>& cb) override {
        require(cb == nullptr);  // bytes alone never become a reference
        return RecordingService::registerCallback(pid, cb);
    }

private:
    const size_t mStored;
};

unsigned notified = 0;

void countNotification(unsigned, unsigned, unsigned) {
    ++notified;
}

void transactWithService(uint32_t code, size_t stored, const Parcel& request) {
    const sp<CarefulService> service = new CarefulService(stored);
    Parcel reply;
    try {
        const android::status_t status = service->onTransact(code, request, &reply, 0);
        require(status == android::NO_ERROR || service->calls().empty());
        require(service->calls().size() <= 1);
    } catch (const std::logic_error&) {
        require(code == 1 && service->calls().empty());
    }
    require(reply.dataSize() % 4 == 0 && reply.dataSize() <= 4 + 256 + 4);
}

void transactWithCallback(uint32_t code, const Parcel& request) {
    const sp<TTS::Callback> callback = new TTS::Callback(countNotification);
    const unsigned before = notified;
    Parcel reply;
    (void)callback->onTransact(code, request, &reply, 0);
    require(notified - before == (code == 1 ? 1U : 0U));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 3) {
        return 0;
    }
    std::vector<uint8_t> image(data + 3, data + size);
    image.insert(image.end(), size_t{4} * data[2], 'x');
    Parcel request;
    require(request.setData(image.data(), image.size()) == android::NO_ERROR);
    request.setDataPosition(0);
    transactWithService(data[0], std::min<size_t>(data[1], 255) + 1, request);
    request.setDataPosition(0);
    transactWithCallback(data[0], request);
    return 0;
}
