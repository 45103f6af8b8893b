// SPDX-License-Identifier: Apache-2.0
#include <cmath>
#include <limits>
#include <ostream>

#include "tests/client/ClientTest.h"

namespace {

using platform::logged;
using support::keyLine;
using support::Lines;
using support::notSupportedLine;
using support::takeNotes;
using TTS::TTSClientPrivate;

/// One setter, whatever the type of its value: the rows give values as doubles.
struct Control {
    const char* name;
    bool isFloat;
    int (TTSClientPrivate::*set)(void* value);
    int (TTSClientPrivate::*get)(void* out);
    bool (TTSClientPrivate::*isSupported)();
    const char* shownAs;  ///< the value's name in the trace
    int32_t flagKey;
    uint32_t kind;
    double low;
    double high;
    bool TTS::Capabilities::*capability;  ///< null when the feature has none
};

void PrintTo(const Control& control, std::ostream* out) {
    *out << control.name;
}

const std::vector<Control>& controls() {
    using Client = TTSClientPrivate;
    using Caps = TTS::Capabilities;
    static const std::vector<Control> all = {
        {"setSpeed", false, &Client::setSpeed, &Client::speed, &Client::isSpeedSupported, "speed",
         3, 1, 100, 400, &Caps::speedSupported},
        {"setPitch", true, &Client::setPitch, &Client::pitch, &Client::isPitchSupported, "pitch", 5,
         2, 50, 200, &Caps::pitchSupported},
        {"setVolume", true, &Client::setVolume, &Client::volume, &Client::isVolumeSupported,
         "volume", 9, 4, 0, 100, &Caps::volumeSupported},
        {"setBgVolume", false, &Client::setBgVolume, &Client::bgvolume,
         &Client::isBgVolumeSupported, "BgVolume", 11, 5, 0, 100, nullptr},
        {"setTtsVolume", false, &Client::setTtsVolume, &Client::ttsvolume,
         &Client::isTtsVolumeSupported, "TtsVolume", 13, 6, 0, 100, nullptr},
    };
    return all;
}

class ASetter : public support::JoinedClientTest, public testing::WithParamInterface<Control> {
protected:
    int set(double value) {
        if (GetParam().isFloat) {
            auto number = static_cast<float>(value);
            return (client.*GetParam().set)(&number);
        }
        auto number = static_cast<uint32_t>(value);
        return (client.*GetParam().set)(&number);
    }

    double current() {
        if (GetParam().isFloat) {
            float number = -1;
            EXPECT_EQ(0, (client.*GetParam().get)(&number));
            return static_cast<double>(number);
        }
        uint32_t number = 0;
        EXPECT_EQ(0, (client.*GetParam().get)(&number));
        return number;
    }

    std::string shown(double value) const {
        return GetParam().isFloat
                   ? std::to_string(value)
                   : std::to_string(static_cast<int32_t>(static_cast<uint32_t>(value)));
    }

    std::string traceLine(double value) const {
        const std::string format = GetParam().isFloat ? "%f" : "%d";
        const std::string named = std::string("(), ") + GetParam().shownAs + " = ";
        return logged(2, "[Client] %s" + named + format + "\n",
                      std::string("[Client] ") + GetParam().name + named + shown(value) + "\n");
    }

    std::string rejectionLine(double value) const {
        const std::string name = GetParam().name;
        return logged(1, name + (GetParam().isFloat ? ": %f" : ": %d") + ", bad parameter\n",
                      name + ": " + shown(value) + ", bad parameter\n");
    }

    Lines flagQuestion() const {
        return {keyLine("enabled2", GetParam().flagKey),
                "ask enabled2(pid, " + std::to_string(GetParam().flagKey) + ")"};
    }

    Lines accepted(double value, const Lines& end) const {
        Lines lines{traceLine(value)};
        const Lines question = flagQuestion();
        lines.insert(lines.end(), question.begin(), question.end());
        lines.insert(lines.end(), end.begin(), end.end());
        return lines;
    }

