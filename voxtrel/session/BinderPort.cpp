// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/session/BinderPort.h"

#include <binder/ProcessState.h>

namespace voxtrel {
namespace {

constexpr const char* kNoManager = "there is no service manager: start it";

class Watch : public android::IBinder::DeathRecipient {
public:
    explicit Watch(std::function<void()> died) : mDied(std::move(died)) {}
    void binderDied(const android::wp<android::IBinder>&) override { mDied(); }

private:
    const std::function<void()> mDied;
};

}  // namespace

Port::Found BinderPort::find(std::function<void()> died) {
    const android::sp<android::IServiceManager> manager = android::defaultServiceManager();
    if (manager == nullptr) {
        return {nullptr, Status::ServiceNotFound, kNoManager};
    }
    android::ProcessState::self()->startThreadPool();
    // Not getService, which takes seconds on some runtimes when there is none.
    const android::sp<android::IBinder> binder = manager->checkService(mName);
    if (binder == nullptr) {
        // Some runtimes tell no manager from one that does not know the name.
        const bool isManaged = android::IInterface::asBinder(manager) != nullptr;
        return {nullptr, Status::ServiceNotFound,
                isManaged ? describe(Status::ServiceNotFound) : kNoManager};
    }
    const android::sp<Watch> watch = new Watch(std::move(died));
    if (binder->linkToDeath(watch, nullptr, 0) == android::DEAD_OBJECT) {
        return {nullptr, Status::NoService, "the service has just died: start it"};
    }
    mWatch = watch;
    return {TTS::ITextToSpeechFestival::asInterface(binder), Status::Ok, ""};
}

}  // namespace voxtrel
