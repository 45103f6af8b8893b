// SPDX-License-Identifier: Apache-2.0
#include "bridges/speech-dispatcher/Wishes.h"

#include <algorithm>
#include <charconv>

namespace sd_voxtrel {
namespace {

constexpr int kMaxLevel = 100;

char folded(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c == '_' ? '-' : c;
}

bool isSame(const std::string& a, const std::string& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](char x, char y) { return folded(x) == folded(y); });
}

std::string firstPart(const std::string& language) {
    return language.substr(0, language.find_first_of("-_"));
}

void readLevel(const std::string& value, int& out) {
    int level = 0;
    const char* end = value.data() + value.size();
    const auto [at, error] = std::from_chars(value.data(), end, level);
    if (error == std::errc() && at == end) {
        out = std::clamp(level, -kMaxLevel, kMaxLevel);
    }
}

}  // namespace

std::vector<ListedVoice> chosen(const std::vector<ListedVoice>& voices, const std::string& language,
                                const std::string& variant) {
    const auto choose = [&](auto isLanguage) {
        std::vector<ListedVoice> some;
        std::copy_if(voices.begin(), voices.end(), std::back_inserter(some),
                     [&](const ListedVoice& voice) {
                         const bool isVariant = variant.empty() || isSame(voice.variant, variant);
                         return isVariant && isLanguage(voice.language);
                     });
        return some;
    };
    if (language.empty()) {
        return choose([](const std::string&) { return true; });
    }
    std::vector<ListedVoice> some =
        choose([&](const std::string& each) { return isSame(each, language); });
    if (some.empty()) {
        some = choose(
            [&](const std::string& each) { return isSame(firstPart(each), firstPart(language)); });
    }
    return some;
}

void Wishes::take(const Values& values) {
    for (const auto& [name, value] : values) {
        take(name, value == "NULL" ? "" : value);
    }
}

void Wishes::take(const std::string& name, const std::string& value) {
    if (name == "rate") {
        readLevel(value, mRate);
    } else if (name == "pitch") {
        readLevel(value, mPitch);
    } else if (name == "volume") {
        readLevel(value, mVolume);
    } else if (name == "language") {
        mLanguage = value;
    } else if (name == "voice") {
        mVoiceType = value;
    } else if (name == "synthesis_voice") {
        mVoice = value;
    } else if (name == "spelling_mode") {
        mIsSpelled = value == "on";
    } else if (name == "punctuation_mode") {
        mWantsPunctuation = value == "most" || value == "all";
    }
}

Style Wishes::style() const {
    Style style;
    style.rate = mRate;
    style.pitch = mPitch;
    style.volume = mVolume;
    if (!mLanguage.empty()) {
        style.language = mLanguage;
    }
    const auto type = mVoiceTypes.find(mVoiceType);
    const std::string& voice = mVoice.empty() && type != mVoiceTypes.end() ? type->second : mVoice;
    if (!voice.empty()) {
        style.voice = voice;
    }
    return style;
}

}  // namespace sd_voxtrel
