// SPDX-License-Identifier: Apache-2.0
#include <atomic>
#include <cstdlib>
#include <thread>
#include <vector>

#include "check/Peer.h"
#include "check/Row.h"

namespace check {
namespace {

using android::sp;
using Clock = std::chrono::steady_clock;
using Search = sp<android::IBinder> (android::IServiceManager::*)(const android::String16&) const;

constexpr std::chrono::milliseconds::rep kAtOnce = 1000;

// An early manager does not know the ping, and answers it with an error.
bool answers(const sp<android::IBinder>& manager) {
    const android::status_t status =
        manager != nullptr ? manager->pingBinder() : android::DEAD_OBJECT;
    return status != android::DEAD_OBJECT && status != android::FAILED_TRANSACTION;
}

/// Throws CannotCheck where no service manager answers.
sp<android::IBinder> contextObject() {
    const sp<android::IBinder> context = android::ProcessState::self()->getContextObject(nullptr);
    if (!answers(context)) {
        throw CannotCheck("no service manager answers");
    }
    return context;
}

Result absentName(Search search) {
    const sp<android::IServiceManager> manager = android::defaultServiceManager();
    (void)contextObject();
    const Clock::time_point begin = Clock::now();
    const bool isNull =
        (manager.get()->*search)(android::String16("voxtrel.platform.check.absent")) == nullptr;
    const auto took =
        std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin).count();
    const std::string what =
        std::string(isNull ? "null" : "something") + " after " + std::to_string(took) + " ms";
    return isNull ? prefer(took < kAtOnce, what) : require(false, what);
}

Result absentNames() {
    return absentName(&android::IServiceManager::getService);
}

Result absentNamesChecked() {
    return absentName(&android::IServiceManager::checkService);
}

Result serviceManager() {
    // A runtime that waits for one without end runs into the deadline.
    const bool isThere = android::defaultServiceManager() != nullptr;
    return require(isThere, isThere ? "answers" : "null");
}

Result restartedManager() {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing in this process sets it
    const char* command = std::getenv("VOXTREL_PLATFORM_CHECK_RESTART");
    if (command == nullptr || *command == '\0') {
        return {Verdict::Untried, "needs --restart-manager"};
    }
    const sp<android::IBinder> old = contextObject();
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread changes what signals do
    if (std::system(command) != 0) {
        throw CannotCheck(std::string("'") + command + "' failed");
    }
    const Deadline end = soon();
    while (Clock::now() < end) {
        const sp<android::IBinder> context =
            android::ProcessState::self()->getContextObject(nullptr);
        if (context != old && answers(context)) {
            return prefer(true, "a reference to the new one");
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return prefer(false, "no reference to the new one within 5 s");
}

Result logLines() {
    constexpr int kThreads = 4;
    std::atomic<int> ready{0};
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&ready, i] {
            ++ready;
            while (ready < kThreads) {
                std::this_thread::yield();
            }
            for (int line = 0; line < 25; ++line) {
                // The level of the library's warnings, which a platform is likely to print.
                dbgPrint(0, "voxtrel-platform-check: %s %d of thread %d\n", "line", line, i);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    return require(true, "4 threads wrote 25 lines each at once");
}

Result languageFilter() {
    const char* text = INI_LANGUAGE_WITH_VOICES;
    if (text == nullptr) {
        return require(false, "null");
    }
    const std::string before = text;
    (void)android::ProcessState::self();
    const bool isSame = before == INI_LANGUAGE_WITH_VOICES;
    return prefer(isSame, isSame ? std::to_string(before.size()) + " characters" : "it changed");
}

}  // namespace

Rows nameRows() {
    return {
        {"absent-names", "answers null when there is no such service",
         "one that waits for the service makes each of the 31 attempts that much longer: over the "
         "driver up to 5 s",
         absentNames},
        {"absent-names-checked", "answers null at once when there is no such service",
         "its thread waits in it; calls of the application end at their deadlines all the same",
         absentNamesChecked},
        {"service-manager", "answers, also when there is no service manager",
         "over the driver it waits for one without end: connect waits as long, and holds "
         "Clientmutex",
         serviceManager},
        {"restarted-manager", "a reference to the manager that was started after it, or null",
         "a runtime that keeps the dead one's gives DEAD_OBJECT for each new link: after 10 s the "
         "service ends with status 1, for whoever starts it to start it again",
         restartedManager},
        {"log-lines", "C linkage; may be called from any thread",
         "nothing links; lines are lost, or the process crashes, where two threads log at once",
         logLines},
        {"language-filter", "NUL-terminated text, a pointer or an array; does not change",
         "a filter that changes is seen at the next query", languageFilter},
    };
}

}  // namespace check
