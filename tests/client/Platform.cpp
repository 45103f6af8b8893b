// SPDX-License-Identifier: Apache-2.0
#include "tests/client/Platform.h"

#include <pthread.h>
#include <ttscommon/ttscommon.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <utility>

#include "client/SharedConnection.h"
#include "client/TTSClientPrivate.h"
#include "tests/support/Journal.h"

namespace platform {
namespace {

android::sp<android::IServiceManager> serviceManager;
std::function<void()> pauseAction;
std::function<void()> logAction;
std::function<void(const std::string&)> mutexAction;

void act(const std::function<void()>& action) {
    if (action != nullptr) {
        action();
    }
}

void actOn(const pthread_mutex_t* mutex, const char* what) {
    if (mutex == &TTS::Clientmutex.m && mutexAction != nullptr) {
        mutexAction(what);
    }
}

std::string nameOf(const android::IBinder::DeathRecipient* recipient) {
    return dynamic_cast<const TTS::TTSClientPrivate::CbDeathNotifier*>(recipient) != nullptr
               ? "CbDeathNotifier"
               : "another";
}

}  // namespace

std::string logged(int level, const std::string& format, const std::string& text) {
    return "log " + std::to_string(level) + " <" + format + "> " + text;
}

void giveServiceManager(const android::sp<android::IServiceManager>& manager) {
    serviceManager = manager;
}

void onPause(std::function<void()> action) {
    pauseAction = std::move(action);
}

void onLog(std::function<void()> action) {
    logAction = std::move(action);
}

void onMutex(std::function<void(const std::string&)> action) {
    mutexAction = std::move(action);
}

}  // namespace platform

void dbgPrint(int level, const char* fmt, ...) {
    platform::act(platform::logAction);
    va_list arguments;
    va_start(arguments, fmt);
    char text[4096];
    (void)vsnprintf(text, sizeof text, fmt, arguments);
    va_end(arguments);
    support::note(platform::logged(level, fmt, text));
}

extern "C" int usleep(useconds_t microseconds) {
    support::note("pause " + std::to_string(microseconds));
    platform::act(platform::pauseAction);
    return 0;
}

// The names are the linker's, for calls taken over with --wrap.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" int __real_pthread_mutex_lock(pthread_mutex_t* mutex);
extern "C" int __real_pthread_mutex_unlock(pthread_mutex_t* mutex);

extern "C" int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex) {
    platform::actOn(mutex, "lock");
    return __real_pthread_mutex_lock(mutex);
}

extern "C" int __wrap_pthread_mutex_unlock(pthread_mutex_t* mutex) {
    platform::actOn(mutex, "unlock");
    return __real_pthread_mutex_unlock(mutex);
}
// NOLINTEND(bugprone-reserved-identifier)

namespace android {

sp<IServiceManager> defaultServiceManager() {
    return platform::serviceManager;
}

status_t BBinder::linkToDeath(const sp<DeathRecipient>& recipient, void* cookie, uint32_t flags) {
    const bool plain = cookie == nullptr && flags == 0;
    support::note("link " + platform::nameOf(recipient.get()) + (plain ? "" : " with more"));
    return INVALID_OPERATION;
}

status_t BBinder::unlinkToDeath(const wp<DeathRecipient>& recipient, void* cookie, uint32_t flags,
                                wp<DeathRecipient>* outRecipient) {
    const bool plain = cookie == nullptr && flags == 0 && outRecipient == nullptr;
    support::note("unlink " + platform::nameOf(recipient.promote().get()) +
                  (plain ? "" : " with more"));
    return INVALID_OPERATION;
}

void IPCThreadState::flushCommands() {
    support::note("flush");
}

}  // namespace android
