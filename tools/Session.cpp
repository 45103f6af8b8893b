// SPDX-License-Identifier: Apache-2.0
#include "tools/Session.h"

#include <cstdlib>
#include <iostream>
#include <string>
#include <thread>

#include "tools/Owner.h"
#include "tools/Platform.h"

namespace voxtrelctl {
namespace {

using Clock = EventQueue::Clock;

constexpr auto kPatience = std::chrono::milliseconds(800);
constexpr auto kProgressStep = std::chrono::seconds(1);

/// As often as the library looks, which asks in a way that may take seconds for each look.
constexpr int kLooks = 31;
constexpr auto kLookPause = std::chrono::milliseconds(500);

class Obituary : public android::IBinder::DeathRecipient {
public:
    void binderDied(const android::wp<android::IBinder>&) override {
        EventQueue::instance().post({Notice::Source::ServiceDied, {}, 0});
    }
};

Notice awaitConnected(Clock::time_point deadline) {
    return EventQueue::instance().next(
        deadline, [](const Notice& n) { return n.source == Notice::Source::Connected; });
}

android::sp<android::IBinder> awaitService() {
    android::sp<android::IBinder> service = findService();
    for (int look = 1; service == nullptr && look < kLooks; ++look) {
        std::this_thread::sleep_for(kLookPause);
        service = findService();
    }
    return service;
}

void showProgress(Terminal& terminal, bool isRegistered, std::chrono::seconds passed) {
    terminal.progress(isRegistered ? "the service is there and loads its voices (up to 60 s)"
                                   : "looking for the service for up to 15 s; is voxtreld running?",
                      std::to_string(passed.count()) + " s");
}

}  // namespace

Session::Session(Terminal& terminal) {
    startBinderThreads();
    {
        const TTS::MutexLock hold(TTS::Clientmutex);
        mClient = std::make_unique<TTS::TTSClientPrivate>(kAppName, &EventQueue::onEvent);
    }
    connect(terminal);
    watchService();
}

Session::~Session() {
    const TTS::MutexLock hold(TTS::Clientmutex);
    // -5 after the service's death: there is nobody left to take leave of.
    (void)mClient->disconnect();
    mClient.reset();
}

void Session::connect(Terminal& terminal) {
    // The search sleeps inside the library, and a runtime without a service manager may never come
    // back. So it gets a thread of its own, and this one, which asks the runtime for nothing, stays
    // free to show progress and to hear Ctrl-C.
    std::thread search([this] {
        EventQueue::instance().post({Notice::Source::Connected, {}, connectToTrusted()});
    });
    const auto begin = Clock::now();
    Notice notice = awaitConnected(begin + kPatience);
    while (notice.source == Notice::Source::TimedOut) {
        showProgress(terminal, mIsRegistered,
                     std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - begin));
        notice = awaitConnected(Clock::now() + kProgressStep);
    }
    terminal.endProgress();
    if (notice.source == Notice::Source::Interrupted) {
        std::cerr << "voxtrelctl: interrupted\n";
        std::_Exit(EXIT_FAILURE);
    }
    search.join();
    if (mDoubt.has_value()) {
        throw Failure(*mDoubt);
    }
    // One that never became ready has not said whom it admits.
    if (notice.status == TTS::STATUS_PERMISSION_DENIED && !capabilities().ready) {
        throw Failure(TTS::STATUS_NO_SERVICE, "it is registered, but did not become ready in 60 s",
                      "see what the service logs about its voices, and try again");
    }
    if (notice.status == TTS::STATUS_PERMISSION_DENIED) {
        throw Failure(notice.status,
                      "the service does not admit this client: its user may not connect, or there "
                      "are too many clients",
                      "ask whoever runs it; of voxtreld see its log and voxtreld-policy(5)");
    }
    if (notice.status != 0) {
        throw Failure(notice.status);
    }
}

// The library looks the name up itself, so it is looked at before, lest a stranger makes us wait,
// and after: what counts is whose the reference is that will be used. Nothing but `getService` ever
// takes another one.
int Session::connectToTrusted() {
    const android::sp<android::IBinder> registered = awaitService();
    if (registered == nullptr) {
        return TTS::STATUS_SERVICE_NOT_FOUND;
    }
    mIsRegistered = true;
    mDoubt = doubtAbout(registered);
    if (mDoubt.has_value()) {
        return mDoubt->code();
    }
    const int status = mClient->connect();
    if (status == TTS::STATUS_OK) {
        mInterface = mClient->getService();
        mService = android::IInterface::asBinder(mInterface);
        mDoubt = mService != nullptr ? doubtAbout(mService) : std::nullopt;
    }
    return status;
}

ClientUse Session::client() {
    return ClientUse(*this);
}

ClientUse::ClientUse(Session& session) : mSession(session) {
    if (mSession.mUses++ == 0) {
        mSession.mHold.emplace(TTS::Clientmutex);
    }
}

ClientUse::~ClientUse() {
    if (--mSession.mUses == 0) {
        mSession.mHold.reset();
    }
}

void Session::confirm() {
    if (mService->pingBinder() != android::OK) {
        throw Failure(TTS::STATUS_NO_SERVICE);
    }
}

void Session::watchService() {
    mObituary = new Obituary;
    if (mService == nullptr || mService->linkToDeath(mObituary, nullptr, 0) != android::OK) {
        throw Failure(TTS::STATUS_NO_SERVICE);
    }
}

}  // namespace voxtrelctl
