// SPDX-License-Identifier: Apache-2.0
#include "fuzz/client/HostileService.h"

#include <cstring>

#include "vocabulary/GlobalConfig.h"
#include "vocabulary/Language.h"

namespace voxtrel_fuzz {
namespace {

using android::Parcel;
using android::sp;
using android::status_t;
namespace transaction = TTS::transaction;

void writeVoice(Parcel& reply, int32_t language, int32_t id, const char* name) {
    char text[64] = {};
    std::strncpy(text, name, sizeof text - 1);
    reply.writeInt32(language);
    reply.writeInt32(id);
    reply.write(text, sizeof text);
}

/// Ready, and admits everybody; speaks the first two languages.
void writeCapabilities(Parcel& reply) {
    for (int feature = 0; feature < 2; ++feature) {  // pitch and volume
        reply.writeInt32(1);
        reply.writeFloat(0.0F);
        reply.writeFloat(200.0F);
    }
    for (const int32_t speed : {1, 50, 400}) {
        reply.writeInt32(speed);
    }
    reply.writeInt32(1);
    reply.writeInt32(1);
    for (const int32_t isSpoken : {1, 1, 0, 0, 0}) {
        reply.writeInt32(isSpoken);
    }
    for (const int32_t voices : {2, 1, 0, 0, 0}) {
        reply.writeInt32(voices);
    }
    reply.writeInt32(3);
    writeVoice(reply, LANG_EN_US, 1, "one");
    writeVoice(reply, LANG_EN_US, 2, "two");
    writeVoice(reply, LANG_FR_FR, 1, "un");
}

void writeGlobalValue(Parcel& reply, int32_t key) {
    if (key == GCONF_LANGUAGE) {
        const std::string code = "en_US";
        reply.writeInt32(static_cast<int32_t>(code.size()));
        reply.write(code.data(), code.size());
    } else {
        reply.writeInt32(0);
    }
    reply.writeInt32(0);
}

}  // namespace

Exchange::Exchange(uint32_t code, const Parcel& reply)
    : mCode(code), mWords(reply.dataSize() / sizeof(int32_t)) {
    if (!mWords.empty()) {
        std::memcpy(mWords.data(), reply.data(), mWords.size() * sizeof(int32_t));
    }
}

HostileService::HostileService(Input& input, Note note) : mInput(input), mNote(std::move(note)) {
    start();
}

HostileService::~HostileService() {
    end();
}

sp<android::IBinder> HostileService::binder() const {
    return mIsFound ? sp<android::IBinder>(mLives.back()) : nullptr;
}

void HostileService::start() {
    const sp<support::RecordingRemote> life = new support::RecordingRemote;
    life->answerBy([this](const support::Transaction& sent, const Parcel& request, Parcel& reply) {
        return answer(sent, request, reply);
    });
    if (mInput.below(16) == 15) {
        life->answerLinksWith(android::DEAD_OBJECT);
    }
    mLives.push_back(life);
    mIsFound = true;
    mIsOfThisProcess = mInput.below(2) == 1;
}

void HostileService::vanish() {
    mIsFound = false;
}

void HostileService::die() {
    if (!mLives.empty()) {
        mLives[mLives.size() - 1 - mInput.below(4) % mLives.size()]->die();
    }
}

void HostileService::end() {
    std::vector<android::wp<android::RefBase>> held;
    for (const sp<support::RecordingRemote>& life : mLives) {
        held.emplace_back(life.get());
    }
    for (const sp<android::IBinder>& callback : mCallbacks) {
        held.emplace_back(callback.get());
    }
    mLives.clear();
    mCallbacks.clear();
    mIsFound = false;
    for (const android::wp<android::RefBase>& each : held) {
        require(each.promote() == nullptr);
    }
}

status_t HostileService::answer(const support::Transaction& sent, const Parcel& request,
                                Parcel& reply) {
    const bool isSilent = (sent.flags & android::IBinder::FLAG_ONEWAY) != 0 && !mIsOfThisProcess;
    const unsigned choice = mInput.below(8);
    status_t status = android::NO_ERROR;
    if (choice == 7) {
        status = android::FAILED_TRANSACTION;
    } else if (choice >= 5 && !isSilent) {
        const std::vector<uint8_t> image = mInput.bytes(mInput.byte());
        (void)reply.setData(image.data(), image.size());
    } else if (!isSilent) {
        answerWithSense(sent.code, request, reply);
    }
    if (sent.code == transaction::kRegisterCallback.code) {
        request.setDataPosition(sizeof(int32_t));
        mCallbacks.push_back(request.readStrongBinder());
    }
    reply.setDataPosition(0);
    mNote(Exchange(sent.code, reply));
    return status;
}

void HostileService::answerWithSense(uint32_t code, const Parcel& request, Parcel& reply) {
    if (code == transaction::kGetCapabilities.code) {
        writeCapabilities(reply);
    } else if (code == transaction::kGlobalConfig.code) {
        request.setDataPosition(sizeof(int32_t));
        writeGlobalValue(reply, request.readInt32());
    } else {
        const bool isFlag =
            code == transaction::kEnabled.code || code == transaction::kEnabled2.code;
        reply.writeInt32(isFlag ? 1 : 0);
        reply.writeInt32(0);
    }
}

}  // namespace voxtrel_fuzz
