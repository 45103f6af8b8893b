// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SUPPORT_OTHERUSER_H
#define VOXTREL_TESTS_SUPPORT_OTHERUSER_H

#include <sys/types.h>

#include <string>
#include <vector>

namespace voxtrel_test {

/// Only root can play another user; anybody else plays itself, and tests expect what it may then.
bool canBeOthers();

/// A user that owns nothing: "nobody", where it can be played.
uid_t otherUser();

/// The command that runs `words` as that user, with no group but one of the same number. It runs a
/// copy of the program: the tree may lie where nobody but its owner may go.
std::vector<std::string> asUser(uid_t user, const std::vector<std::string>& words);

}  // namespace voxtrel_test

#endif
