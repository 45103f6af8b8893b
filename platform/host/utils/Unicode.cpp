// SPDX-License-Identifier: Apache-2.0
#include "utils/Unicode.h"

#include <string_view>

size_t strlen16(const char16_t* s) {
    return std::u16string_view(s).size();
}

int strzcmp16(const char16_t* s1, size_t n1, const char16_t* s2, size_t n2) {
    return std::u16string_view(s1, n1).compare(std::u16string_view(s2, n2));
}
