// SPDX-License-Identifier: Apache-2.0
#include "service/MarkupElements.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace voxtreld {
namespace {

struct SpokenAs {
    std::string_view written;
    std::string_view forEngine;
};

/// Engines differ on other values, and some fail on them.
constexpr SpokenAs kSpokenAs[] = {
    {"characters", "characters"}, {"spell-out", "characters"}, {"verbatim", "characters"},
    {"tts:char", "characters"},   {"digits", "digits"},        {"telephone", "telephone"},
};

struct Strength {
    std::string_view name;
    uint32_t milliseconds;
};

constexpr uint32_t kMediumMs = 300;
constexpr Strength kStrengths[] = {
    {"none", 0}, {"x-weak", 75}, {"weak", 150}, {"strong", 600}, {"x-strong", 1200},
};

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool isPlain(char c) {
    return isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
           std::string_view("+-.%:_").find(c) != std::string_view::npos;
}

/// Short, and neither markup, a path nor an absurd number.
bool isHarmless(std::string_view value) {
    constexpr size_t kLongest = 24;
    constexpr int kMaxDigits = 4;
    int digits = 0;
    for (const char c : value) {
        digits = isDigit(c) ? digits + 1 : 0;
        if (!isPlain(c) || digits > kMaxDigits) {
            return false;
        }
    }
    return !value.empty() && value.size() <= kLongest;
}

uint32_t strengthMs(std::string_view name) {
    for (const Strength& strength : kStrengths) {
        if (strength.name == name) {
            return strength.milliseconds;
        }
    }
    return kMediumMs;
}

}  // namespace

MarkupElement elementOf(std::string_view name) {
    for (const NamedMarkupElement& known : kMarkupElements) {
        if (known.name == name) {
            return known.element;
        }
    }
    return MarkupElement::Unknown;
}

std::string engineTag(const MarkupTag& tag) {
    std::string written = "<" + std::string(tag.name);
    for (const std::string_view name : kEngineAttributes) {
        const std::string_view value = attributeOf(tag, name);
        if (isHarmless(value)) {
            written.append(" ").append(name).append("=\"").append(value).append("\"");
        }
    }
    const std::string_view spokenAs = attributeOf(tag, "interpret-as");
    for (const SpokenAs& known : kSpokenAs) {
        if (known.written == spokenAs) {
            written.append(" interpret-as=\"").append(known.forEngine).append("\"");
        }
    }
    return written + ">";
}

uint32_t breakMs(const MarkupTag& tag, uint32_t maxMs) {
    const std::string_view time = attributeOf(tag, "time");
    double value = 0;
    const char* const end = time.data() + time.size();
    const auto [at, error] = std::from_chars(time.data(), end, value, std::chars_format::fixed);
    const std::string_view unit(at, static_cast<size_t>(end - at));
    if (error != std::errc() || !(value >= 0) || (unit != "s" && unit != "ms")) {
        return std::min(strengthMs(attributeOf(tag, "strength")), maxMs);
    }
    const double milliseconds = unit == "s" ? value * 1000 : value;
    return static_cast<uint32_t>(std::lround(std::min(milliseconds, static_cast<double>(maxMs))));
}

}  // namespace voxtreld
