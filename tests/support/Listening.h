// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SUPPORT_LISTENING_H
#define VOXTREL_TESTS_SUPPORT_LISTENING_H

#include <string>

namespace voxtrel_test {

/// Waits until somebody listens on the Unix socket at `path`. Throws std::runtime_error, with the
/// name of `who`, if nobody does within the limit.
/// @param type SOCK_SEQPACKET or SOCK_STREAM.
void awaitListener(const std::string& path, int type, const std::string& who);

}  // namespace voxtrel_test

#endif
