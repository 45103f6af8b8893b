// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_PLATFORM_SANITIZEROPTIONS_H
#define VOXTREL_TESTS_PLATFORM_SANITIZEROPTIONS_H

#include <cstdlib>
#include <string>

namespace probe {

/// Adds to what the environment says, as long as it lives.
class Options {
public:
    Options(const char* name, const char* more) : mName(name) {
        const char* usual = getenv(name);
        mUsual = usual != nullptr ? usual : "";
        setenv(name, (mUsual + ":" + more).c_str(), 1);
    }
    ~Options() { setenv(mName, mUsual.c_str(), 1); }
    Options(const Options&) = delete;
    Options& operator=(const Options&) = delete;

private:
    const char* mName;
    std::string mUsual;
};

/// For processes that fork children which exit. A sanitizer would let each sleep for a second at
/// its end, or take for lost what the parent's other threads hold, which the child does not have.
struct SanitizersLetChildrenExit {
    const Options thread{"TSAN_OPTIONS", "atexit_sleep_ms=0"};
    const Options address{"ASAN_OPTIONS", "detect_leaks=0"};
};

}  // namespace probe

#endif
