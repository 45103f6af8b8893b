// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SOAK_ORDERS_H
#define VOXTREL_TESTS_SOAK_ORDERS_H

#include <chrono>
#include <functional>

namespace soak {

/// What a process with a single thread does between its orders, which are those of ClientLife:
/// acts, after pauses of that length, unless it is to be calm.
/// @return once it is to end.
void obeyOrders(const std::function<std::chrono::milliseconds()>& pause,
                const std::function<void()>& act);

/// Answers the last order.
void confirmEnd();

}  // namespace soak

#endif
