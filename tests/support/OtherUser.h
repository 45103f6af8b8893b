// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SUPPORT_OTHERUSER_H
#define VOXTREL_TESTS_SUPPORT_OTHERUSER_H

#include <sys/types.h>
#include <unistd.h>

#include <string>
#include <vector>

namespace voxtrel_test {

/// Only root can play another user; anybody else plays itself, and tests expect what it may then.
inline bool canBeOthers() {
    return geteuid() == 0;
}

/// A user that owns nothing: "nobody", where it can be played.
inline uid_t otherUser() {
    return canBeOthers() ? 65534 : geteuid();
}

/// The command that runs `words` as that user, with no group but one of the same number.
inline std::vector<std::string> asUser(uid_t user, const std::vector<std::string>& words) {
    if (user == geteuid()) {
        return words;
    }
    const std::string number = std::to_string(user);
    std::vector<std::string> command = {"/usr/bin/env", "setpriv", "--reuid=" + number,
                                        "--regid=" + number, "--clear-groups"};
    command.insert(command.end(), words.begin(), words.end());
    return command;
}

}  // namespace voxtrel_test

#endif
