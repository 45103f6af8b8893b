// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_MARKUP_READING_H
#define VOXTREL_TESTS_MARKUP_READING_H

#include <string>
#include <string_view>

namespace voxtrel_test {

/// Where the service takes something of a marked-up text for other than what it is written as: a
/// tag or a reference for text, an end tag that closes nothing or something else, an element or a
/// comment that does not end. Empty where all is taken as written.
std::string misreadIn(std::string_view text);

}  // namespace voxtrel_test

#endif
