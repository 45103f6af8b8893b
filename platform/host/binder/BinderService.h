// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BINDER_BINDERSERVICE_H
#define VOXTREL_BINDER_BINDERSERVICE_H

#include "binder/IPCThreadState.h"
#include "binder/IServiceManager.h"
#include "binder/ProcessState.h"

namespace android {

/// Ways for a program to offer SERVICE, a binder with a static `getServiceName()` and a default
/// constructor.
template <typename SERVICE>
class BinderService {
public:
    static status_t publish(bool allowIsolated = false) {
        return defaultServiceManager()->addService(String16(SERVICE::getServiceName()),
                                                   new SERVICE(), allowIsolated);
    }

    static void publishAndJoinThreadPool(bool allowIsolated = false) {
        (void)publish(allowIsolated);  // a program that must know calls publish() itself
        ProcessState::self()->startThreadPool();
        IPCThreadState::self()->joinThreadPool();
    }

    static void instantiate() { (void)publish(); }
    static status_t shutdown() { return OK; }
};

}  // namespace android

#endif
