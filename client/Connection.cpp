// SPDX-License-Identifier: Apache-2.0
#include <unistd.h>

#include "client/SharedConnection.h"
#include "client/TTSClientPrivate.h"
#include "client/internal/Log.h"
#include "client/internal/MutexLock.h"
#include "client/internal/Operations.h"
#include "vocabulary/Status.h"

namespace TTS {
namespace {

constexpr int kSearchAttempts = 31;
constexpr uint32_t kSearchPause = 500000;  // microseconds
constexpr int kCapabilityCalls = 1201;
constexpr uint32_t kCapabilityPause = 50000;  // microseconds

/// The one place where the client waits.
void pauseMicroseconds(uint32_t microseconds) {
    (void)usleep(microseconds);  // a signal may end it early, which does no harm
}

void ignoreEvent(unsigned int, unsigned int, unsigned int) {}

android::sp<android::IBinder> findService(const std::string& appName)
    VOXTREL_REQUIRES(Clientmutex) {
    const android::sp<android::IServiceManager> manager = android::defaultServiceManager();
    android::sp<android::IBinder> found;
    for (int attempt = 1; found == nullptr && attempt <= kSearchAttempts; ++attempt) {
        if (attempt > 1) {
            dbgPrint(kLogWarning,
                     VOXTREL_DEBUG_LINE("TTS Client [%s] Retry ipc to connect TTS Service. (Is "
                                        "Voxtrel running?)"),
                     appName.c_str());
            pauseMicroseconds(kSearchPause);
        }
        if (manager != nullptr) {
            found = manager->getService(ITextToSpeechFestival::descriptor);
        }
    }
    return found;
}

void waitForCapabilities(const android::sp<ITextToSpeechFestival>& service,
                         Capabilities& capabilities) VOXTREL_REQUIRES(Clientmutex) {
    for (int call = 1; call <= kCapabilityCalls; ++call) {
        if (call > 1) {
            pauseMicroseconds(kCapabilityPause);
        }
        service->getCapabilities(capabilities);
        if (capabilities.ready) {
            return;
        }
    }
    dbgPrint(kLogWarning, VOXTREL_DEBUG_LINE("TTS capabilities is NOT ready !!"));
}

/// Joins the service behind `binder`. Uses copies of the shared pointers throughout, because
/// another client's constructor or a death notice may empty them meanwhile.
void join(TTSClientPrivate& client, const android::sp<android::IBinder>& binder)
    VOXTREL_REQUIRES(Clientmutex) {
    gDeathNotifier = new DeathNotifier;
    (void)binder->linkToDeath(gDeathNotifier, nullptr, 0);  // a dead service fails the calls below
    const android::sp<Callback> callback =
        new Callback(client.mCbFunc != nullptr ? client.mCbFunc : ignoreEvent);
    TTSClientPrivate::m_cb = callback;
    const android::sp<ITextToSpeechFestival> service = ITextToSpeechFestival::asInterface(binder);
    gttsbinder = service;
    service->registerCallback(client.mPid, callback);
    waitForCapabilities(service, client.mCapabilities);
}

/// What `getService` does; the result is read under the mutex.
android::sp<ITextToSpeechFestival> findAndJoin(TTSClientPrivate& client) {
    const MutexLock lock(Clientmutex);
    if (gttsbinder == nullptr) {
        const android::sp<android::IBinder> binder = findService(client.mAppName);
        if (binder != nullptr) {
            join(client, binder);
        }
    }
    return gttsbinder;
}

}  // namespace

android::sp<ITextToSpeechFestival>& TTSClientPrivate::getService() {
    (void)findAndJoin(*this);  // callers get the shared pointer itself
    return gttsbinder;
}

int TTSClientPrivate::connect() {
    traceCall("connect");
    if (findAndJoin(*this) == nullptr) {
        if (!mAppName.empty()) {
            dbgPrint(kLogWarning,
                     VOXTREL_DEBUG_LINE("TTS Client [%s] (Abort) ipc connect TTS Service Fail!!! "
                                        "Please check Voxtrel is running or disable TTS_SUPPORT"),
                     mAppName.c_str());
        }
        return STATUS_SERVICE_NOT_FOUND;
    }
    const android::sp<Callback> callback = m_cb;
    mCbDeathNotifier = new CbDeathNotifier;
    if (callback != nullptr) {  // empty after disconnect
        (void)android::IInterface::asBinder(callback)->linkToDeath(
            mCbDeathNotifier, nullptr, 0);  // the callback is local, and local binders refuse
    }
    if (!mCapabilities.permitted) {
        dbgPrint(kLogWarning, VOXTREL_DEBUG_LINE("TTS Client : permission denied"));
        return STATUS_PERMISSION_DENIED;
    }
    return STATUS_OK;
}

int TTSClientPrivate::disconnect() {
    traceCall("disconnect");
    const android::sp<ITextToSpeechFestival> service = currentService();
    if (service == nullptr) {
        return STATUS_NO_SERVICE;
    }
    const int result = service->deregisterCallback(mPid);
    const android::sp<Callback> callback = m_cb;
    if (callback != nullptr && mCbDeathNotifier != nullptr) {
        (void)android::IInterface::asBinder(callback)->unlinkToDeath(
            mCbDeathNotifier, nullptr, 0, nullptr);  // a refused link has nothing to undo
    }
    mCbDeathNotifier.clear();
    m_cb.clear();
    android::IPCThreadState::self()->flushCommands();
    return result;
}

}  // namespace TTS
