// SPDX-License-Identifier: Apache-2.0
#include "service/MarkupScanner.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

namespace voxtreld {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";
constexpr std::string_view kCdataStart = "<![CDATA[";
constexpr std::string_view kCdataEnd = "]]>";

bool startsWith(std::string_view text, std::string_view prefix) {
    return text.substr(0, prefix.size()) == prefix;
}

std::string_view withoutLeadingBlanks(std::string_view text) {
    return text.substr(std::min(text.find_first_not_of(kBlanks), text.size()));
}

bool isNameStart(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == ':' ||
           (static_cast<uint8_t>(c) & 0x80U) != 0;
}

/// The length of a section with this beginning and end, or of all the rest if the end is missing.
size_t lengthUpTo(std::string_view text, size_t from, std::string_view end) {
    const size_t at = text.find(end, from);
    return at == std::string_view::npos ? text.size() : at + end.size();
}

/// The length of a document type with whatever it declares.
size_t doctypeLength(std::string_view text) {
    const size_t at = text.find_first_of("[>");
    if (at == std::string_view::npos || text[at] == '>') {
        return at == std::string_view::npos ? text.size() : at + 1;
    }
    const size_t declared = lengthUpTo(text, at, "]");
    return lengthUpTo(text, std::min(declared, text.size()), ">");
}

/// The length of what is not spoken, such as a comment, or 0.
size_t ignoredLength(std::string_view text) {
    if (startsWith(text, "<!--")) {
        return lengthUpTo(text, 4, "-->");
    }
    if (startsWith(text, "<?")) {
        return lengthUpTo(text, 2, "?>");
    }
    return startsWith(text, "<!DOCTYPE") ? doctypeLength(text) : 0;
}

/// The length of a tag up to its ">", or 0 if this "<" begins none. Neither a tag nor a quoted
/// value holds another "<", so nothing is scanned twice.
size_t tagLength(std::string_view text) {
    const size_t name = text.size() > 1 && text[1] == '/' ? 2 : 1;
    if (name >= text.size() || !isNameStart(text[name])) {
        return 0;
    }
    char quote = '\0';
    for (size_t at = name; at < text.size() && text[at] != '<'; ++at) {
        const char c = text[at];
        if (quote != '\0') {
            quote = c == quote ? '\0' : quote;
        } else if (c == '>') {
            return at + 1;
        } else if (c == '"' || c == '\'') {
            quote = c;
        }
    }
    return 0;
}

MarkupTag tagOf(std::string_view source) {
    MarkupTag tag;
    source = source.substr(1, source.size() - 2);
    tag.closes = source.front() == '/' || source.back() == '/';
    tag.opens = source.front() != '/';
    source.remove_prefix(source.front() == '/' ? 1 : 0);
    source.remove_suffix(!source.empty() && source.back() == '/' ? 1 : 0);
    tag.name = source.substr(0, source.find_first_of(kBlanks));
    tag.attributes = source.substr(tag.name.size());
    return tag;
}

struct Entity {
    std::string_view name;
    const char* character;
};

constexpr Entity kEntities[] = {
    {"amp", "&"}, {"lt", "<"}, {"gt", ">"}, {"quot", "\""}, {"apos", "'"},
};

std::string utf8(uint32_t point) {
    const auto tail = [point](unsigned shift) {
        return static_cast<char>(0x80U | ((point >> shift) & 0x3FU));
    };
    if (point < 0x80) {
        return {static_cast<char>(point)};
    }
    if (point < 0x800) {
        return {static_cast<char>(0xC0U | (point >> 6U)), tail(0)};
    }
    if (point < 0x10000) {
        return {static_cast<char>(0xE0U | (point >> 12U)), tail(6), tail(0)};
    }
    return {static_cast<char>(0xF0U | (point >> 18U)), tail(12), tail(6), tail(0)};
}

/// The character of "#233" or "#xE9"; empty for one that no text may contain.
std::string numbered(std::string_view reference) {
    const bool isHex = reference.size() > 1 && reference[1] == 'x';
    reference.remove_prefix(isHex ? 2 : 1);
    uint32_t point = 0;
    const char* end = reference.data() + reference.size();
    const auto [at, error] = std::from_chars(reference.data(), end, point, isHex ? 16 : 10);
    const bool isCharacter = (point >= 0x20 && point < 0xD800) ||
                             (point >= 0xE000 && point <= 0x10FFFF) || point == '\t' ||
                             point == '\n' || point == '\r';
    return error == std::errc() && at == end && isCharacter ? utf8(point) : "";
}

std::string named(std::string_view name) {
    for (const Entity& entity : kEntities) {
        if (entity.name == name) {
            return entity.character;
        }
    }
    return "";
}

}  // namespace

std::string_view attributeOf(const MarkupTag& tag, std::string_view name) {
    std::string_view rest = withoutLeadingBlanks(tag.attributes);
    while (!rest.empty()) {
        const size_t equals = rest.find('=');
        if (equals == std::string_view::npos) {
            break;
        }
        std::string_view found = rest.substr(0, equals);
        found = found.substr(0, found.find_last_not_of(kBlanks) + 1);
        rest = withoutLeadingBlanks(rest.substr(equals + 1));
        const char quote = rest.empty() ? '\0' : rest.front();
        const size_t end =
            quote == '"' || quote == '\'' ? rest.find(quote, 1) : std::string_view::npos;
        if (end == std::string_view::npos) {
            break;
        }
        if (found == name) {
            return rest.substr(1, end - 1);
        }
        rest = withoutLeadingBlanks(rest.substr(end + 1));
    }
    return {};
}

std::string referencedCharacter(std::string_view text, size_t& length) {
    if (text.empty() || text.front() != '&') {
        return "";
    }
    // Up to the first that is no part of one: what follows another "&" is not scanned twice.
    const auto isPart = [](char c) { return c == '#' || isNameStart(c) || (c >= '0' && c <= '9'); };
    const auto last = std::find_if_not(text.begin() + 1, text.end(), isPart);
    const auto end = static_cast<size_t>(last - text.begin());
    if (last == text.end() || *last != ';' || end < 2) {
        return "";
    }
    const std::string_view reference = text.substr(1, end - 1);
    std::string character = reference.front() == '#' ? numbered(reference) : named(reference);
    if (!character.empty()) {
        length = end + 1;
    }
    return character;
}

bool MarkupScanner::next(MarkupToken& token) {
    if (mRest.empty()) {
        return false;
    }
    token = {};
    size_t length = 0;
    const bool isMarkup = mRest.front() == '<';
    if (isMarkup && startsWith(mRest, kCdataStart)) {
        length = lengthUpTo(mRest, kCdataStart.size(), kCdataEnd);
        token.text = mRest.substr(kCdataStart.size(), mRest.find(kCdataEnd) - kCdataStart.size());
    } else if (isMarkup && (length = ignoredLength(mRest)) != 0) {
        token.kind = MarkupToken::Kind::Ignored;
    } else if (isMarkup && (length = tagLength(mRest)) != 0) {
        token.kind = MarkupToken::Kind::Tag;
        token.tag = tagOf(mRest.substr(0, length));
    } else if (!(token.character = referencedCharacter(mRest, length)).empty()) {
        token.kind = MarkupToken::Kind::Character;
    } else {
        length = std::min(mRest.find_first_of("<&", 1), mRest.size());
        token.text = mRest.substr(0, length);
    }
    token.source = mRest.substr(0, length);
    mRest.remove_prefix(length);
    return true;
}

}  // namespace voxtreld
