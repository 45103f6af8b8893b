// SPDX-License-Identifier: Apache-2.0
// A service of which another object, "test.blocked", takes calls and never comes to an end with the
// first.
#include <binder/IPCThreadState.h>
#include <binder/IServiceManager.h>

#include <cstdio>

#include <unistd.h>

#include "tests/voxtrelctl/ForeignService.h"

namespace {

class BlockedObject : public android::BBinder {
protected:
    android::status_t onTransact(uint32_t code, const android::Parcel& data, android::Parcel* reply,
                                 uint32_t flags) override {
        if (code != android::IBinder::FIRST_CALL_TRANSACTION) {
            return android::BBinder::onTransact(code, data, reply, flags);
        }
        for (;;) {
            pause();
        }
    }
};

}  // namespace

int main() {
    const auto service = voxtrel_test::ForeignService::registered();
    const android::sp<BlockedObject> blocked = new BlockedObject;
    if (android::defaultServiceManager()->addService(android::String16("test.blocked"), blocked) !=
        android::OK) {
        return 1;
    }
    std::puts("service: clients find it now");
    std::fflush(stdout);
    android::IPCThreadState::self()->joinThreadPool();
}
