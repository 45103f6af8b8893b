// SPDX-License-Identifier: Apache-2.0
#include "bridges/speech-dispatcher/Protocol.h"

#include <algorithm>

namespace sd_voxtrel {
namespace {

bool takePrefix(std::string& text, const std::string& prefix) {
    if (text.compare(0, prefix.size(), prefix) != 0) {
        return false;
    }
    text.erase(0, prefix.size());
    return true;
}

/// Takes what stands before the first of the separators.
std::string takeWord(std::string& text, const char* separators) {
    const std::size_t end = text.find_first_of(separators);
    std::string word = text.substr(0, end);
    text.erase(0, end == std::string::npos ? end : end + 1);
    return word;
}

std::string valueOrNothing(const std::string& value) {
    return value == "NULL" || value == "none" ? "" : value;
}

/// A field of a line: what would end it is a blank.
std::string fieldOf(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < ' '; }, ' ');
    return text;
}

}  // namespace

void Protocol::take(const std::string& line) {
    if (mBody == Body::None) {
        takeCommand(line);
    } else if (line == ".") {
        endBody();
    } else {
        takeBodyLine(line);
    }
}

void Protocol::takeCommand(const std::string& line) {
    std::string rest = line;
    if (beginBody(line)) {
        return;
    }
    if (line == "INIT") {
        mWrite("299-" + mCommands.begin() + "\n299 OK LOADED SUCCESSFULLY\n");
    } else if (line == "STOP") {
        mCommands.stop();
    } else if (line == "PAUSE") {
        mCommands.pause();
    } else if (line == "QUIT") {
        mHasEnded = true;
        mWrite("210 OK QUIT\n");
    } else if (takePrefix(rest, "LIST VOICES") && (rest.empty() || rest.front() == ' ')) {
        listVoices(rest);
    } else if (takePrefix(rest = line, "DEBUG ")) {
        debug(rest);
    } else {
        mWrite("300 ERR UNKNOWN COMMAND\n");
    }
}

bool Protocol::beginBody(const std::string& line) {
    struct Command {
        const char* name;
        Body body;
        MessageKind kind;
        const char* answer;
    };
    static constexpr Command kCommands[] = {
        {"AUDIO", Body::Audio, MessageKind::Text, "207 OK RECEIVING AUDIO SETTINGS\n"},
        {"LOGLEVEL", Body::LogLevel, MessageKind::Text, "207 OK RECEIVING LOGLEVEL SETTINGS\n"},
        {"SET", Body::Settings, MessageKind::Text, "203 OK RECEIVING SETTINGS\n"},
        {"SPEAK", Body::Message, MessageKind::Text, "202 OK RECEIVING MESSAGE\n"},
        {"CHAR", Body::Message, MessageKind::Character, "202 OK RECEIVING MESSAGE\n"},
        {"KEY", Body::Message, MessageKind::Key, "202 OK RECEIVING MESSAGE\n"},
        {"SOUND_ICON", Body::Message, MessageKind::SoundIcon, "202 OK RECEIVING MESSAGE\n"},
    };
    for (const Command& command : kCommands) {
        if (line == command.name) {
            mBody = command.body;
            mKind = command.kind;
            mText.clear();
            mValues.clear();
            mLength = 0;
            mWrite(command.answer);
            return true;
        }
    }
    return false;
}

void Protocol::takeBodyLine(const std::string& line) {
    mLength += line.size() + 1;
    if (mLength > kLongestBody) {
        return;
    }
    if (mBody == Body::Message) {
        mText += line == ".." ? "." : line;
        mText += '\n';
    } else if (const std::size_t equals = line.find('='); equals != std::string::npos) {
        mValues.emplace_back(line.substr(0, equals), line.substr(equals + 1));
    }
}

void Protocol::endBody() {
    const Body body = mBody;
    mBody = Body::None;
    if (body == Body::Message) {
        endMessage();
    } else if (body == Body::Audio) {
        endAudio();
    } else if (body == Body::LogLevel) {
        mCommands.setLogLevel(mValues);
        mWrite("203 OK LOGLEVEL SET\n");
    } else {
        mCommands.set(mValues);
        mWrite("203 OK SETTINGS RECEIVED\n");
    }
}

void Protocol::endMessage() {
    if (!mText.empty()) {
        mText.pop_back();
    }
    const bool isSpoken = mLength <= kLongestBody ? mCommands.speak(mKind, mText)
                                                  : mCommands.speak(MessageKind::TooLong, "");
    mWrite(isSpoken ? "200 OK SPEAKING\n" : "301 ERROR CANT SPEAK\n");
}

void Protocol::endAudio() {
    const std::string why = mCommands.setAudio(mValues);
    mWrite(why.empty() ? "203 OK AUDIO INITIALIZED\n" : "300-" + why + "\n300 MODULE ERROR\n");
}

void Protocol::listVoices(const std::string& arguments) {
    std::string rest = arguments.substr(arguments.empty() ? 0 : 1);
    const std::string language = valueOrNothing(takeWord(rest, " \t"));
    const std::string variant = valueOrNothing(takeWord(rest, ""));
    std::string answer;
    for (const ListedVoice& voice : mCommands.voices(language, variant)) {
        answer += "200-" + fieldOf(voice.name) + "\t" + fieldOf(voice.language) + "\t" +
                  fieldOf(voice.variant) + "\n";
    }
    mWrite(answer.empty() ? "304 CANT LIST VOICES\n" : answer + "200 OK VOICE LIST SENT\n");
}

void Protocol::debug(const std::string& arguments) {
    std::string path = arguments;
    if (arguments == "OFF") {
        (void)mCommands.debug("");
        mWrite("200 OK DEBUGGING OFF\n");
    } else if (takePrefix(path, "ON ") && !path.empty() && mCommands.debug(path)) {
        mWrite("200 OK DEBUGGING ON\n");
    } else {
        mWrite("300 ERR UNKNOWN COMMAND\n");
    }
}

}  // namespace sd_voxtrel
