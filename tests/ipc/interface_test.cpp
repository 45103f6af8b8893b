// SPDX-License-Identifier: Apache-2.0
#include "ipc/ITextToSpeechFestival.h"

#include <gtest/gtest.h>

#include "ipc/BpTextToSpeechFestival.h"
#include "ipc/internal/ConfigValue.h"
#include "tests/ipc/TransactionCases.h"
#include "tests/support/RecordingRemote.h"
#include "tests/support/RecordingService.h"

namespace {

using android::IBinder;
using android::sp;
using android::String16;
using support::RecordingRemote;
using support::RecordingService;
using TTS::ITextToSpeechFestival;

TEST(TheServiceInterface, IsNamedByItsDescriptor) {
    const String16 expected("tavix.ITextToSpeechFestival");
    EXPECT_EQ(expected, ITextToSpeechFestival::descriptor);
    const sp<TTS::BpTextToSpeechFestival> proxy = new TTS::BpTextToSpeechFestival(nullptr);
    EXPECT_EQ(&ITextToSpeechFestival::descriptor,
              &proxy->ITextToSpeechFestival::getInterfaceDescriptor());
    const sp<RecordingService> service = new RecordingService;
    EXPECT_EQ(expected, service->getInterfaceDescriptor());
}

TEST(AsInterface, GivesNothingForNoBinder) {
    EXPECT_EQ(nullptr, ITextToSpeechFestival::asInterface(nullptr));
}

TEST(AsInterface, GivesTheServiceItselfInItsOwnProcess) {
    const sp<ITextToSpeechFestival> service = new RecordingService;
    EXPECT_EQ(service, ITextToSpeechFestival::asInterface(android::IInterface::asBinder(service)));
}

TEST(AsInterface, WrapsAnyOtherBinderInAProxy) {
    const sp<RecordingRemote> remote = new RecordingRemote;
    const sp<ITextToSpeechFestival> made = ITextToSpeechFestival::asInterface(remote);
    EXPECT_NE(nullptr, dynamic_cast<TTS::BpTextToSpeechFestival*>(made.get()));
    EXPECT_EQ(sp<IBinder>(remote), android::IInterface::asBinder(made));
    made->factoryReset(1);
    EXPECT_EQ(1U, remote->sent().size());
}

TEST(AsInterface, WrapsTheBinderOfAnotherInterface) {
    const sp<IBinder> other = new android::BBinder;
    const sp<ITextToSpeechFestival> made = ITextToSpeechFestival::asInterface(other);
    EXPECT_NE(nullptr, dynamic_cast<TTS::BpTextToSpeechFestival*>(made.get()));
}

TEST(AService, AnswersOnlyToItsOwnDescriptor) {
    const sp<RecordingService> service = new RecordingService;
    EXPECT_EQ(static_cast<android::IInterface*>(static_cast<ITextToSpeechFestival*>(service.get())),
              service->queryLocalInterface(ITextToSpeechFestival::descriptor).get());
    for (const char* other :
         {"tavix.ICallback", "tavix.ITextToSpeechFestiva", "tavix.ITextToSpeechFestivals", ""}) {
        EXPECT_EQ(nullptr, service->queryLocalInterface(String16(other))) << other;
    }
}

TEST(TheKindOfAValue, FollowsFromItsKey) {
    using TTS::ConfigValue;
    for (int32_t key = -2; key <= 20; ++key) {
        ConfigValue expected = ConfigValue::kNone;
        if (key == 1 || key == 2 || key == 6 || key == 10 || key == 12) {
            expected = ConfigValue::kInteger;
        } else if (key == 4 || key == 8) {
            expected = ConfigValue::kFloat;
        } else if (key == 14) {
            expected = ConfigValue::kText;
        }
        EXPECT_EQ(expected, TTS::configValueOf(static_cast<VOXTRELAPI_GCONF>(key))) << key;
    }
}

class ThroughProxyParcelAndStub : public testing::TestWithParam<TransactionCase> {};

TEST_P(ThroughProxyParcelAndStub, ACallReachesTheServiceAndItsAnswerComesBack) {
    const sp<RecordingService> service = serviceOfTheDumps();
    const sp<TTS::BpTextToSpeechFestival> proxy = new TTS::BpTextToSpeechFestival(
        android::IInterface::asBinder(sp<ITextToSpeechFestival>(service)));
    const bool isServed = GetParam().call != nullptr;
    const bool isRefused = std::string(GetParam().dump).find("refused") != std::string::npos;
    EXPECT_EQ(isServed || isRefused ? GetParam().answer : GetParam().silent,
              GetParam().ask(*proxy));
    EXPECT_EQ(isServed ? std::vector<std::string>{GetParam().call} : std::vector<std::string>{},
              service->calls());
}

INSTANTIATE_TEST_SUITE_P(Of, ThroughProxyParcelAndStub, testing::ValuesIn(transactionCases()),
                         transactionCaseName);

TEST(ASwitchOff, ReachesTheServiceAsSettingFlagZero) {
    const sp<RecordingService> service = new RecordingService;
    const sp<TTS::BpTextToSpeechFestival> proxy = new TTS::BpTextToSpeechFestival(
        android::IInterface::asBinder(sp<ITextToSpeechFestival>(service)));
    EXPECT_EQ(0, proxy->setEnable(1000, false));
    EXPECT_EQ(std::vector<std::string>{"setEnable2(1000, 0, 0)"}, service->calls());
}

}  // namespace
