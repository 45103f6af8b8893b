// SPDX-License-Identifier: Apache-2.0
// A complete speech service with no voice: it prints what it would say.
#include <binder/IPCThreadState.h>
#include <binder/IServiceManager.h>
#include <binder/ProcessState.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <mutex>

#include "ipc/BnTextToSpeechFestival.h"
#include "vocabulary/Events.h"
#include "vocabulary/Status.h"

using namespace TTS;
using Key = VOXTRELAPI_GCONF;
using Guard = std::lock_guard<std::mutex>;

struct Client {
    android::sp<ICallback> callback;
    uid_t user;
};

class Service : public BnTextToSpeechFestival, public android::IBinder::DeathRecipient {
    // Requests come on several threads: here, one at a time. No text takes time, so none ever
    // waits.
    android::status_t onTransact(uint32_t code, const android::Parcel& data, android::Parcel* reply,
                                 uint32_t flags) override {
        const Guard guard(mMutex);
        return BnTextToSpeechFestival::onTransact(code, data, reply, flags);
    }
    int say(unsigned pid, unsigned id, const std::string& text, unsigned, float, unsigned, unsigned,
            unsigned, float, EN_VOXTREL_LANGUAGE) override {
        return utter(pid, id, STATUS_OK, text);
    }
    int silence(unsigned pid, unsigned id, unsigned milliseconds, unsigned) override {
        return utter(pid, id, milliseconds > 60000 ? STATUS_BAD_PARAMETER : STATUS_OK, "(pause)");
    }
    int stopAndFlush(unsigned pid, unsigned) override { return changed(pid, STATUS_OK); }

    // Nothing can be set here: every switch is off, so that clients do not try.
    int setEnable2(unsigned pid, Key key, bool) override {
        const int answer = key == 1 ? STATUS_OK : STATUS_NOT_SUPPORTED;  // 1 switches speech on
        return changed(pid, key > GCONF_LANGUAGE ? STATUS_BAD_PARAMETER : answer);
    }
    int setEnable(unsigned, bool) override { return STATUS_OK; }  // arrives as setEnable2
    bool enabled() const override { return true; }
    int enabled2(unsigned, Key, void*) override { return STATUS_OK; }
    int setGlobalConfig(unsigned, Key, void*) override { return STATUS_NOT_SUPPORTED; }
    int globalConfig(unsigned, Key key, void* out) override {
        const float real = 100;
        const uint32_t whole = 100;
        const bool isReal = key == GCONF_PITCH || key == GCONF_VOLUME;
        const void* number = isReal ? static_cast<const void*>(&real) : &whole;
        key == GCONF_LANGUAGE ? std::strcpy(static_cast<char*>(out), "en_US")
                              : std::memcpy(out, number, 4);
        return STATUS_OK;
    }
    int setGlobalRate(unsigned, unsigned) override { return STATUS_NOT_SUPPORTED; }
    int globalRate() override { return 100; }
    int setVerbosity(unsigned, int) override { return STATUS_NOT_SUPPORTED; }
    int verbosity() override { return 0; }
    int factoryReset(unsigned pid) override { return changed(pid, STATUS_OK); }
    int getCapabilities(Capabilities& can) override {
        can.languages = {true, false, false, false, false};  // English; five and five
        can.voicesNum = {1, 0, 0, 0, 0};
        can.voices = {{LANG_EN_US, 1, "printer"}};
        can.ready = can.permitted = true;
        return STATUS_OK;
    }

    int registerCallback(unsigned pid, const android::sp<ICallback>& callback) override {
        const auto* call = android::IPCThreadState::self();
        const auto client = android::IInterface::asBinder(callback);
        if (static_cast<unsigned>(call->getCallingPid()) != pid) {
            return STATUS_PERMISSION_DENIED;
        }
        if (client == nullptr || client->linkToDeath(this, nullptr, 0) != android::OK) {
            return STATUS_BAD_PARAMETER;
        }
        mClients[pid] = {callback, call->getCallingUid()};
        return STATUS_OK;
    }
    int deregisterCallback(unsigned pid) override {
        return isCaller(pid) ? forget(pid) : STATUS_PERMISSION_DENIED;
    }
    void binderDied(const android::wp<android::IBinder>& who) override {
        const Guard guard(mMutex);
        for (const auto& [pid, client] : mClients) {
            if (who.promote() == android::IInterface::asBinder(client.callback)) {
                forget(pid);
                return;
            }
        }
    }

    int lock(unsigned pid) override {
        const int status = changed(pid, STATUS_OK);
        return status == STATUS_OK ? setHolder(pid) : status;
    }
    int unlock(unsigned pid) override {
        return isCaller(pid) && mHolder == pid ? setHolder(0) : STATUS_PERMISSION_DENIED;
    }
    bool locked() override { return mHolder != 0; }

    /// The process that the request names has sent it. A kernel's driver does not say which process
    /// sends a one-way request (0), but which user.
    bool isCaller(unsigned pid) const {
        const auto* call = android::IPCThreadState::self();
        const auto client = mClients.find(pid);
        return client != mClients.end() && client->second.user == call->getCallingUid() &&
               (call->getCallingPid() == 0 || static_cast<unsigned>(call->getCallingPid()) == pid);
    }
    /// The status of a request that changes something.
    int changed(unsigned pid, int status) {
        if (!isCaller(pid)) {
            return STATUS_PERMISSION_DENIED;
        }
        if (mHolder == 0 || mHolder == pid) {
            return status;
        }
        tell(pid, EVENT_STATE, STATE_LOCK, mHolder);
        return STATUS_LOCKED;
    }
    int utter(unsigned pid, unsigned id, int status, const std::string& text) {
        status = changed(pid, status);
        if (status == STATUS_OK) {
            tell(pid, EVENT_STARTED, id, 0);
            std::puts(text.c_str());
            tell(pid, EVENT_FINISHED, id, 0);
        } else if (status != STATUS_PERMISSION_DENIED) {  // else it may have come from another
            tell(pid, EVENT_STOPPED, id, static_cast<unsigned>(status));
        }
        return status;
    }
    void tell(unsigned pid, unsigned event, unsigned second, unsigned third) {
        mClients[pid].callback->notify(event, second, third);
    }
    int setHolder(unsigned pid) {
        mHolder = pid;
        for (const auto& [each, client] : mClients) {
            client.callback->notify(EVENT_STATE, STATE_LOCK, pid);
        }
        return STATUS_OK;
    }
    int forget(unsigned pid) {
        mClients.erase(pid);
        return mHolder == pid ? setHolder(0) : STATUS_OK;
    }

    std::mutex mMutex;
    std::map<unsigned, Client> mClients;  // by process id
    unsigned mHolder = 0;                 // of the lock
};

int main() {
    std::setvbuf(stdout, nullptr, _IOLBF, 0);
    android::ProcessState::self()->startThreadPool();
    const android::sp<Service> service = new Service;
    const auto manager = android::defaultServiceManager();
    if (manager->addService(ITextToSpeechFestival::descriptor, service) != android::OK) {
        std::fputs("service: no service manager takes the name\n", stderr);
        return 1;
    }
    std::puts("service: clients find it now");
    android::IPCThreadState::self()->joinThreadPool();
}