    std::string notification() const { return "notify 6 0 " + std::to_string(GetParam().kind); }
};

TEST_P(ASetter, StoresAValueAtEitherEndOfItsRangeAndTellsTheApplication) {
    for (const double value : {GetParam().low, GetParam().high}) {
        EXPECT_EQ(0, set(value));
        EXPECT_EQ(accepted(value, {notification()}), takeNotes());
        EXPECT_EQ(value, current());
    }
}

TEST_P(ASetter, StoresTheValueBeforeItTellsTheApplication) {
    static TTSClientPrivate* watched = nullptr;
    static uint32_t seen = 0;
    watched = &client;
    seen = 0;
    client.mCbFunc = [](unsigned, unsigned, unsigned) {
        const TTS::TtsSetting& now = watched->mSetting;
        seen = now.mSpeed == 100 || now.mPitch == 100.0F || now.mVolume == 100.0F ||
               now.mMediaVolume == 100 || now.mTtsVolume == 100;
    };
    set(100);
    EXPECT_TRUE(seen);
}

TEST_P(ASetter, ReturnsMinusThreeOutsideItsRangeAndAsksNobody) {
    const double step = GetParam().isFloat ? 0.5 : 1.0;
    const double before = current();
    std::vector<double> outside{GetParam().high + step, 65534.0};
    if (GetParam().low > 0 || GetParam().isFloat) {
        outside.push_back(GetParam().low - step);
    }
    for (const double value : outside) {
        EXPECT_EQ(-3, set(value));
        EXPECT_EQ(Lines({traceLine(value), rejectionLine(value)}), takeNotes());
        EXPECT_EQ(before, current());
    }
}

TEST_P(ASetter, ComparesWholeNumbersUnsigned) {
    if (!GetParam().isFloat) {
        EXPECT_EQ(-3, set(4294967295.0));
        EXPECT_EQ(Lines({traceLine(4294967295.0), rejectionLine(4294967295.0)}), takeNotes());
    }
}

TEST_P(ASetter, AcceptsNeverSetOutsideItsRange) {
    set(100);
    takeNotes();
    EXPECT_EQ(0, set(65535));
    EXPECT_EQ(accepted(65535, {notification()}), takeNotes());
    EXPECT_EQ(65535.0, current());
}

TEST_P(ASetter, DoesNotTellTheApplicationOfTheValueItHasAlready) {
    set(100);
    takeNotes();
    EXPECT_EQ(0, set(100));
    EXPECT_EQ(accepted(100, {}), takeNotes());
}

TEST_P(ASetter, ReturnsTheFailureOfTheFlagQuestion) {
    service.status[support::kEnabled2] = -4;
    const double before = current();
    EXPECT_EQ(-4, set(100));
    EXPECT_EQ(accepted(100, {}), takeNotes());
    EXPECT_EQ(before, current());
}

TEST_P(ASetter, ReturnsMinusNineWhenTheFlagIsOff) {
    service.flags[GetParam().flagKey] = false;
    const double before = current();
    EXPECT_EQ(-9, set(100));
    EXPECT_EQ(accepted(100, {notSupportedLine()}), takeNotes());
    EXPECT_EQ(before, current());
}

TEST_P(ASetter, ReturnsMinusNineWithoutTheCapability) {
    if (GetParam().capability == nullptr) {
        client.mCapabilities.speedSupported = false;
        client.mCapabilities.pitchSupported = false;
        client.mCapabilities.volumeSupported = false;
        EXPECT_EQ(0, set(100)) << "this one needs none";
        return;
    }
    client.mCapabilities.*GetParam().capability = false;
    EXPECT_EQ(-9, set(100));
    EXPECT_EQ(accepted(100, {notSupportedLine()}), takeNotes());
    EXPECT_EQ(65535.0, current());
}

TEST_P(ASetter, DoesNotLookAtTheLock) {
    service.locked = true;
    EXPECT_EQ(0, set(100));
}

TEST_P(ASetter, WorksForAnApplicationWithoutAFunction) {
    client.mCbFunc = nullptr;
    EXPECT_EQ(0, set(100));
    EXPECT_EQ(accepted(100, {}), takeNotes());
    EXPECT_EQ(100.0, current());
}

TEST_P(ASetter, RefusesANullAddressWithoutAWord) {
    EXPECT_EQ(-3, (client.*GetParam().set)(nullptr));
    EXPECT_EQ(Lines{}, takeNotes());
    EXPECT_EQ(65535.0, current());
}

TEST_P(ASetter, AcceptsNotANumberEachTimeAnew) {
    if (!GetParam().isFloat) {
        return;
    }
    auto nan = std::numeric_limits<float>::quiet_NaN();
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(0, (client.*GetParam().set)(&nan));
        EXPECT_EQ(notification(), takeNotes().back());
        EXPECT_TRUE(std::isnan(current()));
    }
}

