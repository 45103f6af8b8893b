// SPDX-License-Identifier: Apache-2.0
#include "fuzz/client/Application.h"

#include <ttscommon/ttscommon.h>

#include "client/SharedConnection.h"
#include "ipc/ICallback.h"
#include "vocabulary/Events.h"
#include "vocabulary/Status.h"

namespace voxtrel_fuzz {
namespace {

using android::sp;
using android::String16;
using TTS::TTSClientPrivate;
namespace transaction = TTS::transaction;

constexpr size_t kDeepest = 3;

Application* running = nullptr;

/// Finds what the service says, under any name.
class Manager : public android::IServiceManager {
public:
    explicit Manager(const HostileService& service) : mService(service) {}
    sp<android::IBinder> getService(const String16&) const override { return mService.binder(); }
    sp<android::IBinder> checkService(const String16&) const override { return nullptr; }
    android::status_t addService(const String16&, const sp<android::IBinder>&, bool) override {
        return android::INVALID_OPERATION;
    }
    android::Vector<String16> listServices() override { return {}; }

protected:
    android::IBinder* onAsBinder() override { return nullptr; }

private:
    const HostileService& mService;
};

void forgetConnection() {
    TTSClientPrivate::mCbDeathNotifier.clear();
    TTSClientPrivate::m_cb.clear();
    TTS::gDeathNotifier.clear();
    TTS::gttsbinder.clear();
}

}  // namespace

Application::Application(Input& input)
    : mInput(input),
      mService(input, [this](const Exchange& exchange) { meanwhile(exchange); }),
      mFilter(input.below(4) == 3 ? input.text() : "") {
    running = this;
    INI_LANGUAGE_WITH_VOICES = mFilter.c_str();
    mManager = new Manager(mService);
    android::setDefaultServiceManager(mManager);
    for (auto& client : mClients) {
        mClient = (client = std::make_unique<TTSClientPrivate>("app", onNotify)).get();
    }
}

Application::~Application() {
    android::setDefaultServiceManager(nullptr);
    INI_LANGUAGE_WITH_VOICES = "";
    running = nullptr;
}

void Application::run() {
    if (mInput.below(8) != 7) {
        connect();
    }
    while (!mInput.isAtEnd()) {
        act();
    }
    for (auto& client : mClients) {
        client.reset();
    }
    forgetConnection();
    mService.end();
}

void Application::act() {
    mClient = mClients[mInput.below(2)].get();
    const unsigned kind = mInput.below(16);
    if (kind < 6) {
        serve(kind);
    } else if (kind < 9) {
        speak(kind - 6);
    } else if (kind < 11) {
        change(mInput.below(4));
    } else if (kind < 14) {
        own(mInput.below(9));
    } else {
        ask(mInput.below(12));
    }
}

/// What happens around the operations.
void Application::serve(unsigned kind) {
    switch (kind) {
        case 0:
            connect();
            break;
        case 1:
            disconnect();
            break;
        case 2:
            renewClient();
            break;
        case 3:
            die();
            break;
        case 4:
            mInput.below(4) == 0 ? mService.vanish() : mService.start();
            break;
        default:
            tell();
    }
}

/// Inside a request. A death notice comes on a thread of its own, which waits for `connect`.
void Application::meanwhile(const Exchange& exchange) {
    mFrames.back().exchanges.push_back(exchange);
    const unsigned kind = mInput.below(16);
    if (kind >= 14) {
        tell();
    } else if (kind == 13 && !mIsConnecting) {
        die();
    }
}

/// An application may call its client from its function.
void Application::onNotify(unsigned event, unsigned second, unsigned third) {
    Application& self = *running;
    self.mFrames.back().notices.push_back({event, second, third});
    if (self.mFrames.size() < kDeepest && self.mInput.below(8) == 7) {
        (void)self.perform([&self] { return self.mClient->say(1, "again"); });
    }
}

int Application::perform(const std::function<int()>& operation) {
    const bool hadService = TTS::gttsbinder != nullptr;
    const bool wasOwner = mClient->mLockOwner;
    mFrames.emplace_back();
    const int result = operation();
    mLast = std::move(mFrames.back());
    mFrames.pop_back();
    mHadService = hadService;
    mWasOwner = wasOwner;
    return result;
}

/// A word of the last reply of that request, as the client reads it: 0 where there was none.
int32_t Application::answerTo(TTS::Transaction transaction, size_t word) const {
    for (auto each = mLast.exchanges.rbegin(); each != mLast.exchanges.rend(); ++each) {
        if (each->code() == transaction.code) {
            return each->word(word);
        }
    }
    return 0;
}

bool Application::wasAsked(TTS::Transaction transaction) const {
    for (const Exchange& each : mLast.exchanges) {
        if (each.code() == transaction.code) {
            return true;
        }
    }
    return false;
}

void Application::renewClient() {
    auto& place = mClients[mInput.below(2)];
    place.reset();
    place = std::make_unique<TTSClientPrivate>("app", mInput.below(4) == 3 ? nullptr : onNotify);
    mClient = place.get();
    require(TTS::gttsbinder == nullptr);
}

void Application::connect() {
    const bool isThere = TTS::gttsbinder != nullptr || mService.binder() != nullptr;
    mIsConnecting = true;
    const int status = perform([this] { return mClient->connect(); });
    mIsConnecting = false;
    require((TTS::gttsbinder != nullptr) == isThere);
    if (wasAsked(transaction::kRegisterCallback)) {
        mIsHeard.push_back(mClient->mCbFunc != nullptr);
    }
    require(!mHadService || mLast.exchanges.empty());
    require(status == (!isThere                           ? TTS::STATUS_SERVICE_NOT_FOUND
                       : mClient->mCapabilities.permitted ? TTS::STATUS_OK
                                                          : TTS::STATUS_PERMISSION_DENIED));
}

void Application::disconnect() {
    const int status = perform([this] { return mClient->disconnect(); });
    if (!mHadService) {
        require(status == TTS::STATUS_NO_SERVICE && mLast.exchanges.empty());
        return;
    }
    require(status == answerTo(transaction::kDeregisterCallback));
    require(TTSClientPrivate::m_cb == nullptr);
}

/// Also to those that have left, and the same twice.
void Application::tell() {
    const auto& callbacks = mService.callbacks();
    if (callbacks.empty()) {
        return;
    }
    const size_t place = callbacks.size() - 1 - mInput.below(4) % callbacks.size();
    const sp<android::IBinder> callback = callbacks[place];
    const unsigned code = mInput.below(8) == 7 ? mInput.byte() : TTS::ICallback::kNotify;
    const std::vector<uint8_t> image = mInput.bytes(mInput.below(17));
    // While it is being registered nobody has noted yet who made it.
    const bool isHeard = place < mIsHeard.size() ? mIsHeard[place] : mClient->mCbFunc != nullptr;
    for (unsigned times = 1 + mInput.below(2); times > 0; --times) {
        android::Parcel event;
        android::Parcel reply;
        (void)event.setData(image.data(), image.size());
        const Exchange sent(code, event);
        mFrames.emplace_back();
        (void)callback->transact(code, event, &reply, android::IBinder::FLAG_ONEWAY);
        const std::vector<Notice> notices = std::move(mFrames.back().notices);
        mFrames.pop_back();
        require(notices.size() == (isHeard && code == TTS::ICallback::kNotify ? 1U : 0U));
        for (const Notice& notice : notices) {
            require(notice.event == static_cast<unsigned>(sent.word(0)) &&
                    notice.second == static_cast<unsigned>(sent.word(1)) &&
                    notice.third == static_cast<unsigned>(sent.word(2)));
        }
    }
}

/// The end of the service that the process is connected to, and only that, disconnects it.
void Application::die() {
    const sp<TTS::ITextToSpeechFestival> before = TTS::gttsbinder;
    const auto* remote = before == nullptr ? nullptr
                                           : dynamic_cast<const support::RecordingRemote*>(
                                                 android::IInterface::asBinder(before).get());
    const bool isWatched = remote != nullptr && remote->isBinderAlive() && remote->links() > 0;
    mService.die();
    const bool hasDied = isWatched && !remote->isBinderAlive();
    require(TTS::gttsbinder == (hasDied ? nullptr : before));
}

}  // namespace voxtrel_fuzz
