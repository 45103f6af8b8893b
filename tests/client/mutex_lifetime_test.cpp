// SPDX-License-Identifier: Apache-2.0
#include <pthread.h>

#include <memory>
#include <string>
#include <vector>

#include "client/Mutex.h"
#include "tests/client/ClientTest.h"

namespace {

struct Call {
    std::string operation;
    const pthread_mutex_t* mutex;
    bool plain;  // no attributes given
};

std::vector<Call>* gCalls = nullptr;

void noteCall(const char* operation, const pthread_mutex_t* mutex, bool plain) {
    if (gCalls != nullptr) {
        gCalls->push_back({operation, mutex, plain});
    }
}

}  // namespace

// The names are the linker's, for calls taken over with --wrap.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" int __real_pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t* kind);
extern "C" int __real_pthread_mutex_destroy(pthread_mutex_t* mutex);

extern "C" int __wrap_pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t* kind) {
    noteCall("init", mutex, kind == nullptr);
    return __real_pthread_mutex_init(mutex, kind);
}

extern "C" int __wrap_pthread_mutex_destroy(pthread_mutex_t* mutex) {
    noteCall("destroy", mutex, true);
    return __real_pthread_mutex_destroy(mutex);
}
// NOLINTEND(bugprone-reserved-identifier)

namespace {

TEST(AMutex, IsInitialisedPlainAndDestroyedOnce) {
    std::vector<Call> calls;
    gCalls = &calls;
    auto mutex = std::make_unique<TTS::Mutex>();
    const pthread_mutex_t* const contained = &mutex->m;
    mutex.reset();
    gCalls = nullptr;
    ASSERT_EQ(2U, calls.size());
    EXPECT_EQ("init", calls[0].operation);
    EXPECT_EQ("destroy", calls[1].operation);
    for (const Call& call : calls) {
        EXPECT_EQ(contained, call.mutex);
        EXPECT_TRUE(call.plain);
    }
}

}  // namespace
