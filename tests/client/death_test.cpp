// SPDX-License-Identifier: Apache-2.0
#include <future>
#include <mutex>
#include <thread>

#include "client/SharedConnection.h"
#include "ipc/BpTextToSpeechFestival.h"
#include "tests/client/ClientTest.h"

namespace {

using support::Lines;
using support::takeNotes;
using TTS::TTSClientPrivate;

const std::string kServiceDied = "\x1b[1;33;40m >>>>Debug<<<< binderDied, line = 93 \x1b[0m\n";
const std::string kCallbackDied = "\x1b[1;33;40m >>>>Debug<<<< binderDied, line = 107 \x1b[0m\n";

/// What a death notice prints to standard output.
std::string printedBy(const android::sp<android::IBinder::DeathRecipient>& recipient) {
    testing::internal::CaptureStdout();
    recipient->binderDied(nullptr);
    return testing::internal::GetCapturedStdout();
}

class ADeadService : public support::JoinedClientTest {};

TEST_F(ADeadService, DisconnectsTheProcess) {
    testing::internal::CaptureStdout();
    service.binder->die();
    EXPECT_EQ(kServiceDied, testing::internal::GetCapturedStdout());
    EXPECT_TRUE(TTS::gttsbinder == nullptr);
    EXPECT_EQ(Lines{}, takeNotes()) << "nothing goes through the log";
    EXPECT_EQ(-5, client.say(1, "Hello"));
}

TEST_F(ADeadService, LeavesTheOtherSharedObjectsAlone) {
    const android::sp<TTS::DeathNotifier> notifier = TTS::gDeathNotifier;
    printedBy(notifier);
    EXPECT_TRUE(notifier == TTS::gDeathNotifier);
    EXPECT_TRUE(TTSClientPrivate::m_cb != nullptr);
    EXPECT_TRUE(TTSClientPrivate::mCbDeathNotifier != nullptr);
}

TEST_F(ADeadService, IsReportedAlsoWhenTheProcessWasNotConnected) {
    TTS::gttsbinder.clear();
    EXPECT_EQ(kServiceDied, printedBy(TTS::gDeathNotifier));
    EXPECT_TRUE(TTS::gttsbinder == nullptr);
}

TEST_F(ADeadService, ReleasesTheProxy) {
    const android::wp<TTS::ITextToSpeechFestival> proxy = TTS::gttsbinder;
    printedBy(TTS::gDeathNotifier);
    EXPECT_TRUE(proxy.promote() == nullptr);
}

TEST_F(ADeadService, MayReleaseAServiceOfThisProcessThatTakesTheMutexAsItGoes) {
    // A proxy that somebody put there by hand stands for any object whose end runs foreign code.
    class Proxy : public TTS::BpTextToSpeechFestival {
    public:
        using BpTextToSpeechFestival::BpTextToSpeechFestival;
        ~Proxy() override {
            EXPECT_EQ(0, pthread_mutex_trylock(&TTS::Clientmutex.m));
            pthread_mutex_unlock(&TTS::Clientmutex.m);
            support::note("released");
        }
    };
    TTS::gttsbinder = new Proxy(service.binder);
    printedBy(TTS::gDeathNotifier);
    EXPECT_EQ(Lines{"released"}, takeNotes());
}

TEST_F(ADeadService, IsJoinedAgainOnceItIsBack) {
    testing::internal::CaptureStdout();
    service.binder->die();
    testing::internal::GetCapturedStdout();
    support::ScriptedService reborn;
    manager->service = reborn.binder;
    EXPECT_EQ(0, client.connect());
    EXPECT_EQ(0, client.say(1, "Hello"));
    EXPECT_EQ(1U, reborn.binder->links());
}

TEST_F(ADeadService, WaitsForARunningSearch) {
    TTS::gttsbinder.clear();
    const android::sp<TTS::DeathNotifier> notifier = TTS::gDeathNotifier;
    const std::thread::id searcher = std::this_thread::get_id();
    std::promise<void> waiting;  // or through already, were there nothing to wait for
    std::once_flag once;
    const auto isWaiting = [&] { std::call_once(once, [&] { waiting.set_value(); }); };
    platform::onMutex([&](const std::string& what) {
        if (what == "lock" && std::this_thread::get_id() != searcher) {
            isWaiting();
        }
    });
    std::thread binderThread;
    testing::internal::CaptureStdout();
    service.onRequest = [&](uint32_t code) {
        if (code == support::kRegisterCallback) {
            binderThread = std::thread([&] {
                notifier->binderDied(nullptr);
                isWaiting();
            });
            waiting.get_future().wait();
        } else {
            EXPECT_TRUE(TTS::gttsbinder != nullptr) << "the death is noticed after the search";
        }
    };
    client.getService();
    binderThread.join();
    EXPECT_EQ(kServiceDied, testing::internal::GetCapturedStdout());
    EXPECT_TRUE(TTS::gttsbinder == nullptr);
}

TEST_F(ADeadService, PrintsThenTakesTheMutexOnceToEmptyTheProxy) {
    std::string printed;
    testing::internal::CaptureStdout();
    platform::onMutex([&printed](const std::string& what) {
        if (what == "lock") {
            printed = testing::internal::GetCapturedStdout();
            testing::internal::CaptureStdout();
        }
        support::note(what + (TTS::gttsbinder != nullptr ? ", still connected" : ", disconnected"));
    });
    TTS::gDeathNotifier->binderDied(nullptr);
    EXPECT_EQ("", testing::internal::GetCapturedStdout()) << "all is printed before the mutex";
    EXPECT_EQ(kServiceDied, printed);
    EXPECT_EQ(Lines({"lock, still connected", "unlock, disconnected"}), takeNotes());
}

class TheServicesNotifier : public support::JoinedClientTest {};

TEST_F(TheServicesNotifier, UnlinksItselfAsItGoesWhileTheProxyIsSet) {
    ASSERT_EQ(1U, service.binder->links());
    TTS::gDeathNotifier.clear();
    EXPECT_EQ(0U, service.binder->links());
}

TEST_F(TheServicesNotifier, LeavesTheLinkWhenTheProxyIsGone) {
    TTS::gttsbinder.clear();
    TTS::gDeathNotifier.clear();
    EXPECT_EQ(1U, service.binder->links());
}

TEST_F(TheServicesNotifier, IsReplacedByTheNextJoin) {
    const android::wp<TTS::DeathNotifier> first = TTS::gDeathNotifier;
    TTS::gttsbinder.clear();
    client.getService();
    EXPECT_TRUE(first.promote() == nullptr);
    EXPECT_TRUE(TTS::gDeathNotifier != nullptr);
}

TEST_F(TheServicesNotifier, CopesWithAProxyThatHasNoBinder) {
    TTS::gttsbinder = new TTS::BpTextToSpeechFestival(nullptr);
    TTS::gDeathNotifier.clear();
    EXPECT_TRUE(TTS::gDeathNotifier == nullptr);
}

class ADeadCallback : public support::JoinedClientTest {};

TEST_F(ADeadCallback, IsReleasedAndNothingElse) {
    const android::sp<TTSClientPrivate::CbDeathNotifier> notifier =
        TTSClientPrivate::mCbDeathNotifier;
    EXPECT_EQ(kCallbackDied, printedBy(notifier));
    EXPECT_TRUE(TTSClientPrivate::m_cb == nullptr);
    EXPECT_TRUE(TTS::gttsbinder != nullptr);
    EXPECT_TRUE(notifier == TTSClientPrivate::mCbDeathNotifier);
    EXPECT_EQ(Lines{}, takeNotes());
}

TEST_F(ADeadCallback, IsReportedAlsoWhenThereIsNone) {
    TTSClientPrivate::m_cb.clear();
    EXPECT_EQ(kCallbackDied, printedBy(TTSClientPrivate::mCbDeathNotifier));
}

TEST_F(ADeadCallback, IsReleasedWithoutTheMutex) {
    pthread_mutex_lock(&TTS::Clientmutex.m);
    printedBy(TTSClientPrivate::mCbDeathNotifier);
    pthread_mutex_unlock(&TTS::Clientmutex.m);
    EXPECT_TRUE(TTSClientPrivate::m_cb == nullptr);
}

}  // namespace
