// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BRIDGES_SPEECH_DISPATCHER_CONFIG_H
#define VOXTREL_BRIDGES_SPEECH_DISPATCHER_CONFIG_H

#include <chrono>
#include <functional>
#include <map>
#include <string>

#include "bridges/speech-dispatcher/MarkupProbe.h"

namespace sd_voxtrel {

/// What voxtrel.conf says; it explains itself.
struct Config {
    MarkupPolicy markup = MarkupPolicy::Auto;
    bool punctuationForEveryone = false;
    std::chrono::milliseconds timeout{3000};
    std::map<std::string, std::string> voiceTypes;  ///< "female1" to a voice's name or number

    Config();
};

/// Reads lines "Name value". What is not understood is told to `complain`, and the rest holds.
Config readConfig(const std::string& text, const std::function<void(const std::string&)>& complain);

}  // namespace sd_voxtrel

#endif
