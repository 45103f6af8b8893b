// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_UTILS_STRING16_H
#define VOXTREL_UTILS_STRING16_H

#include <cstddef>
#include <string>

#include "utils/Unicode.h"

namespace android {

/// An immutable-by-habit string of 16-bit units, the text type of descriptors and service names.
class String16 {
public:
    String16() = default;
    /// From UTF-8; a malformed byte becomes U+FFFD. `text` must not be null.
    explicit String16(const char* text);
    String16(const char* text, size_t length);
    explicit String16(const char16_t* text) : mText(text) {}
    String16(const char16_t* text, size_t length) : mText(text, length) {}

    /// NUL-terminated, valid as long as the string is.
    operator const char16_t*() const { return mText.c_str(); }  // NOLINT: public API
    size_t size() const { return mText.size(); }

    bool operator==(const String16& other) const { return mText == other.mText; }
    bool operator!=(const String16& other) const { return mText != other.mText; }
    bool operator<(const String16& other) const { return mText < other.mText; }

private:
    std::u16string mText;
};

}  // namespace android

#endif
