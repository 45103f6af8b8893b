// SPDX-License-Identifier: Apache-2.0
// What each operation of a client must give for the replies that it was given.
#include <cstring>

#include "client/SharedConnection.h"
#include "fuzz/client/Application.h"
#include "vocabulary/Events.h"
#include "vocabulary/GlobalConfig.h"
#include "vocabulary/Status.h"

namespace voxtrel_fuzz {
namespace {

using TTS::TTSClientPrivate;
using TTS::TtsSetting;
namespace transaction = TTS::transaction;

constexpr uint32_t kUnset = 65535;
constexpr size_t kLanguageSize = 16;

float floatOf(uint32_t bits) {
    float value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

bool isGranted(int status) {
    return status == 0 || status == 1;
}

}  // namespace

int Application::refusalToChange() const {
    if (!mHadService) {
        return TTS::STATUS_NO_SERVICE;
    }
    const bool isLocked = !mWasOwner && answerTo(transaction::kLocked) != 0;
    return isLocked ? TTS::STATUS_LOCKED : TTS::STATUS_OK;
}

void Application::speak(unsigned kind) {
    static constexpr TTS::Transaction kRequests[] = {transaction::kSay, transaction::kSilence,
                                                     transaction::kStopAndFlush};
    const std::string text = kind == 0 ? mInput.text() : "";
    const uint32_t number = mInput.byte();
    const int status = perform([&] {
        return kind == 0   ? mClient->say(number, text)
               : kind == 1 ? mClient->silence(number, number)
                           : mClient->stopAndFlush(number);
    });
    int refusal = refusalToChange();
    if (mHadService && answerTo(transaction::kEnabled) == 0) {
        refusal = TTS::STATUS_DISABLED;
    }
    require(status == (refusal != 0 ? refusal : answerTo(kRequests[kind])));
    require(refusal == 0 || !wasAsked(kRequests[kind]));
}

/// What all clients share.
void Application::change(unsigned kind) {
    static constexpr TTS::Transaction kRequests[] = {
        transaction::kSetEnable, transaction::kSetVerbosity, transaction::kSetEnable2,
        transaction::kFactoryReset};
    const uint32_t number = mInput.byte();
    const auto key = static_cast<VOXTRELAPI_GCONF>(number);
    const int status = perform([&] {
        return kind == 0   ? mClient->setEnable(number % 2 == 1)
               : kind == 1 ? mClient->setVerbosity(static_cast<int>(number))
               : kind == 2 ? mClient->setEnable2(key, true)
                           : mClient->factoryReset(nullptr);
    });
    const int refusal = refusalToChange();
    require(status == (refusal != 0 ? refusal : answerTo(kRequests[kind])));
    require(refusal == 0 || !wasAsked(kRequests[kind]));
}

void Application::lock(bool isWanted) {
    const int status = perform([&] { return isWanted ? mClient->lock() : mClient->unlock(); });
    const TTS::Transaction request = isWanted ? transaction::kLock : transaction::kUnlock;
    require(status == (mHadService ? answerTo(request) : TTS::STATUS_NO_SERVICE));
    const bool isOwner = !mHadService ? mWasOwner
                         : isWanted   ? isGranted(status)
                                      : mWasOwner && !isGranted(status);
    require(mClient->mLockOwner == isOwner);
}

/// The client's own settings, and what it knows of the service's.
void Application::own(unsigned kind) {
    if (kind < 5) {
        setOwnNumber(kind);
    } else if (kind == 5) {
        setLanguage();
    } else if (kind == 6) {
        setVoice();
    } else if (kind == 7) {
        lock(true);
    } else {
        lock(false);
    }
}

template <typename Value>
void Application::requireSet(int (Client::*set)(void*), Value TtsSetting::*field, Value value,
                             bool isInside, bool isSupported, int flagKind) {
    const Value before = mClient->mSetting.*field;
    const int status = perform([&] { return (mClient->*set)(&value); });
    int expected = TTS::STATUS_OK;
    if (value != static_cast<Value>(kUnset) && !isInside) {
        expected = TTS::STATUS_BAD_PARAMETER;
    } else if (!mHadService) {
        expected = TTS::STATUS_NO_SERVICE;
    } else if (answerTo(transaction::kEnabled2, 1) != 0) {
        expected = answerTo(transaction::kEnabled2, 1);
    } else if (answerTo(transaction::kEnabled2) == 0 || !isSupported) {
        expected = TTS::STATUS_NOT_SUPPORTED;
    }
    require(status == expected);
    const bool isNew = expected == 0 && before != value;
    const Value now = mClient->mSetting.*field;
    require(std::memcmp(&now, isNew ? &value : &before, sizeof now) == 0);
    require(mLast.notices.size() == (isNew && mClient->mCbFunc != nullptr ? 1U : 0U));
    for (const Notice& notice : mLast.notices) {
        require(notice.event == TTS::EVENT_SETTING && notice.second == 0 &&
                notice.third == static_cast<unsigned>(flagKind));
    }
}

void Application::setOwnNumber(unsigned kind) {
    const TTS::Capabilities& caps = mClient->mCapabilities;
    const uint32_t bits = mInput.below(2) == 0 ? mInput.byte() : mInput.word();
    const float real = mInput.below(2) == 0 ? static_cast<float>(bits) : floatOf(bits);
    switch (kind) {
        case 0:
            requireSet(&Client::setSpeed, &TtsSetting::mSpeed, bits,
                       bits >= caps.speedMin && bits <= caps.speedMax, caps.speedSupported,
                       TTS::SETTING_SPEED);
            break;
        case 1:
            requireSet(&Client::setPitch, &TtsSetting::mPitch, real,
                       !(real < caps.pitchMin) && !(real > caps.pitchMax), caps.pitchSupported,
                       TTS::SETTING_PITCH);
            break;
        case 2:
            requireSet(&Client::setVolume, &TtsSetting::mVolume, real,
                       !(real < caps.volumeMin) && !(real > caps.volumeMax), caps.volumeSupported,
                       TTS::SETTING_VOLUME);
            break;
        case 3:
            requireSet(&Client::setBgVolume, &TtsSetting::mMediaVolume, bits, bits <= 100, true,
                       TTS::SETTING_BG_VOLUME);
            break;
        default:
            requireSet(&Client::setTtsVolume, &TtsSetting::mTtsVolume, bits, bits <= 100, true,
                       TTS::SETTING_TTS_VOLUME);
    }
}

void Application::setLanguage() {
    static const char* const codes[] = {"en_US", "fr_FR", "pt_PT", ""};
    const unsigned choice = mInput.below(5);
    std::string code = choice < 4 ? codes[choice] : mInput.text();
    code.resize(std::strlen(code.c_str()));
    const std::string before = mClient->mSetting.mLang;
    const int status = perform([&] { return mClient->setLanguage(code.data()); });
    require(mLast.exchanges.empty());
    require(status == TTS::STATUS_OK || status == TTS::STATUS_NOT_SUPPORTED);
    require(mClient->mSetting.mLang == (status == TTS::STATUS_OK ? code : before));
    require(status == TTS::STATUS_OK || mLast.notices.empty());
    readLanguage();
}

/// Exactly as many bytes as there is room for.
void Application::readLanguage() {
    const std::string& code = mClient->mSetting.mLang;
    std::vector<char> out(mInput.below(32), '?');
    require(mClient->language(out.data(), static_cast<unsigned>(out.size())) ==
            (out.data() == nullptr ? TTS::STATUS_BAD_PARAMETER : TTS::STATUS_OK));
    for (size_t at = 0; at < out.size(); ++at) {
        require(out[at] == (at < code.size() ? code[at] : '\0'));
    }
}

void Application::setVoice() {
    uint32_t voice = mInput.below(2) == 0 ? mInput.below(4) : mInput.word();
    const uint32_t before = mClient->mSetting.mVoice;
    const int status = perform([&] { return mClient->setVoice(&voice); });
    require(mClient->mSetting.mVoice == (status == TTS::STATUS_OK ? voice : before));
    require(status == TTS::STATUS_OK || mLast.notices.empty());
}

void Application::ask(unsigned kind) {
    switch (kind) {
        case 0:
            require((perform([this] { return mClient->enabled() ? 1 : 0; }) != 0) ==
                    (mHadService && answerTo(transaction::kEnabled) != 0));
            break;
        case 1:
            require(perform([this] { return mClient->verbosity(); }) ==
                    (mHadService ? answerTo(transaction::kVerbosity) : 0));
            break;
        case 2:
            require(perform([this] { return mClient->globalRate(); }) ==
                    (mHadService ? answerTo(transaction::kGlobalRate) : 0));
            break;
        case 3:
            require((perform([this] { return mClient->locked(); }) != 0) ==
                    (!mHadService || mWasOwner || answerTo(transaction::kLocked) != 0));
            break;
        case 4:
            (void)perform([this] { return mClient->isPitchSupported() ? 1 : 0; });
            break;
        case 5:
            (void)perform([this] { return mClient->supportVoicesNum(); });
            (void)perform([this] { return mClient->ttsVoiceMax() + mClient->ttsVoiceMin(); });
            break;
        case 6:
            requireLanguages();
            break;
        case 7:
        case 8:
            requireVoices();
            break;
        case 9:
            setGlobal();
            break;
        default:
            readGlobal();
    }
}

/// Two at most, of one language, each with an end to its name.
void Application::requireVoices() {
    TTS::VoiceInfo** list = nullptr;
    const int status = perform([&] { return mClient->supportVoicesInfo(&list); });
    require(status == TTS::STATUS_OK || list == nullptr);
    for (size_t at = 0; list != nullptr && list[at] != nullptr; ++at) {
        require(at < 2 && list[at]->langId == list[0]->langId);
        require(std::memchr(list[at]->name, '\0', sizeof list[at]->name) != nullptr);
    }
}

void Application::requireLanguages() {
    const std::string codes = mClient->supportLanguages();
    for (size_t at = 0; at < codes.size();) {
        const size_t end = std::min(codes.find(',', at), codes.size());
        require(TTS::langStr2Id(codes.substr(at, end - at)) < LANG_NA);
        at = end + 1;
    }
}

void Application::setGlobal() {
    const auto key = static_cast<VOXTRELAPI_GCONF>(mInput.below(17));
    std::vector<char> value(sizeof(uint32_t));
    const uint32_t number = mInput.word();
    std::memcpy(value.data(), &number, sizeof number);
    if (key == GCONF_LANGUAGE) {
        const std::string code = mInput.text();
        value.assign(code.begin(), code.end());
        value.push_back('\0');
    }
    const int status = perform([&] { return mClient->setGlobalConfig(key, value.data()); });
    require(mHadService || (status == TTS::STATUS_NO_SERVICE && mLast.exchanges.empty()));
    require(!wasAsked(transaction::kSetGlobalConfig) ||
            (refusalToChange() == 0 && status == answerTo(transaction::kSetGlobalConfig)));
}

/// The room is exactly what the key takes.
void Application::readGlobal() {
    const auto key = static_cast<VOXTRELAPI_GCONF>(mInput.below(17));
    if (mInput.below(2) == 0) {
        const auto isOn = std::make_unique<bool>(false);
        const int status = perform([&] { return mClient->enabled2(key, isOn.get()); });
        require(status ==
                (mHadService ? answerTo(transaction::kEnabled2, 1) : TTS::STATUS_NO_SERVICE));
        require(*isOn == (mHadService && answerTo(transaction::kEnabled2) != 0));
        return;
    }
    std::vector<char> out(key == GCONF_LANGUAGE ? kLanguageSize : sizeof(uint32_t));
    const int status = perform([&] { return mClient->globalConfig(key, out.data()); });
    require(mHadService || status == TTS::STATUS_NO_SERVICE);
}

}  // namespace voxtrel_fuzz
