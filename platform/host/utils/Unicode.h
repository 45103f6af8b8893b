// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_UTILS_UNICODE_H
#define VOXTREL_UTILS_UNICODE_H

#include <cstddef>

extern "C" {

/// Number of units before the NUL.
size_t strlen16(const char16_t* s);

/// Below 0, 0 or above 0, as the first `n1` units of `s1` sort before, with or after the first `n2`
/// of `s2`, unit by unit; a string that ends earlier sorts first. NULs count as any other unit.
int strzcmp16(const char16_t* s1, size_t n1, const char16_t* s2, size_t n2);
}

#endif
