// SPDX-License-Identifier: Apache-2.0
#include "support/Manners.h"

#include <sys/random.h>

#include <cerrno>
#include <cstdlib>
#include <limits>
#include <string>

#include "support/Log.h"

namespace android::transport {

namespace {

constexpr const char* kMannersVariable = "VOXTREL_BINDER_MANNERS";
constexpr const char* kSeedVariable = "VOXTREL_BINDER_SEED";

std::string environment(const char* name) {
    const char* value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): while loading
    return value != nullptr ? value : "";
}

bool parse(const std::string& text, uint32_t* out) {
    if (text.empty() || text.find_first_not_of("0123456789") != std::string::npos) {
        return false;
    }
    errno = 0;
    const unsigned long long value = std::strtoull(text.c_str(), nullptr, 10);
    *out = static_cast<uint32_t>(value);
    return errno == 0 && value <= std::numeric_limits<uint32_t>::max();
}

uint32_t draw() {
    uint32_t seed = 0;
    while (getrandom(&seed, sizeof(seed), 0) != static_cast<ssize_t>(sizeof(seed))) {
    }
    return seed;
}

uint32_t takeSeed() {
    const std::string given = environment(kSeedVariable);
    uint32_t seed = 0;
    if (parse(given, &seed)) {
        return seed;
    }
    if (!given.empty()) {
        logLine("%s is \"%s\", which is no number from 0 to 4294967295: a seed is drawn",
                kSeedVariable, given.c_str());
    }
    seed = draw();
    // So that one seed repeats what this program and those that it starts do together.
    // NOLINTNEXTLINE(concurrency-mt-unsafe): while loading
    (void)setenv(kSeedVariable, std::to_string(seed).c_str(), 1);
    logLine("in the manners of a driver: %s=%u makes the same one-way calls be overtaken again",
            kSeedVariable, seed);
    return seed;
}

Manners readManners() {
    const std::string asked = environment(kMannersVariable);
    if (asked == "driver") {
        return {true, takeSeed()};
    }
    if (!asked.empty()) {
        logLine(
            "%s is \"%s\", which is unknown: the default manners hold; the others are "
            "\"driver\"",
            kMannersVariable, asked.c_str());
    }
    return {};
}

}  // namespace

const Manners gManners = readManners();

}  // namespace android::transport
