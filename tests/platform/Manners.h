// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_PLATFORM_MANNERS_H
#define VOXTREL_TESTS_PLATFORM_MANNERS_H

#include <cstdint>
#include <string>

#include "tests/platform/ProbeTest.h"

namespace probe {

/// Sets variables of the environment for the processes that are started while it lives; an empty
/// value unsets one.
class Environment {
public:
    Environment(const std::string& manners, const std::string& seed);
    ~Environment();
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

private:
    const std::string mManners;
    const std::string mSeed;
};

inline constexpr uint32_t kSeed = 7;

/// A service manager, a process with a test node, and whatever else the test starts, all of them in
/// the manners of a driver; this process, which holds the node, keeps the default ones.
class DriverTest : private Environment, public ProbeTest {
protected:
    DriverTest() : Environment("driver", std::to_string(kSeed)) {}
};

}  // namespace probe

#endif
