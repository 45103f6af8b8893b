// SPDX-License-Identifier: Apache-2.0
#include "bridges/speech-dispatcher/Module.h"

#include <algorithm>
#include <charconv>

#include "bridges/speech-dispatcher/Markup.h"

namespace sd_voxtrel {
namespace {

/// How long the server's start waits for a service that is about to come.
constexpr std::chrono::milliseconds kToBegin(2000);
constexpr std::chrono::milliseconds kToList(1000);

/// So many events are taken in a row; then the server's commands are looked at.
constexpr int kEventsAtOnce = 64;

std::string spoken(std::string name) {
    std::replace(name.begin(), name.end(), '_', ' ');
    std::replace(name.begin(), name.end(), '\n', ' ');
    return name;
}

/// A blank has no sound, so that it goes by its name.
std::string spelledCharacter(const std::string& text) {
    return text == "space" ? text : spelled("<speak>" + escaped(text) + "</speak>");
}

}  // namespace

Module::Module(VoxtrelService& service, const Config& config, Log& log,
               std::function<void(const std::string&)> write)
    : mService(service),
      mConfig(config),
      mLog(log),
      mWrite(std::move(write)),
      mSpeaker(service, config.markup, [this](const std::string& lines) { mEvents += lines; }),
      mWishes(config.voiceTypes) {}

void Module::takeEvents() {
    ServiceEvent event;
    for (int count = 0; count < kEventsAtOnce && mService.next(event); ++count) {
        if (event.kind == ServiceEvent::Kind::Connected) {
            mLog.write(Log::kTrouble, "the service is there");
            mPunctuation.reset();
        } else if (event.kind == ServiceEvent::Kind::Disconnected) {
            mLog.write(Log::kTrouble, "the service is gone, and is being looked for");
        }
        mSpeaker.onEvent(event, Speaker::Clock::now());
        writeEvents();
    }
    mSpeaker.onTime(Speaker::Clock::now());
    writeEvents();
}

void Module::writeEvents() {
    if (mEvents.empty()) {
        return;
    }
    mWrite(mEvents);
    mEvents.clear();
    if (mSpeaker.isIdle() && !mSpeaker.trouble().empty()) {
        mLog.write(Log::kTrouble, "not spoken to its end: " + mSpeaker.trouble());
    }
}

std::string Module::begin() {
    return mService.awaitConnected(kToBegin)
               ? "Voxtrel: the speech service is there"
               : "Voxtrel: there is no speech service yet; it is found when it comes";
}

std::string Module::setAudio(const Values& values) {
    for (const auto& [name, value] : values) {
        if (name == "audio_output_method" && value == "server") {
            return "the speech service plays its sound itself";
        }
    }
    return "";
}

void Module::setLogLevel(const Values& values) {
    for (const auto& [name, value] : values) {
        int level = 0;
        const auto result = std::from_chars(value.data(), value.data() + value.size(), level);
        if (name == "log_level" && result.ec == std::errc()) {
            mLog.setLevel(level);
        }
    }
}

void Module::set(const Values& values) {
    mWishes.take(values);
}

/// The one setting that there is for all clients of the service together, or not at all.
void Module::setPunctuation() {
    const bool isWanted = mWishes.wantsPunctuation();
    if (mConfig.punctuationForEveryone && mPunctuation != isWanted && mService.isConnected()) {
        if (mService.setVerbosity(isWanted ? 1 : 0)) {
            mPunctuation = isWanted;
        } else {
            mLog.write(Log::kTrouble, "the service did not change its punctuation");
        }
    }
}

std::vector<ListedVoice> Module::voices(const std::string& language, const std::string& variant) {
    return chosen(mService.voices(kToList), language, variant);
}

bool Module::speak(MessageKind kind, const std::string& text) {
    if (!mSpeaker.isIdle()) {
        return false;
    }
    setPunctuation();
    mSpeaker.start(messageOf(kind, text), mConfig.timeout, Speaker::Clock::now());
    return true;
}

Message Module::messageOf(MessageKind kind, const std::string& text) {
    Message message;
    message.style = mWishes.style();
    const std::string clean = repaired(text);
    if (kind == MessageKind::Character) {
        message.text = spelledCharacter(clean);
    } else if (kind == MessageKind::Text) {
        message.text = withoutProlog(clean);
        message.isSpelled = mWishes.isSpelled();
    } else {
        message.text = spoken(clean);
    }
    if (kind == MessageKind::TooLong) {
        message.trouble = "it has more than 1 MiB";
    }
    return message;
}

void Module::stop() {
    mSpeaker.stop(Speaker::Clock::now());
}

void Module::pause() {
    mSpeaker.pause(Speaker::Clock::now());
}

bool Module::debug(const std::string& path) {
    return mLog.open(path);
}

}  // namespace sd_voxtrel