TEST_P(ASetter, RejectsInfinity) {
    if (!GetParam().isFloat) {
        return;
    }
    auto infinity = std::numeric_limits<float>::infinity();
    EXPECT_EQ(-3, (client.*GetParam().set)(&infinity));
    infinity = -infinity;
    EXPECT_EQ(-3, (client.*GetParam().set)(&infinity));
}

TEST_P(ASetter, TellsWhetherItsFeatureIsSupported) {
    EXPECT_TRUE((client.*GetParam().isSupported)());
    EXPECT_EQ(flagQuestion(), takeNotes());
}

TEST_P(ASetter, LogsThatItsFeatureIsSwitchedOff) {
    service.flags[GetParam().flagKey] = false;
    EXPECT_FALSE((client.*GetParam().isSupported)());
    EXPECT_EQ(notSupportedLine(), takeNotes().back());
}

TEST_P(ASetter, LogsThatItsFeatureLacksTheCapability) {
    client.mCapabilities.speedSupported =
        GetParam().capability != &TTS::Capabilities::speedSupported;
    client.mCapabilities.pitchSupported =
        GetParam().capability != &TTS::Capabilities::pitchSupported;
    client.mCapabilities.volumeSupported =
        GetParam().capability != &TTS::Capabilities::volumeSupported;
    EXPECT_EQ(GetParam().capability == nullptr, (client.*GetParam().isSupported)());
    Lines expected = flagQuestion();
    if (GetParam().capability != nullptr) {
        expected.push_back(notSupportedLine());
    }
    EXPECT_EQ(expected, takeNotes());
}

TEST_P(ASetter, LogsNothingWhenTheQuestionForItsFeatureFails) {
    service.status[support::kEnabled2] = 3;
    EXPECT_FALSE((client.*GetParam().isSupported)());
    EXPECT_EQ(flagQuestion(), takeNotes());
}

INSTANTIATE_TEST_SUITE_P(Each, ASetter, testing::ValuesIn(controls()),
                         [](const auto& row) { return std::string(row.param.name); });

class AWrappersTable : public support::ClientTest {};

TEST_F(AWrappersTable, HoldsSettersAndGettersByOneTypeOfMemberPointer) {
    using Client = TTSClientPrivate;
    int (Client::*const entries[])(void*) = {
        &Client::setSpeed,     &Client::speed,
        &Client::setPitch,     &Client::pitch,
        &Client::setVolume,    &Client::volume,
        &Client::setBgVolume,  &Client::bgvolume,
        &Client::setTtsVolume, &Client::ttsvolume,
        &Client::setVoice,     &Client::voice,
        &Client::setLanguage,  &Client::supportVoicesInfo,
    };
    for (const auto entry : entries) {
        EXPECT_EQ(-3, (client.*entry)(nullptr));
    }
}

TEST_F(AWrappersTable, HoldsTheQueriesOfARangeByOneTypeOfMemberPointer) {
    using Client = TTSClientPrivate;
    unsigned int (Client::*const whole[])() = {&Client::speedMin,     &Client::bgVolumeMin,
                                               &Client::ttsVolumeMin, &Client::speedMax,
                                               &Client::bgVolumeMax,  &Client::ttsVolumeMax};
    unsigned int sum = 0;
    for (const auto entry : whole) {
        sum += (client.*entry)();
    }
    EXPECT_EQ(200U, sum) << "the two fixed percentages, and nothing yet from the service";

    float (Client::*const real[])() = {&Client::pitchMin, &Client::pitchMax, &Client::volumeMin,
                                       &Client::volumeMax};
    for (const auto entry : real) {
        EXPECT_EQ(0.0F, (client.*entry)());
    }

    int (Client::*const language)(void*, unsigned int) = &Client::language;
    char code[6] = {};
    EXPECT_EQ(0, (client.*language)(code, 5));
    EXPECT_STREQ("na_NL", code);
}

