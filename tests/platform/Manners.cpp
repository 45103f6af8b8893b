// SPDX-License-Identifier: Apache-2.0
#include "tests/platform/Manners.h"

#include <stdlib.h>

namespace probe {

namespace {

std::string get(const char* name) {
    const char* value = getenv(name);
    return value != nullptr ? value : "";
}

void set(const char* name, const std::string& value) {
    if (value.empty()) {
        unsetenv(name);
    } else {
        setenv(name, value.c_str(), 1);
    }
}

}  // namespace

Environment::Environment(const std::string& manners, const std::string& seed)
    : mManners(get("VOXTREL_BINDER_MANNERS")), mSeed(get("VOXTREL_BINDER_SEED")) {
    set("VOXTREL_BINDER_MANNERS", manners);
    set("VOXTREL_BINDER_SEED", seed);
}

Environment::~Environment() {
    set("VOXTREL_BINDER_MANNERS", mManners);
    set("VOXTREL_BINDER_SEED", mSeed);
}

}  // namespace probe
