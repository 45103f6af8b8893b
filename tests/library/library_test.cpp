// SPDX-License-Identifier: Apache-2.0
// Symptom: an object that the library had made was not of its own class to an application, or an
// exception that passed through the library ended the process.
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <typeinfo>

#include "client/SharedConnection.h"
#include "client/TTSClientPrivate.h"
#include "ipc/BpCallback.h"
#include "ipc/BpTextToSpeechFestival.h"
#include "tests/support/RecordingService.h"

namespace {

using android::IBinder;
using android::IInterface;
using android::Parcel;
using android::sp;

constexpr uint32_t kSay = 1;
constexpr uint32_t kLanguage = 15;  // served by no stub

struct OwnError {};

/// Has no proxy of its own in this process.
class Remote : public android::BBinder {};

/// An application's service; whoever says something to it is sorry.
class OwnService : public support::RecordingService {
public:
    int say(unsigned, unsigned, const std::string&, unsigned, float, unsigned, unsigned, unsigned,
            float, EN_VOXTREL_LANGUAGE) override {
        throw OwnError();
    }
};

class OwnCallback : public TTS::BnCallback {
public:
    bool notify(unsigned, unsigned, unsigned) override { return true; }
};

class OwnNotifier : public TTS::DeathNotifier {};

class OwnSetting : public TTS::TtsSetting {
public:
    OwnSetting() : TtsSetting("own") {}
};

template <typename Class, typename Object>
bool is(const sp<Object>& object) {
    return dynamic_cast<Class*>(object.get()) != nullptr;
}

template <typename Class, typename Object>
bool isExactly(const sp<Object>& object) {
    const Object& itself = *object.get();
    return typeid(itself) == typeid(Class);
}

TEST(AProxyMadeInTheLibrary, IsOfItsClassOutsideOfIt) {
    const sp<TTS::ITextToSpeechFestival> service =
        TTS::ITextToSpeechFestival::asInterface(new Remote);
    EXPECT_TRUE(is<TTS::BpTextToSpeechFestival>(service));
    EXPECT_TRUE(is<android::BpInterface<TTS::ITextToSpeechFestival>>(service));
    EXPECT_TRUE(isExactly<TTS::BpTextToSpeechFestival>(service));
    const sp<TTS::ICallback> callback = TTS::ICallback::asInterface(new Remote);
    EXPECT_TRUE(is<TTS::BpCallback>(callback));
    EXPECT_FALSE(is<TTS::BnCallback>(callback));
    EXPECT_TRUE(isExactly<TTS::BpCallback>(callback));
}

TEST(AnApplicationsClass, IsFoundByTheLibraryBehindItsBinder) {
    const sp<OwnService> service = new OwnService;
    const sp<IBinder> binder = IInterface::asBinder(service);
    EXPECT_EQ(service.get(), TTS::ITextToSpeechFestival::asInterface(binder).get());
    EXPECT_TRUE(is<TTS::BnTextToSpeechFestival>(binder));
    EXPECT_TRUE(is<android::BnInterface<TTS::ITextToSpeechFestival>>(binder));
    const sp<OwnCallback> callback = new OwnCallback;
    EXPECT_EQ(callback.get(), TTS::ICallback::asInterface(IInterface::asBinder(callback)).get());
}

TEST(AnApplicationsClass, MayDeriveFromEachThatIsMeantForIt) {
    const sp<TTS::DeathNotifier> notifier = new OwnNotifier;
    EXPECT_TRUE(is<IBinder::DeathRecipient>(notifier));
    notifier->binderDied(nullptr);
    EXPECT_EQ(nullptr, TTS::gttsbinder.get());
    const OwnSetting setting;
    EXPECT_EQ("/Customer/own.ini", TTS::TtsSetting::defaultPath(setting.mName));
    const TTS::Mutex mutex;
    EXPECT_TRUE(typeid(mutex) == typeid(TTS::Clientmutex));
    EXPECT_EQ(nullptr, TTS::TTSClientPrivate::m_cb.get());
}

TEST(ACodeThatNoStubServes, GoesToThePlatformsOwn) {
    Parcel request, reply;
    const sp<OwnService> service = new OwnService;
    EXPECT_NE(android::NO_ERROR, service->transact(kLanguage, request, &reply));
}

TEST(AnExceptionOfTheLibrary, IsCaughtByAnApplication) {
    Parcel request, reply;
    const sp<OwnService> service = new OwnService;
    EXPECT_THROW((void)service->transact(kSay, request, &reply), std::logic_error);
}

TEST(AnApplicationsException, PassesThroughTheLibrary) {
    const sp<TTS::ITextToSpeechFestival> proxy =
        new TTS::BpTextToSpeechFestival(IInterface::asBinder(sp<OwnService>(new OwnService)));
    EXPECT_THROW(proxy->say(1, 2, "Hello.", 3, 4, 5, 6, 7, 8, LANG_EN_US), OwnError);
}

}  // namespace
