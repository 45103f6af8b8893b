// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <optional>
#include <string>
#include <type_traits>

#include "ipc/BpTextToSpeechFestival.h"
#include "ipc/ICallback.h"
#include "ipc/ITextToSpeechFestival.h"

namespace {

using TTS::BpTextToSpeechFestival;
using TTS::ICallback;
using TTS::ITextToSpeechFestival;

// The types of the operations, results included, as code outside this library repeats them.
using I = ITextToSpeechFestival;
using Key = VOXTRELAPI_GCONF;
using ByPid = int (I::*)(unsigned);
using ByNumber = int (I::*)(unsigned, unsigned);
using ByPointer = int (I::*)(unsigned, Key, void*);
template <typename Expected, auto Member>
constexpr bool kHasType = std::is_same_v<Expected, decltype(Member)>;

static_assert(kHasType<int (I::*)(unsigned, unsigned, const std::string&, unsigned, float, unsigned,
                                  unsigned, unsigned, float, EN_VOXTREL_LANGUAGE),
                       &I::say>);
static_assert(kHasType<int (I::*)(unsigned, unsigned, unsigned, unsigned), &I::silence>);
static_assert(kHasType<ByNumber, &I::stopAndFlush>);
static_assert(kHasType<int (I::*)(unsigned, bool), &I::setEnable>);
static_assert(kHasType<int (I::*)(unsigned, int), &I::setVerbosity>);
static_assert(kHasType<ByNumber, &I::setGlobalRate>);
static_assert(kHasType<int (I::*)(unsigned, Key, bool), &I::setEnable2>);
static_assert(kHasType<ByPointer, &I::enabled2>);
static_assert(kHasType<ByPointer, &I::setGlobalConfig>);
static_assert(kHasType<ByPointer, &I::globalConfig>);
static_assert(kHasType<bool (I::*)() const, &I::enabled>);
static_assert(kHasType<int (I::*)(), &I::verbosity>);
static_assert(kHasType<int (I::*)(), &I::globalRate>);
static_assert(kHasType<ByPid, &I::factoryReset>);
static_assert(kHasType<int (I::*)(unsigned, const android::sp<ICallback>&), &I::registerCallback>);
static_assert(kHasType<ByPid, &I::deregisterCallback>);
static_assert(kHasType<ByPid, &I::lock>);
static_assert(kHasType<ByPid, &I::unlock>);
static_assert(kHasType<bool (I::*)(), &I::locked>);
static_assert(kHasType<int (I::*)(TTS::Capabilities&), &I::getCapabilities>);
static_assert(kHasType<int (BpTextToSpeechFestival::*)(), &BpTextToSpeechFestival::language>);
static_assert(kHasType<int (BpTextToSpeechFestival::*)(float&), &BpTextToSpeechFestival::pitch>);
static_assert(kHasType<int (BpTextToSpeechFestival::*)(unsigned&), &BpTextToSpeechFestival::voice>);
static_assert(kHasType<int (BpTextToSpeechFestival::*)(unsigned&), &BpTextToSpeechFestival::speed>);
static_assert(kHasType<bool (ICallback::*)(unsigned, unsigned, unsigned), &ICallback::notify>);

/// The slot of a virtual member function, decoded from a pointer to it: none for a function that is
/// not virtual, or that is reached through a table other than the object's first.
template <typename Member>
std::optional<size_t> slotOf(Member member) {
    struct {
        std::ptrdiff_t function;
        std::ptrdiff_t adjustment;
    } raw{};
    static_assert(sizeof raw == sizeof member, "the Itanium ABI's form, or its ARM variant");
    std::memcpy(&raw, &member, sizeof raw);
#if defined(__arm__) || defined(__aarch64__)
    // Functions may have odd addresses here, so the mark of a virtual one is in the adjustment.
    const bool isVirtual = (raw.adjustment & 1) != 0;
    const std::ptrdiff_t offset = raw.function;
    const std::ptrdiff_t adjustment = raw.adjustment >> 1;
#else
    const bool isVirtual = (raw.function & 1) != 0;
    const std::ptrdiff_t offset = raw.function - 1;
    const std::ptrdiff_t adjustment = raw.adjustment;
#endif
    if (!isVirtual || adjustment != 0) {
        return std::nullopt;
    }
    return static_cast<size_t>(offset) / sizeof(void*);
}

struct Protected : android::IInterface {
    static constexpr auto onAsBinderMember = &Protected::onAsBinder;
};

/// Two slots of destructors come first in a table; the next function tells that they are there.
TEST(TheServiceInterface, StartsItsTableAsEveryInterfaceDoes) {
    EXPECT_EQ(2U, slotOf(Protected::onAsBinderMember));
    EXPECT_EQ(3U, slotOf(&ITextToSpeechFestival::getInterfaceDescriptor));
}

TEST(TheServiceInterface, HasItsOperationsInTheFixedSlots) {
    EXPECT_EQ(4U, slotOf(&ITextToSpeechFestival::say));
    EXPECT_EQ(5U, slotOf(&ITextToSpeechFestival::silence));
    EXPECT_EQ(6U, slotOf(&ITextToSpeechFestival::stopAndFlush));
    EXPECT_EQ(7U, slotOf(&ITextToSpeechFestival::setEnable));
    EXPECT_EQ(8U, slotOf(&ITextToSpeechFestival::setVerbosity));
    EXPECT_EQ(9U, slotOf(&ITextToSpeechFestival::setGlobalRate));
    EXPECT_EQ(10U, slotOf(&ITextToSpeechFestival::setEnable2));
    EXPECT_EQ(11U, slotOf(&ITextToSpeechFestival::enabled2));
    EXPECT_EQ(12U, slotOf(&ITextToSpeechFestival::setGlobalConfig));
    EXPECT_EQ(13U, slotOf(&ITextToSpeechFestival::globalConfig));
    EXPECT_EQ(14U, slotOf(&ITextToSpeechFestival::enabled));
    EXPECT_EQ(15U, slotOf(&ITextToSpeechFestival::verbosity));
    EXPECT_EQ(16U, slotOf(&ITextToSpeechFestival::globalRate));
    EXPECT_EQ(17U, slotOf(&ITextToSpeechFestival::factoryReset));
    EXPECT_EQ(18U, slotOf(&ITextToSpeechFestival::registerCallback));
    EXPECT_EQ(19U, slotOf(&ITextToSpeechFestival::deregisterCallback));
    EXPECT_EQ(20U, slotOf(&ITextToSpeechFestival::lock));
    EXPECT_EQ(21U, slotOf(&ITextToSpeechFestival::unlock));
    EXPECT_EQ(22U, slotOf(&ITextToSpeechFestival::locked));
    EXPECT_EQ(23U, slotOf(&ITextToSpeechFestival::getCapabilities));
}

TEST(TheProxy, AddsItsOwnOperationsBehindThoseOfTheInterface) {
    EXPECT_EQ(24U, slotOf(&BpTextToSpeechFestival::language));
    EXPECT_EQ(25U, slotOf(&BpTextToSpeechFestival::pitch));
    EXPECT_EQ(26U, slotOf(&BpTextToSpeechFestival::voice));
    EXPECT_EQ(27U, slotOf(&BpTextToSpeechFestival::speed));
}

TEST(TheCallbackInterface, HasNotifyBehindTheFunctionsOfEveryInterface) {
    EXPECT_EQ(3U, slotOf(&ICallback::getInterfaceDescriptor));
    EXPECT_EQ(4U, slotOf(&ICallback::notify));
}

}  // namespace
