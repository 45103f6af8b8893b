// SPDX-License-Identifier: Apache-2.0
#include <unistd.h>

#include <memory>
#include <type_traits>

#include "client/SharedConnection.h"
#include "tests/client/ClientTest.h"

namespace {

using support::callLine;
using support::Lines;
using support::takeNotes;
using TTS::TTSClientPrivate;

std::string constructionLine(const std::string& name) {
    return platform::logged(2, "[Client] %s() appName = %s, pid = %d\n",
                            "[Client] TTSClientPrivate() appName = " + name +
                                ", pid = " + std::to_string(getpid()) + "\n");
}

class ANewClient : public support::ClientTest {};

TEST_F(ANewClient, KeepsItsFunctionItsNameAndTheProcessId) {
    EXPECT_EQ(&support::notified, client.mCbFunc);
    EXPECT_EQ("app", client.mAppName);
    EXPECT_EQ(static_cast<uint32_t>(getpid()), client.mPid);
}

TEST_F(ANewClient, HoldsNoLockAndKnowsNothingOfTheService) {
    EXPECT_FALSE(client.mLockOwner);
    const TTS::Capabilities& caps = client.mCapabilities;
    EXPECT_FALSE(caps.ready || caps.permitted);
    EXPECT_FALSE(caps.pitchSupported || caps.volumeSupported || caps.speedSupported);
    EXPECT_EQ(0.0F, caps.pitchMin + caps.pitchMax + caps.volumeMin + caps.volumeMax);
    EXPECT_EQ(0U, caps.speedMin + caps.speedMax);
    EXPECT_TRUE(caps.languages.empty() && caps.voicesNum.empty() && caps.voices.empty());
    EXPECT_EQ("", client.mSupportedLanguages);
}

TEST_F(ANewClient, HasSettingsUnderItsOwnNameAndTheDefaultProfile) {
    EXPECT_EQ("app", client.mSetting.mName);
    EXPECT_EQ(65535U, client.mSetting.mSpeed);
    EXPECT_EQ("na_NL", client.mSetting.mLang);
    EXPECT_EQ("Default", client.mProfileName);
}

TEST_F(ANewClient, LogsItsNameAndAsksNobody) {
    const TTSClientPrivate another("second", nullptr);
    EXPECT_EQ(Lines{constructionLine("second")}, takeNotes());
}

TEST_F(ANewClient, EmptiesTheSharedProxyAfterItsLogLine) {
    client.connect();
    bool wasSet = false;
    platform::onLog([&wasSet] { wasSet = TTS::gttsbinder != nullptr; });
    const TTSClientPrivate another("second", nullptr);
    platform::onLog(nullptr);
    EXPECT_TRUE(wasSet);
    EXPECT_TRUE(TTS::gttsbinder == nullptr);
}

TEST_F(ANewClient, LeavesTheOtherSharedObjectsAlone) {
    client.connect();
    const TTSClientPrivate another("second", nullptr);
    EXPECT_TRUE(TTSClientPrivate::m_cb != nullptr);
    EXPECT_TRUE(TTSClientPrivate::mCbDeathNotifier != nullptr);
    EXPECT_TRUE(TTS::gDeathNotifier != nullptr);
}

class ADestroyedClient : public support::ConnectionTest {};

TEST_F(ADestroyedClient, LogsAndEmptiesOnlyTheSharedProxy) {
    auto client = std::make_unique<TTSClientPrivate>("app", support::notified);
    client->connect();
    takeNotes();
    bool wasSet = false;
    platform::onLog([&wasSet] { wasSet = TTS::gttsbinder != nullptr; });
    client.reset();
    platform::onLog(nullptr);
    EXPECT_EQ(Lines{callLine("~TTSClientPrivate")}, takeNotes());
    EXPECT_TRUE(wasSet);
    EXPECT_TRUE(TTS::gttsbinder == nullptr);
    EXPECT_TRUE(TTSClientPrivate::m_cb != nullptr);
    EXPECT_TRUE(TTSClientPrivate::mCbDeathNotifier != nullptr);
    EXPECT_TRUE(TTS::gDeathNotifier != nullptr);
}

TEST(TheMutex, IsAnOrdinaryOneThatItsUsersLockThemselves) {
    TTS::Mutex mutex;
    EXPECT_EQ(0, pthread_mutex_lock(&mutex.m));
    EXPECT_EQ(EBUSY, pthread_mutex_trylock(&mutex.m)) << "not a recursive one";
    EXPECT_EQ(0, pthread_mutex_unlock(&mutex.m));
    static_assert(std::has_virtual_destructor<TTS::Mutex>::value, "may be derived from");
    static_assert(!std::is_copy_constructible<TTS::Mutex>::value, "owns the mutex");
}

}  // namespace
