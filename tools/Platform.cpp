// SPDX-License-Identifier: Apache-2.0
#include "tools/Platform.h"

#include <cstdlib>
#include <iostream>
#include <utility>

#include <binder/IServiceManager.h>
#include <binder/ProcessState.h>

#include "tools/EventQueue.h"

namespace voxtrelctl {
namespace {

bool gThreadIsInCall = false;

}  // namespace

void startBinderThreads() {
    (void)EventQueue::instance();  // from here on the signals are its business in every thread
    android::ProcessState::self()->startThreadPool();
}

android::sp<android::IBinder> findService() {
    // getService may wait for the service, and who calls this decides itself how long to wait.
    return android::defaultServiceManager()->checkService(TTS::ITextToSpeechFestival::descriptor);
}

bool isServiceRegistered() {
    return findService() != nullptr;
}

bool isServiceManagerThere() {
    const auto manager = android::ProcessState::self()->getContextObject(nullptr);
    return manager != nullptr && manager->pingBinder() == android::OK;
}

void settle(std::thread asker, bool answered) {
    if (answered) {
        asker.join();
        return;
    }
    asker.detach();
    gThreadIsInCall = true;
}

int leave(int status) {
    if (gThreadIsInCall) {
        std::cout.flush();
        std::_Exit(status);
    }
    return status;
}

void quietLog(bool verbose) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread has been started
    (void)setenv("VOXTREL_LOG_LEVEL", verbose ? "2" : "-1", 0);
}

}  // namespace voxtrelctl
