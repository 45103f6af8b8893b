// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SUPPORT_EVENTUALLY_H
#define VOXTREL_TESTS_SUPPORT_EVENTUALLY_H

#include <chrono>
#include <thread>

namespace voxtrel_test {

/// Looks again and again whether `condition` holds, up to 60 s; what it said last. For what another
/// process brings about and does not tell.
template <typename Condition>
bool eventually(Condition condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

}  // namespace voxtrel_test

#endif
