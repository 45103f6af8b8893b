// SPDX-License-Identifier: Apache-2.0
#include "bridges/speech-dispatcher/Config.h"

#include <algorithm>
#include <sstream>
#include <vector>

namespace sd_voxtrel {
namespace {

using Words = std::vector<std::string>;

constexpr const char* kVoiceTypes[] = {"male1",   "male2",   "male3",      "female1",
                                       "female2", "female3", "child_male", "child_female"};

/// Words, with or without quotes; a '#' begins a comment.
Words wordsOf(const std::string& line) {
    Words words;
    std::size_t at = 0;
    while ((at = line.find_first_not_of(" \t\r", at)) != std::string::npos && line[at] != '#') {
        const bool isQuoted = line[at] == '"';
        at += isQuoted ? 1 : 0;
        const std::size_t end =
            std::min(line.find_first_of(isQuoted ? "\"" : " \t\r", at), line.size());
        words.push_back(line.substr(at, end - at));
        at = std::min(end + 1, line.size());
    }
    return words;
}

bool readMarkup(const std::string& value, MarkupPolicy& out) {
    if (value != "auto" && value != "yes" && value != "no") {
        return false;
    }
    out = value == "auto"  ? MarkupPolicy::Auto
          : value == "yes" ? MarkupPolicy::Always
                           : MarkupPolicy::Never;
    return true;
}

bool readSwitch(const std::string& value, bool& out) {
    if (value != "yes" && value != "no") {
        return false;
    }
    out = value == "yes";
    return true;
}

bool readMilliseconds(const std::string& value, std::chrono::milliseconds& out) {
    constexpr std::size_t kDigits = 5;
    const bool isNumber = !value.empty() && value.size() <= kDigits &&
                          value.find_first_not_of("0123456789") == std::string::npos;
    if (isNumber) {
        out = std::chrono::milliseconds(std::stoi(value));
    }
    return isNumber;
}

bool readVoiceType(const Words& words, std::map<std::string, std::string>& out) {
    const bool isKnown = std::find(std::begin(kVoiceTypes), std::end(kVoiceTypes), words[1]) !=
                         std::end(kVoiceTypes);
    if (isKnown) {
        out[words[1]] = words[2];
    }
    return isKnown;
}

bool readWords(const Words& words, Config& config) {
    if (words.size() == 3 && words[0] == "VoiceType") {
        return readVoiceType(words, config.voiceTypes);
    }
    if (words.size() != 2) {
        return false;
    }
    return (words[0] == "Markup" && readMarkup(words[1], config.markup)) ||
           (words[0] == "PunctuationForEveryone" &&
            readSwitch(words[1], config.punctuationForEveryone)) ||
           (words[0] == "WaitForService" && readMilliseconds(words[1], config.timeout));
}

}  // namespace

// The numbers of voxtreld's voices; male1 is what a desktop asks for that asks for nothing.
Config::Config()
    : voiceTypes({{"male2", "8"},
                  {"male3", "9"},
                  {"female1", "2"},
                  {"female2", "3"},
                  {"female3", "4"},
                  {"child_male", "10"},
                  {"child_female", "6"}}) {}

Config readConfig(const std::string& text,
                  const std::function<void(const std::string&)>& complain) {
    Config config;
    std::istringstream lines(text);
    std::string line;
    for (unsigned number = 1; std::getline(lines, line); ++number) {
        const Words words = wordsOf(line);
        if (!words.empty() && !readWords(words, config)) {
            complain("line " + std::to_string(number) + " is not understood: " + line);
        }
    }
    return config;
}

}  // namespace sd_voxtrel
