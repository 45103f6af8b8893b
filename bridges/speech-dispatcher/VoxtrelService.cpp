// SPDX-License-Identifier: Apache-2.0
#include "bridges/speech-dispatcher/VoxtrelService.h"

#include <cmath>
#include <stdexcept>

namespace sd_voxtrel {
namespace {

/// What a service that answers does not need.
constexpr int kPromptMs = 100;

/// What the end of the module may wait for the service.
constexpr int kLingerMs = 200;

using Client = std::unique_ptr<vx_client, vx_status (*)(vx_client*)>;
using Features = std::unique_ptr<vx_features, vx_status (*)(vx_features*)>;
using Settings = std::unique_ptr<vx_settings, vx_status (*)(vx_settings*)>;

void require(vx_status status) {
    const char* why = "";
    if (status != VX_OK) {
        (void)vx_describe(status, &why);  // it stays empty where that fails
        throw std::runtime_error(why);
    }
}

Client newClient() {
    vx_client_options* options = nullptr;
    require(vx_client_options_new(&options));
    const std::unique_ptr<vx_client_options, vx_status (*)(vx_client_options*)> owned(
        options, vx_client_options_free);
    require(vx_client_options_set_handler_thread(options, VX_THREAD_OF_APPLICATION));
    require(vx_client_options_set_linger(options, kLingerMs));
    require(vx_client_options_set_deadline(options, kLingerMs));
    vx_client* client = nullptr;
    require(vx_client_new("sd_voxtrel", options, &client));
    return {client, vx_client_free};
}

/// None where the service does not tell them in time.
Features featuresOf(vx_client& client, std::chrono::milliseconds timeout) {
    vx_features* features = nullptr;
    (void)vx_get_features(&client, static_cast<int>(timeout.count()), &features);
    return {features, vx_features_free};
}

Settings newSettings() {
    vx_settings* settings = nullptr;
    require(vx_settings_new(&settings));
    return {settings, vx_settings_free};
}

/// "f1" of a voice that is called "en-us+f1".
std::string variantOf(const std::string& name) {
    const std::size_t plus = name.rfind('+');
    return plus == std::string::npos ? "none" : name.substr(plus + 1);
}

template <typename Number>
std::optional<Scale> scaleOf(const vx_features& features,
                             vx_status (*range)(const vx_features*, Number*, Number*)) {
    Number least{};
    Number most{};
    if (range(&features, &least, &most) != VX_OK) {
        return std::nullopt;
    }
    return Scale{static_cast<double>(least), static_cast<double>(most), std::nullopt};
}

template <typename Number>
void readOwn(const vx_settings& settings, vx_status (*get)(const vx_settings*, Number*),
             std::optional<Scale>& scale) {
    Number value{};
    if (scale && get(&settings, &value) == VX_OK) {
        scale->own = static_cast<double>(value);
    }
}

ServiceEvent::Kind endOf(const vx_outcome& outcome) {
    switch (outcome.kind) {
        case VX_OUTCOME_FINISHED:
            return ServiceEvent::Kind::Finished;
        case VX_OUTCOME_STOPPED:
            return ServiceEvent::Kind::Stopped;
        case VX_OUTCOME_LOST:
            return ServiceEvent::Kind::Lost;
        default:
            break;
    }
    const bool isUnable = outcome.status == VX_NOT_SUPPORTED || outcome.status == VX_NO_LANGUAGE ||
                          outcome.status == VX_BAD_PARAMETER;
    return isUnable ? ServiceEvent::Kind::Unable : ServiceEvent::Kind::Refused;
}

}  // namespace

VoxtrelService::VoxtrelService() : mClient(newClient()) {
    require(vx_client_fd(mClient.get(), &mFd));
}

bool VoxtrelService::next(ServiceEvent& event) {
    vx_event told = {};
    while (vx_next_event(mClient.get(), &told) == VX_OK) {
        if (take(told, event)) {
            return true;
        }
    }
    return false;
}

bool VoxtrelService::take(const vx_event& event, ServiceEvent& out) {
    out = {};
    out.utterance = event.utterance;
    switch (event.kind) {
        case VX_EVENT_STARTED:
            out.kind = ServiceEvent::Kind::Started;
            return true;
        case VX_EVENT_WORD:
            out.kind = ServiceEvent::Kind::Word;
            return true;
        case VX_EVENT_MARK:
            out.kind = ServiceEvent::Kind::Mark;
            out.mark = event.value;
            return true;
        case VX_EVENT_ENDED:
            out.kind = endOf(event.outcome);
            out.wasHeard = event.outcome.heard != 0;
            out.why = event.outcome.message;
            return true;
        case VX_EVENT_CONNECTED:
            mHasRanges = mHasOwnValues = false;
            out.kind = ServiceEvent::Kind::Connected;
            return true;
        case VX_EVENT_DISCONNECTED:
            out.kind = ServiceEvent::Kind::Disconnected;
            return true;
        case VX_EVENT_CHANGED:
            mHasOwnValues = false;
            return false;
        default:
            return false;
    }
}

bool VoxtrelService::awaitConnected(std::chrono::milliseconds timeout) {
    return vx_wait_until_connected(mClient.get(), static_cast<int>(timeout.count())) == VX_OK;
}

std::vector<ListedVoice> VoxtrelService::voices(std::chrono::milliseconds timeout) {
    const Features features = featuresOf(*mClient, timeout);
    std::size_t count = 0;
    std::vector<ListedVoice> all;
    if (features != nullptr) {
        require(vx_features_voice_count(features.get(), &count));
    }
    for (std::size_t index = 0; index < count; ++index) {
        vx_voice voice = {};
        require(vx_features_voice(features.get(), index, &voice));
        all.push_back({voice.name, voice.language, variantOf(voice.name)});
    }
    return all;
}

bool VoxtrelService::setVerbosity(int verbosity) {
    const Settings settings = newSettings();
    require(vx_settings_set_verbosity(settings.get(), verbosity));
    return vx_change_settings(mClient.get(), settings.get(), kPromptMs) == VX_OK;
}

bool VoxtrelService::isConnected() {
    int connected = 0;
    return vx_is_connected(mClient.get(), &connected) == VX_OK && connected != 0;
}

bool VoxtrelService::answers() {
    int on = 0;
    const vx_status status = vx_is_on(mClient.get(), VX_SWITCH_SPEECH, kPromptMs, &on);
    return status != VX_TIMED_OUT && status != VX_UNRESPONSIVE && status != VX_NO_SERVICE;
}

unsigned long VoxtrelService::say(const std::string& text, const Style& style) {
    const Options options = optionsOf(style);
    vx_utterance* said = nullptr;
    unsigned long number = 0;
    if (vx_say(mClient.get(), text.c_str(), options.get(), &said) != VX_OK) {
        return 0;
    }
    (void)vx_utterance_number(said, &number);  // 0 where it fails
    (void)vx_utterance_free(said);
    return number;
}

void VoxtrelService::stop() {
    (void)vx_stop(mClient.get());  // what it did, the events tell
}

VoxtrelService::Options VoxtrelService::optionsOf(const Style& style) {
    vx_options* made = nullptr;
    require(vx_options_new(&made));
    Options options(made, vx_options_free);
    if (style.language) {
        require(vx_options_set_language(made, style.language->c_str()));
    }
    if (style.voice) {
        require(vx_options_set_voice(made, style.voice->c_str()));
    }
    if (style.isMute || style.rate != 0 || style.pitch != 0 || style.volume != 0) {
        loadScales();
        setNumbers(*made, style);
    }
    return options;
}

void VoxtrelService::setNumbers(vx_options& options, const Style& style) {
    constexpr int kMaxLevel = 100;
    const int rate = style.isMute ? kMaxLevel : style.rate;
    const int volume = style.isMute ? -kMaxLevel : style.volume;
    if (rate != 0 && mSpeed) {
        const auto speed = static_cast<unsigned int>(std::lround(mSpeed->at(rate)));
        require(vx_options_set_speed(&options, speed));
    }
    if (style.pitch != 0 && mPitch) {
        require(vx_options_set_pitch(&options, static_cast<float>(mPitch->at(style.pitch))));
    }
    if (volume != 0 && mVolume) {
        require(vx_options_set_volume(&options, static_cast<float>(mVolume->at(volume))));
    }
}

/// What the service does not tell in time is asked for again with the next message.
void VoxtrelService::loadScales() {
    if (!mHasRanges) {
        loadRanges();
    }
    if (!mHasOwnValues) {
        loadOwnValues();
    }
}

void VoxtrelService::loadRanges() {
    const Features features = featuresOf(*mClient, std::chrono::milliseconds(0));
    if (features != nullptr) {
        mSpeed = scaleOf(*features, vx_features_speed);
        mPitch = scaleOf(*features, vx_features_pitch);
        mVolume = scaleOf(*features, vx_features_volume);
        mHasRanges = true;
    }
}

void VoxtrelService::loadOwnValues() {
    vx_settings* told = nullptr;
    if (vx_get_settings(mClient.get(), kPromptMs, &told) == VX_OK) {
        const Settings settings(told, vx_settings_free);
        readOwn(*settings, vx_settings_get_speed, mSpeed);
        readOwn(*settings, vx_settings_get_pitch, mPitch);
        readOwn(*settings, vx_settings_get_volume, mVolume);
        mHasOwnValues = true;
    }
}

}  // namespace sd_voxtrel
