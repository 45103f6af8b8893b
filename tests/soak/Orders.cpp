// SPDX-License-Identifier: Apache-2.0
#include "tests/soak/Orders.h"

#include <poll.h>
#include <unistd.h>

#include <iostream>
#include <string>

namespace soak {
namespace {

using std::chrono::milliseconds;

/// True when a line can be read within that time, or there are none any more.
bool hasOrder(milliseconds longest) {
    pollfd input = {STDIN_FILENO, POLLIN, 0};
    return std::cin.rdbuf()->in_avail() > 0 ||
           poll(&input, 1, static_cast<int>(longest.count())) > 0;
}

}  // namespace

void obeyOrders(const std::function<milliseconds()>& pause, const std::function<void()>& act) {
    bool isCalm = false;
    while (true) {
        if (!hasOrder(isCalm ? milliseconds(-1) : pause())) {
            act();
            continue;
        }
        std::string order;
        if (!std::getline(std::cin, order) || order == "end") {
            return;
        }
        isCalm = order == "calm";
        std::cout << order << std::endl;
    }
}

void confirmEnd() {
    std::cout << "end" << std::endl;
}

}  // namespace soak
