// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_VOXTREL_PROCESS_CALLS_H
#define VOXTREL_TESTS_VOXTREL_PROCESS_CALLS_H

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "voxtrel/Client.h"

namespace voxtrel_test {

/// A function of the client that waits for the service.
struct Call {
    const char* name;
    std::function<voxtrel::Error(voxtrel::Client&, voxtrel::Milliseconds deadline)> make;
};

inline void PrintTo(const Call& call, std::ostream* out) {
    *out << call.name;
}

/// All of them.
const std::vector<Call>& waitingCalls();

}  // namespace voxtrel_test

#endif
