// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include "client/SharedConnection.h"
#include "tests/client/ClientTest.h"

namespace {

using support::callLine;
using support::debugLine;
using support::Lines;
using support::takeNotes;
using TTS::TTSClientPrivate;

const std::string kFind = "find tavix.ITextToSpeechFestival";
const std::string kRegister = "ask registerCallback(pid, callback)";
const std::string kFetch = "ask getCapabilities()";
const std::string kLink = "link CbDeathNotifier";
const std::string kUnlink = "unlink CbDeathNotifier";

std::string retryLine(const std::string& name) {
    return debugLine(
        0, "TTS Client [%s] Retry ipc to connect TTS Service. (Is Voxtrel running?)",
        "TTS Client [" + name + "] Retry ipc to connect TTS Service. (Is Voxtrel running?)");
}

std::string abortLine(const std::string& name) {
    const std::string rest =
        "] (Abort) ipc connect TTS Service Fail!!! Please check Voxtrel is running or disable "
        "TTS_SUPPORT";
    return debugLine(0, "TTS Client [%s" + rest, "TTS Client [" + name + rest);
}

const std::string kNotReady =
    debugLine(0, "TTS capabilities is NOT ready !!", "TTS capabilities is NOT ready !!");
const std::string kDenied =
    debugLine(0, "TTS Client : permission denied", "TTS Client : permission denied");

/// The lines of a search that asks so many times.
Lines search(int questions) {
    Lines lines{kFind};
    for (int i = 1; i < questions; ++i) {
        lines.insert(lines.end(), {retryLine("app"), "pause 500000", kFind});
    }
    return lines;
}

Lines operator+(Lines head, const Lines& tail) {
    head.insert(head.end(), tail.begin(), tail.end());
    return head;
}

class TheSearch : public support::ClientTest {};

TEST_F(TheSearch, EndsAtOnceWhenTheServiceIsThere) {
    EXPECT_EQ(0, client.connect());
    EXPECT_EQ(Lines({callLine("connect"), kFind, kRegister, kFetch, kLink}), takeNotes());
}

TEST_F(TheSearch, PausesHalfASecondBeforeItAsksAgain) {
    manager->absentFor = 2;
    EXPECT_EQ(0, client.connect());
    EXPECT_EQ(Lines{callLine("connect")} + search(3) + Lines({kRegister, kFetch, kLink}),
              takeNotes());
}

TEST_F(TheSearch, FindsTheServiceAtTheThirtyFirstQuestion) {
    manager->absentFor = 30;
    EXPECT_EQ(0, client.connect());
    EXPECT_EQ(Lines{callLine("connect")} + search(31) + Lines({kRegister, kFetch, kLink}),
              takeNotes());
}

TEST_F(TheSearch, GivesUpAfterThirtyOneQuestionsAndThirtyPauses) {
    manager->service = nullptr;
    EXPECT_EQ(-8, client.connect());
    EXPECT_EQ(Lines{callLine("connect")} + search(31) + Lines{abortLine("app")}, takeNotes());
    EXPECT_TRUE(TTS::gttsbinder == nullptr);
    EXPECT_TRUE(TTS::gDeathNotifier == nullptr);
    EXPECT_TRUE(TTSClientPrivate::m_cb == nullptr);
    EXPECT_TRUE(TTSClientPrivate::mCbDeathNotifier == nullptr);
}

TEST_F(TheSearch, LogsNoAbortForAClientWithoutAName) {
    manager->service = nullptr;
    TTSClientPrivate nameless("", support::notified);
    takeNotes();
    EXPECT_EQ(-8, nameless.connect());
    const Lines notes = takeNotes();
    EXPECT_EQ(92U, notes.size()) << "1 trace, 31 questions, 30 retries, 30 pauses, no more";
    EXPECT_EQ(retryLine(""), notes[2]);
    EXPECT_EQ(kFind, notes.back());
}

TEST_F(TheSearch, PausesAsOftenWithoutAServiceManagerAndGivesUp) {
    platform::giveServiceManager(nullptr);
    EXPECT_EQ(-8, client.connect());
    Lines unasked = search(31);
    unasked.erase(std::remove(unasked.begin(), unasked.end(), kFind), unasked.end());
    EXPECT_EQ(60U, unasked.size()) << "30 retries, 30 pauses";
    EXPECT_EQ(Lines{callLine("connect")} + unasked + Lines{abortLine("app")}, takeNotes());
}

TEST_F(TheSearch, IsMadeByGetServiceWithoutATraceOrAbort) {
    manager->service = nullptr;
    EXPECT_TRUE(client.getService() == nullptr);
    EXPECT_EQ(search(31), takeNotes());
}

class TheJoin : public support::ClientTest {};

TEST_F(TheJoin, GivesBackTheSharedProxyItself) {
    EXPECT_EQ(&TTS::gttsbinder, &client.getService());
    EXPECT_TRUE(TTS::gttsbinder != nullptr);
    EXPECT_EQ(Lines({kFind, kRegister, kFetch}), takeNotes());
}

TEST_F(TheJoin, DoesNothingWhileTheProxyIsSet) {
    client.connect();
    const android::sp<TTS::Callback> callback = TTSClientPrivate::m_cb;
    const android::sp<TTS::DeathNotifier> notifier = TTS::gDeathNotifier;
    takeNotes();
    EXPECT_TRUE(client.getService() != nullptr);
    EXPECT_EQ(Lines{}, takeNotes());
    EXPECT_TRUE(callback == TTSClientPrivate::m_cb);
    EXPECT_TRUE(notifier == TTS::gDeathNotifier);
}

TEST_F(TheJoin, WatchesTheServiceAndSharesItsObjectsBeforeItRegisters) {
    service.onRequest = [this](uint32_t code) {
        EXPECT_TRUE(code == support::kRegisterCallback || code == support::kGetCapabilities);
        EXPECT_EQ(1U, service.binder->links());
        EXPECT_TRUE(TTS::gDeathNotifier != nullptr);
        EXPECT_TRUE(TTSClientPrivate::m_cb != nullptr);
        EXPECT_TRUE(TTS::gttsbinder != nullptr);
    };
    client.getService();
    EXPECT_EQ(2U, takeNotes().size() - 1);
}

TEST_F(TheJoin, RegistersTheCallbackObjectAroundTheApplicationsFunction) {
    client.getService();
    EXPECT_TRUE(android::IInterface::asBinder(TTSClientPrivate::m_cb) == service.callback);
    takeNotes();
    TTS::ICallback::asInterface(service.callback)->notify(7, 8, 9);
    EXPECT_EQ(Lines{"notify 7 8 9"}, takeNotes());
}

TEST_F(TheJoin, RegistersAFunctionThatDoesNothingForAnApplicationWithoutOne) {
    TTSClientPrivate silent("silent", nullptr);
    silent.getService();
    takeNotes();
    EXPECT_TRUE(TTS::ICallback::asInterface(service.callback)->notify(7, 8, 9));
    EXPECT_EQ(Lines{}, takeNotes());
}

TEST_F(TheJoin, IgnoresARefusedLinkAndARefusedRegistration) {
    service.binder->answerLinksWith(android::DEAD_OBJECT);
    service.status[support::kRegisterCallback] = -1;
    EXPECT_EQ(0, client.connect());
}

class TheWaitForCapabilities : public support::ClientTest {
protected:
    TheWaitForCapabilities() {
        unready.ready = false;
        unready.permitted = false;
    }
    TTS::Capabilities unready = support::usualCapabilities();
};

TEST_F(TheWaitForCapabilities, AsksAgainAfterFiftyMillisecondsUntilTheyAreReady) {
    service.fetches = {unready, unready, support::usualCapabilities()};
    EXPECT_EQ(0, client.connect());
    EXPECT_EQ(Lines({callLine("connect"), kFind, kRegister, kFetch, "pause 50000", kFetch,
                     "pause 50000", kFetch, kLink}),
              takeNotes());
    EXPECT_TRUE(client.mCapabilities.ready);
    EXPECT_EQ(6U, client.mCapabilities.voices.size());
}

TEST_F(TheWaitForCapabilities, StopsAskingOnceTheyAreReadyAtTheLastCall) {
    service.fetches.assign(1200, unready);
    service.fetches.push_back(support::usualCapabilities());
    EXPECT_EQ(0, client.connect());
    const Lines notes = takeNotes();
    EXPECT_EQ(1201, std::count(notes.begin(), notes.end(), kFetch));
    EXPECT_EQ(1200, std::count(notes.begin(), notes.end(), "pause 50000"));
    EXPECT_EQ(0, std::count(notes.begin(), notes.end(), kNotReady));
}

TEST_F(TheWaitForCapabilities, GoesOnAfterTwelveHundredAndOneCalls) {
    service.fetches = {unready};
    EXPECT_EQ(-10, client.connect());
    const Lines notes = takeNotes();
    Lines expected{callLine("connect"), kFind, kRegister, kFetch};
    for (int i = 0; i < 1200; ++i) {
        expected.insert(expected.end(), {"pause 50000", kFetch});
    }
    EXPECT_EQ(expected + Lines({kNotReady, kLink, kDenied}), notes);
    EXPECT_TRUE(TTS::gttsbinder != nullptr);
}

TEST_F(TheWaitForCapabilities, LetsTheLastFetchDecideWhetherTheClientIsAdmitted) {
    unready.permitted = true;
    service.fetches = {unready};
    EXPECT_EQ(0, client.connect());
}

TEST_F(TheWaitForCapabilities, SurvivesAnotherClientThatEmptiesTheProxyMeanwhile) {
    service.fetches = {unready, support::usualCapabilities()};
    platform::onPause([] { const TTSClientPrivate other("other", nullptr); });
    EXPECT_EQ(-8, client.connect()) << "the process is not connected any more";
    EXPECT_TRUE(client.mCapabilities.ready);
}

class Connecting : public support::ClientTest {};

TEST_F(Connecting, ReturnsMinusTenAndStaysConnectedWhenNotAdmitted) {
    service.fetches[0].permitted = false;
    EXPECT_EQ(-10, client.connect());
    EXPECT_EQ(Lines({callLine("connect"), kFind, kRegister, kFetch, kLink, kDenied}), takeNotes());
    EXPECT_TRUE(TTS::gttsbinder != nullptr);
    EXPECT_TRUE(TTSClientPrivate::m_cb != nullptr);
    EXPECT_TRUE(TTSClientPrivate::mCbDeathNotifier != nullptr);
}

TEST_F(Connecting, TwiceOnlyLinksANewNotifierAndLooksAtThePermission) {
    client.connect();
    const android::sp<TTS::Callback> callback = TTSClientPrivate::m_cb;
    const android::sp<TTSClientPrivate::CbDeathNotifier> notifier =
        TTSClientPrivate::mCbDeathNotifier;
    takeNotes();
    EXPECT_EQ(0, client.connect());
    EXPECT_EQ(Lines({callLine("connect"), kLink}), takeNotes());
    EXPECT_TRUE(callback == TTSClientPrivate::m_cb);
    EXPECT_TRUE(notifier != TTSClientPrivate::mCbDeathNotifier);
}

TEST_F(Connecting, ASecondClientReplacesTheCallbackOfTheFirst) {
    client.connect();
    const android::sp<TTS::Callback> first = TTSClientPrivate::m_cb;
    TTSClientPrivate second("second", support::notified);
    EXPECT_EQ(-5, client.lock()) << "the first is cut off";
    EXPECT_EQ(0, second.connect());
    EXPECT_EQ(0, client.lock()) << "and shares the second's connection";
    EXPECT_TRUE(first != TTSClientPrivate::m_cb);
    EXPECT_TRUE(android::IInterface::asBinder(TTSClientPrivate::m_cb) == service.callback);
}

TEST_F(Connecting, AClientThatNeverJoinedByItselfIsNotAdmitted) {
    TTSClientPrivate second("second", support::notified);
    client.connect();
    takeNotes();
    EXPECT_EQ(-10, second.connect());
    EXPECT_EQ(Lines({callLine("connect"), kLink, kDenied}), takeNotes());
}

class Disconnecting : public support::ClientTest {};

TEST_F(Disconnecting, WithdrawsReleasesAndFlushesInThisOrder) {
    client.connect();
    takeNotes();
    const android::wp<TTS::Callback> callback = TTSClientPrivate::m_cb;
    service.callback.clear();
    service.onRequest = [](uint32_t) {
        EXPECT_TRUE(TTSClientPrivate::m_cb != nullptr);
        EXPECT_TRUE(TTSClientPrivate::mCbDeathNotifier != nullptr);
    };
    EXPECT_EQ(0, client.disconnect());
    EXPECT_EQ(Lines({callLine("disconnect"), "ask deregisterCallback(pid)", kUnlink, "flush"}),
              takeNotes());
    EXPECT_TRUE(TTSClientPrivate::mCbDeathNotifier == nullptr);
    EXPECT_TRUE(TTSClientPrivate::m_cb == nullptr);
    EXPECT_TRUE(callback.promote() == nullptr);
    EXPECT_TRUE(TTS::gttsbinder != nullptr);
    EXPECT_TRUE(TTS::gDeathNotifier != nullptr);
}

TEST_F(Disconnecting, ReleasesTheNotifierBeforeTheCallback) {
    class LoudNotifier : public TTSClientPrivate::CbDeathNotifier {
    public:
        ~LoudNotifier() override {
            support::note(TTSClientPrivate::m_cb != nullptr ? "released first" : "released last");
        }
    };
    client.connect();
    TTSClientPrivate::mCbDeathNotifier = new LoudNotifier;
    takeNotes();
    EXPECT_EQ(0, client.disconnect());
    EXPECT_EQ(Lines({callLine("disconnect"), "ask deregisterCallback(pid)", kUnlink,
                     "released first", "flush"}),
              takeNotes());
    EXPECT_TRUE(TTSClientPrivate::m_cb == nullptr);
}

TEST_F(Disconnecting, ReturnsTheServicesAnswer) {
    client.connect();
    service.status[support::kDeregisterCallback] = -42;
    EXPECT_EQ(-42, client.disconnect());
    EXPECT_TRUE(TTSClientPrivate::m_cb == nullptr);
}

TEST_F(Disconnecting, ReturnsMinusFiveAndChangesNothingWithoutAService) {
    EXPECT_EQ(-5, client.disconnect());
    EXPECT_EQ(Lines{callLine("disconnect")}, takeNotes());

    client.connect();
    TTS::gttsbinder.clear();
    takeNotes();
    EXPECT_EQ(-5, client.disconnect());
    EXPECT_EQ(Lines{callLine("disconnect")}, takeNotes());
    EXPECT_TRUE(TTSClientPrivate::m_cb != nullptr);
    EXPECT_TRUE(TTSClientPrivate::mCbDeathNotifier != nullptr);
}

TEST_F(Disconnecting, TwiceFindsNothingToUnlink) {
    client.connect();
    client.disconnect();
    takeNotes();
    EXPECT_EQ(0, client.disconnect());
    EXPECT_EQ(Lines({callLine("disconnect"), "ask deregisterCallback(pid)", "flush"}), takeNotes());
}

TEST_F(Disconnecting, BeforeAnyLinkUnlinksNothing) {
    client.getService();
    takeNotes();
    EXPECT_EQ(0, client.disconnect());
    EXPECT_EQ(Lines({callLine("disconnect"), "ask deregisterCallback(pid)", "flush"}), takeNotes());
    EXPECT_TRUE(TTSClientPrivate::m_cb == nullptr);
}

class AfterLeaving : public support::ClientTest {};

TEST_F(AfterLeaving, ConnectRegistersNothingAndSkipsTheLink) {
    client.connect();
    client.disconnect();
    takeNotes();
    EXPECT_EQ(0, client.connect());
    EXPECT_EQ(Lines{callLine("connect")}, takeNotes());
    EXPECT_TRUE(TTSClientPrivate::m_cb == nullptr);
    EXPECT_TRUE(TTSClientPrivate::mCbDeathNotifier != nullptr);
}

TEST_F(AfterLeaving, ANewClientJoinsAgain) {
    client.connect();
    client.disconnect();
    TTSClientPrivate next("app", support::notified);
    takeNotes();
    EXPECT_EQ(0, next.connect());
    EXPECT_EQ(Lines({callLine("connect"), kFind, kRegister, kFetch, kLink}), takeNotes());
    EXPECT_TRUE(TTSClientPrivate::m_cb != nullptr);
}

}  // namespace
