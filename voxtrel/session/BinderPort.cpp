// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/session/BinderPort.h"

#include <binder/ProcessState.h>
#include <unistd.h>

#include <algorithm>

// Of a PC alone: a device's service manager decides itself who may register, and tells nobody.
#if __has_include(<binder/ServiceOwner.h>)
#include <binder/BinderDriver.h>
#include <binder/ServiceManagerSocket.h>
#include <binder/ServiceOwner.h>

#include "voxtrel/session/Surroundings.h"
#define VOXTREL_KNOWS_OWNERS 1
#else
#define VOXTREL_KNOWS_OWNERS 0
#endif

namespace voxtrel {
namespace {

constexpr std::uint32_t kRoot = 0;

class Watch : public android::IBinder::DeathRecipient {
public:
    explicit Watch(std::function<void()> died) : mDied(std::move(died)) {}
    void binderDied(const android::wp<android::IBinder>&) override { mDied(); }

private:
    const std::function<void()> mDied;
};

struct Registered {
    android::sp<android::IBinder> binder = nullptr;
    Peer peer = {};
};

#if VOXTREL_KNOWS_OWNERS
/// A device's own service manager, written in C, answers what it does not know with -1.
bool isUnknownQuestion(android::status_t status) {
    return status == android::UNKNOWN_TRANSACTION || status == android::PERMISSION_DENIED;
}
#endif

Registered lookUp(android::IServiceManager& manager, const android::String16& name) {
    Registered found;
#if VOXTREL_KNOWS_OWNERS
    android::OwnedService owned;
    const android::status_t status = android::findOwnedService(name, owned);
    if (status == android::OK) {
        found.binder = owned.service;
        found.peer.process = static_cast<std::uint32_t>(std::max<pid_t>(owned.process, 0));
        found.peer.user = owned.owner;
        return found;
    }
    if (!isUnknownQuestion(status)) {
        return found;  // a manager that could tell: a service without its owner is not to be
                       // trusted
    }
#endif
    // Not getService, which takes seconds on some runtimes when there is none.
    found.binder = manager.checkService(name);
    return found;
}

/// A device's own service manager decides itself who may register, and tells nobody.
bool isManagerTheDevices() {
#if VOXTREL_KNOWS_OWNERS
    return !android::binderDriver().empty();
#else
    return true;
#endif
}

}  // namespace

bool BinderPort::isTrusted(const std::optional<Users>& trusted, const Peer& owner,
                           bool tellsOwners) {
    if (!trusted || (!owner.user && !tellsOwners)) {
        return true;
    }
    const bool isOwn = owner.user == getuid() || owner.user == kRoot;
    return isOwn || (owner.user && std::count(trusted->begin(), trusted->end(), *owner.user) > 0);
}

Port::Found BinderPort::find(std::function<void()> died) {
    const android::sp<android::IServiceManager> manager = android::defaultServiceManager();
    if (manager == nullptr) {
        return {nullptr, Reach::NoManager};
    }
    android::ProcessState::self()->startThreadPool();
    const Registered registered = lookUp(*manager, mName);
    if (registered.binder == nullptr) {
        // Some runtimes tell no manager from one that does not know the name.
        const bool isManaged = android::IInterface::asBinder(manager) != nullptr;
        return {nullptr, isManaged ? Reach::NoService : Reach::NoManager};
    }
    if (!isTrusted(mTrusted, registered.peer, !isManagerTheDevices())) {
        return {nullptr, Reach::NotTrusted, registered.peer};
    }
    const android::sp<Watch> watch = new Watch(std::move(died));
    const android::status_t linked = registered.binder->linkToDeath(watch, nullptr, 0);
    if (linked != android::OK && linked != android::INVALID_OPERATION) {  // refused by a local one
        return {nullptr, Reach::NoService};
    }
    mWatch = watch;
    return {TTS::ITextToSpeechFestival::asInterface(registered.binder), Reach::Connected,
            registered.peer};
}

Diagnosis BinderPort::look() const {
#if VOXTREL_KNOWS_OWNERS
    if (!android::binderDriver().empty()) {
        return lookAtDriver(android::binderDriver());
    }
    const std::lock_guard<std::mutex> lock(mMutex);
    if (isStopped(mManager.process)) {
        // Another connection would only fill the queue of those that wait for it.
        return {Reach::Connected, "socket", android::serviceManagerSocket(), 0, mManager};
    }
    Diagnosis seen = lookAtSocket(android::serviceManagerSocket());
    mManager = seen.manager;
    return seen;
#else
    Diagnosis seen;
    seen.reach = Reach::Connected;
    seen.transport = "driver";
    return seen;
#endif
}

}  // namespace voxtrel
