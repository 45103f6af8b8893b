// SPDX-License-Identifier: Apache-2.0
#include "tools/SsmlChecker.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <iterator>

namespace voxtrelctl {
namespace {

constexpr std::string_view kBlanks = " \t\r\n";

constexpr std::string_view kEntities[] = {"amp", "lt", "gt", "quot", "apos"};

template <typename Table>
bool has(const Table& table, std::string_view wanted) {
    return std::find(std::begin(table), std::end(table), wanted) != std::end(table);
}

bool isBlank(char c) {
    return kBlanks.find(c) != std::string_view::npos;
}

bool isNameStart(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == ':' ||
           static_cast<uint8_t>(c) >= 0x80;
}

bool isNameCharacter(char c) {
    return isNameStart(c) || (c >= '0' && c <= '9') || c == '-' || c == '.';
}

bool isForbidden(char c) {
    return static_cast<uint8_t>(c) < 0x20 && !isBlank(c);
}

bool isCharacterNumber(std::string_view digits) {
    const bool isHex = !digits.empty() && digits.front() == 'x';
    digits.remove_prefix(isHex ? 1 : 0);
    uint32_t point = 0;
    const char* const end = digits.data() + digits.size();
    const auto [at, error] = std::from_chars(digits.data(), end, point, isHex ? 16 : 10);
    const bool isControl = point < 0x20 && point != '\t' && point != '\n' && point != '\r';
    const bool isSurrogate = point >= 0xD800 && point < 0xE000;
    return error == std::errc() && at == end && !isControl && !isSurrogate && point <= 0x10FFFF;
}

/// A name for a person: a text that holds none may be megabytes of anything.
std::string shown(std::string_view name) {
    constexpr size_t kMaxBytes = 40;
    std::string text(name.substr(0, kMaxBytes));
    while (name.size() > kMaxBytes && !text.empty() &&
           (static_cast<uint8_t>(name[text.size()]) & 0xC0U) == 0x80U) {
        text.pop_back();
    }
    return name.size() > kMaxBytes ? text + "..." : text;
}

}  // namespace

std::optional<SsmlChecker::Mistake> SsmlChecker::check() {
    (void)checkDocument();  // false exactly if there is a mistake
    return mMistake;
}

bool SsmlChecker::fail(size_t at, std::string what) {
    const std::string_view before = mText.substr(0, at);
    const size_t lineStart = before.rfind('\n') + 1;  // npos + 1 is 0
    const auto isLead = [](char c) { return (static_cast<uint8_t>(c) & 0xC0U) != 0x80U; };
    const auto lines = std::count(before.begin(), before.end(), '\n');
    const auto columns = std::count_if(before.begin() + static_cast<std::ptrdiff_t>(lineStart),
                                       before.end(), isLead);
    mMistake = {static_cast<size_t>(lines) + 1, static_cast<size_t>(columns) + 1, std::move(what)};
    return false;
}

bool SsmlChecker::checkDocument() {
    if (!startsWith("<speak") || (mText.size() > 6 && isNameCharacter(mText[6]))) {
        return fail(0, "a marked-up text begins with <speak>, with nothing before it");
    }
    do {
        if (!(here() == '<' ? checkMarkup() : checkText())) {
            return false;
        }
    } while (!atEnd());
    return mOpen.empty() || fail(mAt, "</" + shown(mOpen.back()) + "> is missing");
}

bool SsmlChecker::checkText() {
    const size_t end = std::min(mText.find('<', mAt), mText.size());
    for (; mAt < end; ++mAt) {
        if (isForbidden(here())) {
            return fail(mAt, "a control character");
        }
        if (mOpen.empty() && !isBlank(here())) {
            return fail(mAt, "text behind </speak>");
        }
        if (here() == '&' && !checkReference(end)) {
            return false;
        }
    }
    return true;
}

/// Leaves its end to be looked at as text.
bool SsmlChecker::checkReference(size_t end) {
    const size_t last = mText.substr(0, end).find_first_of("; \t\r\n&", mAt + 1);
    if (last == std::string_view::npos || mText[last] != ';') {
        return fail(mAt, "a bare &, which is written &amp;");
    }
    const std::string_view name = mText.substr(mAt + 1, last - mAt - 1);
    const bool isNumber = !name.empty() && name.front() == '#';
    if (isNumber ? !isCharacterNumber(name.substr(1)) : !has(kEntities, name)) {
        return fail(mAt, "&" + shown(name) + "; is not known");
    }
    mAt = last;
    return true;
}

bool SsmlChecker::checkMarkup() {
    if (startsWith("<!--")) {
        return skipTo(4, "-->", "a comment");
    }
    if (startsWith("<?")) {
        return skipTo(2, "?>", "an instruction");
    }
    if (startsWith("<![CDATA[") && !mOpen.empty()) {
        return skipTo(9, "]]>", "a CDATA section");
    }
    return startsWith("</") ? checkEndTag() : checkStartTag();
}

bool SsmlChecker::skipTo(size_t begin, std::string_view end, const char* what) {
    const size_t found = mText.find(end, mAt + begin);
    if (found == std::string_view::npos) {
        return fail(mAt, std::string(what) + " that does not end with " + std::string(end));
    }
    mAt = found + end.size();
    return true;
}

void SsmlChecker::skipBlanks() {
    mAt = std::min(mText.find_first_not_of(kBlanks, mAt), mText.size());
}

std::string_view SsmlChecker::takeName() {
    const size_t begin = mAt;
    if (isNameStart(here())) {
        while (!atEnd() && isNameCharacter(here())) {
            ++mAt;
        }
    }
    return mText.substr(begin, mAt - begin);
}

bool SsmlChecker::checkStartTag() {
    const size_t begin = mAt++;
    const std::string_view name = takeName();
    if (name.empty()) {
        return fail(begin, "a bare <, which is written &lt;");
    }
    if (begin != 0 && mOpen.empty()) {
        return fail(begin, "<" + shown(name) + "> behind </speak>");
    }
    if (!has(kElements, name) && name.find(':') == std::string_view::npos) {
        return fail(begin, "<" + shown(name) + "> is no element of SSML");
    }
    bool isEmpty = false;
    if (!checkAttributes(isEmpty)) {
        return false;
    }
    if (!isEmpty) {
        mOpen.push_back(name);
    }
    return true;
}

bool SsmlChecker::checkEndTag() {
    const size_t begin = mAt;
    mAt += 2;
    const std::string_view name = takeName();
    skipBlanks();
    if (here() != '>') {
        return fail(begin, "</" + shown(name) + " is not closed by >");
    }
    ++mAt;
    if (mOpen.empty() || mOpen.back() != name) {
        return fail(begin, "</" + shown(name) + "> where " +
                               (mOpen.empty() ? "nothing is open"
                                              : "</" + shown(mOpen.back()) + "> is due"));
    }
    mOpen.pop_back();
    return true;
}

bool SsmlChecker::checkAttributes(bool& isEmpty) {
    mAttributes.clear();
    for (;;) {
        const bool isApart = isBlank(here());
        skipBlanks();
        isEmpty = startsWith("/>");
        if (isEmpty || here() == '>') {
            mAt += isEmpty ? 2 : 1;
            break;
        }
        if (atEnd() || here() == '<') {
            return fail(mAt, "a tag is not closed by >");
        }
        if (!isApart) {
            return fail(mAt, "a blank is missing before an attribute");
        }
        if (!checkAttribute()) {
            return false;
        }
    }
    std::sort(mAttributes.begin(), mAttributes.end());
    const auto twice = std::adjacent_find(mAttributes.begin(), mAttributes.end());
    return twice == mAttributes.end() ||
           fail(static_cast<size_t>(std::next(twice)->data() - mText.data()),
                shown(*twice) + " is given twice");
}

bool SsmlChecker::checkAttribute() {
    const size_t begin = mAt;
    const std::string_view name = takeName();
    if (name.empty()) {
        return fail(begin, "an attribute without a name");
    }
    mAttributes.push_back(name);
    skipBlanks();
    if (here() != '=') {
        return fail(begin, shown(name) + " has no value");
    }
    ++mAt;
    skipBlanks();
    if (here() != '"' && here() != '\'') {
        return fail(mAt, "the value of " + shown(name) + " is not quoted");
    }
    return checkValue();
}

bool SsmlChecker::checkValue() {
    const size_t begin = mAt;
    const size_t end = mText.find_first_of(here() == '"' ? "\"<" : "'<", begin + 1);
    if (end == std::string_view::npos || mText[end] == '<') {
        return fail(begin, "a quote is not closed");
    }
    for (++mAt; mAt < end; ++mAt) {
        if (isForbidden(here())) {
            return fail(mAt, "a control character");
        }
        if (here() == '&' && !checkReference(end)) {
            return false;
        }
    }
    ++mAt;
    return true;
}

}  // namespace voxtrelctl