class ARangeQuery : public support::JoinedClientTest {};

TEST_F(ARangeQuery, GivesWhatTheServiceSaidAndAsksNobody) {
    client.mCapabilities.speedMin = 11;
    client.mCapabilities.speedMax = 12;
    client.mCapabilities.pitchMin = 1.5F;
    client.mCapabilities.pitchMax = 2.5F;
    client.mCapabilities.volumeMin = 3.5F;
    client.mCapabilities.volumeMax = 4.5F;
    EXPECT_EQ(11U, client.speedMin());
    EXPECT_EQ(12U, client.speedMax());
    EXPECT_EQ(1.5F, client.pitchMin());
    EXPECT_EQ(2.5F, client.pitchMax());
    EXPECT_EQ(3.5F, client.volumeMin());
    EXPECT_EQ(4.5F, client.volumeMax());
    EXPECT_EQ(Lines{}, takeNotes());
}

TEST_F(ARangeQuery, OfAVolumeInPercentIsFixed) {
    EXPECT_EQ(0U, client.bgVolumeMin());
    EXPECT_EQ(100U, client.bgVolumeMax());
    EXPECT_EQ(0U, client.ttsVolumeMin());
    EXPECT_EQ(100U, client.ttsVolumeMax());
    EXPECT_EQ(Lines{}, takeNotes());
}

class AGetter : public support::ClientTest {};

TEST_F(AGetter, OfTheVoiceCopiesTheCurrentOne) {
    uint32_t voice = 0;
    EXPECT_EQ(0, client.voice(&voice));
    EXPECT_EQ(65535U, voice);
    client.mSetting.mVoice = 4;
    EXPECT_EQ(0, client.voice(&voice));
    EXPECT_EQ(4U, voice);
    EXPECT_EQ(Lines{}, takeNotes());
}

TEST_F(AGetter, OfTheLanguageCopiesAsManyBytesAsAsked) {
    char buffer[20];
    std::fill_n(buffer, sizeof buffer, '#');
    EXPECT_EQ(0, client.language(buffer, 3));
    EXPECT_EQ("na_#", std::string(buffer, 4));
    EXPECT_EQ(0, client.language(buffer, 0));
    EXPECT_EQ("na_#", std::string(buffer, 4));
    EXPECT_EQ(0, client.language(buffer, 16));
    EXPECT_EQ(std::string("na_NL\0\0\0\0\0\0\0\0\0\0\0####", 20), std::string(buffer, 20));
    EXPECT_EQ(Lines{}, takeNotes());
}

TEST_F(AGetter, OfTheLanguageFillsWithZerosHoweverMuchIsAsked) {
    std::string buffer(1U << 20U, '#');
    EXPECT_EQ(0, client.language(&buffer[0], static_cast<unsigned>(buffer.size())));
    EXPECT_EQ("na_NL", std::string(buffer.c_str()));
    EXPECT_EQ(std::string::npos, buffer.find('#'));
}

TEST_F(AGetter, RefusesANullAddress) {
    EXPECT_EQ(-3, client.speed(nullptr));
    EXPECT_EQ(-3, client.pitch(nullptr));
    EXPECT_EQ(-3, client.volume(nullptr));
    EXPECT_EQ(-3, client.bgvolume(nullptr));
    EXPECT_EQ(-3, client.ttsvolume(nullptr));
    EXPECT_EQ(-3, client.voice(nullptr));
    EXPECT_EQ(-3, client.language(nullptr, 16));
}

TEST_F(AGetter, ReadsAllItsFieldsApart) {
    client.mSetting.mSpeed = 1;
    client.mSetting.mMediaVolume = 2;
    client.mSetting.mTtsVolume = 3;
    client.mSetting.mPitch = 4.5F;
    client.mSetting.mVolume = 5.5F;
    uint32_t number = 0;
    float real = 0.0F;
    client.speed(&number);
    EXPECT_EQ(1U, number);
    client.bgvolume(&number);
    EXPECT_EQ(2U, number);
    client.ttsvolume(&number);
    EXPECT_EQ(3U, number);
    client.pitch(&real);
    EXPECT_EQ(4.5F, real);
    client.volume(&real);
    EXPECT_EQ(5.5F, real);
}

}  // namespace
