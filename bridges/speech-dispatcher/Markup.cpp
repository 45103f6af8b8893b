// SPDX-License-Identifier: Apache-2.0
#include "bridges/speech-dispatcher/Markup.h"

#include <algorithm>
#include <charconv>
#include <cstdint>

#include "bridges/speech-dispatcher/Utf8.h"

namespace sd_voxtrel {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";
constexpr std::string_view kRoot = "<speak";
constexpr std::string_view kCdata = "<![CDATA[";
constexpr std::string_view kCdataEnd = "]]>";
constexpr std::string_view kSpellOut = "<say-as interpret-as=\"characters\">";
constexpr std::string_view kSpellOutEnd = "</say-as>";

struct Token {
    enum class Kind { Text, Reference, Tag, Ignored };
    Kind kind = Kind::Text;
    std::string_view source;
    std::string_view text;  ///< of `Text`
};

bool startsWith(std::string_view text, std::string_view prefix) {
    return text.substr(0, prefix.size()) == prefix;
}

std::string_view withoutLeadingBlanks(std::string_view text) {
    return text.substr(std::min(text.find_first_not_of(kBlanks), text.size()));
}

std::size_t lengthUpTo(std::string_view text, std::size_t from, std::string_view end) {
    const std::size_t at = text.find(end, from);
    return at == std::string_view::npos ? text.size() : at + end.size();
}

std::size_t doctypeLength(std::string_view text) {
    const std::size_t at = text.find_first_of("[>");
    const bool declares = at != std::string_view::npos && text[at] == '[';
    const std::size_t from = declares ? lengthUpTo(text, at, "]") : 0;
    return lengthUpTo(text, std::min(from, text.size()), ">");
}

/// The length of what is no part of the speech, or 0.
std::size_t ignoredLength(std::string_view text) {
    if (startsWith(text, "<!--")) {
        return lengthUpTo(text, 4, "-->");
    }
    if (startsWith(text, "<?")) {
        return lengthUpTo(text, 2, "?>");
    }
    return startsWith(text, "<!DOCTYPE") ? doctypeLength(text) : 0;
}

bool beginsName(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == ':' ||
           (static_cast<std::uint8_t>(c) & 0x80U) != 0;
}

/// The length of a tag up to its ">", or 0 if this "<" begins none. Neither a tag nor a quoted
/// value holds another "<", for a service as well; so nothing is looked at twice.
std::size_t tagLength(std::string_view text) {
    const std::size_t name = text.size() > 1 && text[1] == '/' ? 2 : 1;
    if (name >= text.size() || !beginsName(text[name])) {
        return 0;
    }
    char quote = '\0';
    for (std::size_t at = name; at < text.size() && text[at] != '<'; ++at) {
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

struct Entity {
    std::string_view name;
    const char* character;
};

constexpr Entity kEntities[] = {
    {"amp", "&"}, {"lt", "<"}, {"gt", ">"}, {"quot", "\""}, {"apos", "'"},
};

std::string numbered(std::string_view reference) {
    const bool isHex = reference.size() > 1 && reference[1] == 'x';
    reference.remove_prefix(isHex ? 2 : 1);
    std::uint32_t point = 0;
    const char* end = reference.data() + reference.size();
    const auto [at, error] = std::from_chars(reference.data(), end, point, isHex ? 16 : 10);
    const bool isCharacter = (point >= 0x20 && point < 0xD800) ||
                             (point >= 0xE000 && point <= 0x10FFFF) || point == '\t' ||
                             point == '\n' || point == '\r';
    return error == std::errc() && at == end && isCharacter ? utf8Of(point) : "";
}

/// The character that a reference at the begin of the text stands for; empty if it is none.
std::string characterOf(std::string_view text, std::size_t& length) {
    if (text.empty() || text.front() != '&') {
        return "";
    }
    // Up to the first that is no part of one: what follows another "&" is not looked at twice.
    const auto isPart = [](char c) { return c == '#' || beginsName(c) || (c >= '0' && c <= '9'); };
    const auto last = std::find_if_not(text.begin() + 1, text.end(), isPart);
    const auto end = static_cast<std::size_t>(last - text.begin());
    if (last == text.end() || *last != ';' || end < 2) {
        return "";
    }
    length = end + 1;
    const std::string_view name = text.substr(1, end - 1);
    if (name.front() == '#') {
        return numbered(name);
    }
    const auto* found = std::find_if(std::begin(kEntities), std::end(kEntities),
                                     [&](const Entity& each) { return each.name == name; });
    return found == std::end(kEntities) ? "" : found->character;
}

/// Takes the first token of the text. What is not well-formed is text, as services take it.
Token takeToken(std::string_view& rest) {
    Token token;
    std::size_t length = 0;
    const bool isMarkup = rest.front() == '<';
    if (isMarkup && startsWith(rest, kCdata)) {
        length = lengthUpTo(rest, kCdata.size(), kCdataEnd);
        token.text = rest.substr(kCdata.size(), rest.find(kCdataEnd) - kCdata.size());
    } else if (isMarkup && (length = ignoredLength(rest)) != 0) {
        token.kind = Token::Kind::Ignored;
    } else if (isMarkup && (length = tagLength(rest)) != 0) {
        token.kind = Token::Kind::Tag;
    } else if (!characterOf(rest, length).empty()) {
        token.kind = Token::Kind::Reference;
    } else {
        length = std::min(rest.find_first_of("<&", 1), rest.size());
        token.text = rest.substr(0, length);
    }
    token.source = rest.substr(0, length);
    rest.remove_prefix(length);
    return token;
}

std::string_view nameOf(std::string_view tag) {
    tag.remove_prefix(tag[1] == '/' ? 2 : 1);
    tag.remove_suffix(tag[tag.size() - 2] == '/' ? 2 : 1);
    return tag.substr(0, tag.find_first_of(kBlanks));
}

/// A value as it is meant: references are their characters, line ends are blanks.
std::string decoded(std::string_view value) {
    std::string out;
    while (!value.empty()) {
        std::size_t length = 1;
        std::string character = characterOf(value, length);
        if (character.empty()) {
            length = 1;
            character = value.front();
        }
        out += character;
        value.remove_prefix(length);
    }
    std::replace(out.begin(), out.end(), '\n', ' ');
    std::replace(out.begin(), out.end(), '\r', ' ');
    return out;
}

/// The value of "name" in a tag; empty if it has none.
std::string markNameOf(std::string_view tag) {
    std::string_view rest = withoutLeadingBlanks(tag.substr(1 + nameOf(tag).size()));
    for (std::size_t equals = 0; (equals = rest.find('=')) != std::string_view::npos;) {
        std::string_view attribute = rest.substr(0, equals);
        attribute = attribute.substr(0, attribute.find_last_not_of(kBlanks) + 1);
        rest = withoutLeadingBlanks(rest.substr(equals + 1));
        const bool isQuoted = !rest.empty() && (rest.front() == '"' || rest.front() == '\'');
        const std::size_t end = isQuoted ? rest.find(rest.front(), 1) : std::string_view::npos;
        if (end == std::string_view::npos) {
            break;
        }
        if (attribute == "name") {
            return decoded(rest.substr(1, end - 1));
        }
        rest = withoutLeadingBlanks(rest.substr(end + 1));
    }
    return "";
}

/// Elements that end a word.
bool isBorder(std::string_view tag) {
    constexpr std::string_view kBorders[] = {"p", "s", "break", "speak"};
    return std::find(std::begin(kBorders), std::end(kBorders), nameOf(tag)) != std::end(kBorders);
}

}  // namespace

bool isMarkedUp(std::string_view text) {
    constexpr std::string_view kEnds = " \t\r\n/>";
    return startsWith(text, kRoot) && text.size() > kRoot.size() &&
           kEnds.find(text[kRoot.size()]) != std::string_view::npos;
}

std::string_view withoutProlog(std::string_view text) {
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    std::string_view rest = text.substr(startsWith(text, kByteOrderMark) ? 3 : 0);
    while (true) {
        rest = withoutLeadingBlanks(rest);
        if (isMarkedUp(rest)) {
            return rest;
        }
        const std::size_t length = ignoredLength(rest);
        if (length == 0) {
            return text;
        }
        rest.remove_prefix(length);
    }
}

std::vector<std::string> markNames(std::string_view text) {
    std::vector<std::string> names;
    while (!text.empty()) {
        const Token token = takeToken(text);
        if (token.kind == Token::Kind::Tag && token.source[1] != '/' &&
            nameOf(token.source) == "mark") {
            names.push_back(markNameOf(token.source));
        }
    }
    return names;
}

std::string withoutMarkup(std::string_view text) {
    std::string plain;
    while (!text.empty()) {
        const Token token = takeToken(text);
        if (token.kind == Token::Kind::Text) {
            plain += token.text;
        } else if (token.kind == Token::Kind::Reference) {
            plain += decoded(token.source);
        } else if (token.kind == Token::Kind::Tag && isBorder(token.source) && !plain.empty() &&
                   plain.back() != ' ') {
            plain += ' ';
        }
    }
    return plain;
}

std::string escaped(std::string_view text) {
    std::string out;
    for (const char c : text) {
        const auto* found =
            std::find_if(std::begin(kEntities), std::end(kEntities),
                         [&](const Entity& each) { return each.character[0] == c; });
        if (found == std::end(kEntities)) {
            out += c;
        } else {
            out.append("&").append(found->name).append(";");
        }
    }
    return out;
}

std::string spelled(std::string_view text) {
    std::string out;
    if (isMarkedUp(text)) {
        const std::size_t begin = tagLength(text);
        const std::size_t end = std::max(std::min(text.rfind("</speak"), text.size()), begin);
        out.append(text.substr(0, begin)).append(kSpellOut);
        out.append(text.substr(begin, end - begin)).append(kSpellOutEnd).append(text.substr(end));
        return out;
    }
    while (!text.empty()) {
        const std::size_t length = std::max<std::size_t>(characterLength(text), 1);
        out.append(out.empty() ? "" : " ").append(text.substr(0, length));
        text.remove_prefix(length);
    }
    return out;
}

std::string repaired(std::string_view text) {
    constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
    std::string out;
    while (!text.empty()) {
        const std::size_t length = text.front() == '\0' ? 0 : characterLength(text);
        out.append(length == 0 ? kReplacement : text.substr(0, length));
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return out;
}

}  // namespace sd_voxtrel
