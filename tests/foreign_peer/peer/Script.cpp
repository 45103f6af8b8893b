// SPDX-License-Identifier: Apache-2.0
#include "tests/foreign_peer/peer/Script.h"

#include <algorithm>
#include <sstream>

namespace foreign {

namespace {

void add(const std::string& word, Image* image) {
    std::string value = word.size() > 2 ? word.substr(2) : "";
    std::replace(value.begin(), value.end(), '_', ' ');
    switch (word[0]) {
        case 'i':
            return image->int32(static_cast<int32_t>(std::stoll(value)));
        case 'f':
            return image->float32(std::stof(value));
        case 'c':
            return image->text(value);
        case 's':
            return image->text16(value);
        case 'n':
            return image->node(std::stoull(value));
        case 'h':
            return image->handle(static_cast<uint32_t>(std::stoul(value)));
        case 'w':
            return image->weakNode(std::stoull(value));
        case 'd':
            return image->descriptor(static_cast<uint32_t>(std::stoul(value)));
        case 'z':
            return image->zeros(std::stoul(value));
        default:
            return image->noObject();
    }
}

template <typename T>
std::string number(char letter, const std::optional<T>& value) {
    return value.has_value() ? letter + (":" + std::to_string(*value)) : "-";
}

std::string text(char letter, std::optional<std::string> value) {
    if (!value.has_value()) {
        return "-";
    }
    std::replace(value->begin(), value->end(), ' ', '_');
    return letter + (":" + *value);
}

std::string object(const std::optional<flat_binder_object>& value) {
    if (!value.has_value()) {
        return "-";
    }
    switch (value->hdr.type) {
        case BINDER_TYPE_HANDLE:
            return "h:" + std::to_string(value->handle);
        case BINDER_TYPE_BINDER:
            return "n:" + std::to_string(value->binder);
        default:
            return "0";
    }
}

std::string next(ImageReader& reader, char letter) {
    switch (letter) {
        case 'i':
            return number('i', reader.int32());
        case 'f':
            return number('f', reader.float32());
        case 'c':
            return text('c', reader.text());
        case 's':
            return text('s', reader.text16());
        default:
            return object(reader.object());
    }
}

}  // namespace

Words wordsOf(const std::string& line) {
    std::istringstream stream(line);
    Words words;
    for (std::string word; stream >> word;) {
        words.push_back(word);
    }
    return words;
}

Image imageOf(const Words& words, size_t first) {
    Image image;
    for (size_t i = first; i < words.size(); ++i) {
        add(words[i], &image);
    }
    return image;
}

std::string textOf(const Image& image, const std::string& layout) {
    ImageReader reader(image);
    std::string line;
    for (const char letter : layout) {
        line += ' ' + next(reader, letter);
    }
    return reader.left() == 0 ? line : line + " +" + std::to_string(reader.left());
}

std::string textOf(const Image& image) {
    ImageReader reader(image);
    std::string line;
    while (reader.left() >= sizeof(int32_t)) {
        line += ' ' + next(reader, reader.isAtObject() ? 'b' : 'i');
    }
    return line;
}

std::string textOf(const Answer& answer, const std::string& layout) {
    switch (answer.kind) {
        case Answer::Kind::Reply:
            return "reply" + textOf(answer.data, layout);
        case Answer::Kind::Status:
            return "status " + std::to_string(answer.status);
        case Answer::Kind::Sent:
            return "sent";
        case Answer::Kind::Failed:
            return "failed";
        default:
            return "dead";
    }
}

}  // namespace foreign
