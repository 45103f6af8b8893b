// SPDX-License-Identifier: Apache-2.0
#include "bench/platform/BenchNode.h"

#include <binder/IServiceManager.h>
#include <binder/Parcel.h>
#include <binder/ProcessState.h>

#include <atomic>

#include "bench/ipc/Allocations.h"
#include "tests/support/Eventually.h"
#include "tests/support/Roles.h"

namespace bench {

using android::IBinder;
using android::Parcel;
using android::sp;
using android::status_t;
using android::String16;

namespace {

enum : uint32_t { kEcho = 1, kNote, kNoted, kAllocated, kMake };

class BnBench : public android::BnInterface<IBench> {
public:
    size_t echo(const void* /*bytes*/, size_t size) override { return size; }
    void note(const void* /*bytes*/, size_t /*size*/) override { ++mNotes; }
    int32_t noted() override { return mNotes; }
    uint64_t allocated() override { return allocations(); }
    sp<IBinder> make() override { return new android::BBinder(); }

protected:
    status_t onTransact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags) override {
        const size_t size = data.dataSize();
        switch (code) {
            case kEcho:
                return reply->write(data.readInplace(size), echo(nullptr, size));
            case kNote:
                note(data.readInplace(size), size);
                return android::OK;
            case kNoted:
                return reply->writeInt32(noted());
            case kAllocated:
                return reply->writeUint64(allocated());
            case kMake:
                return reply->writeStrongBinder(make());
            default:
                return BBinder::onTransact(code, data, reply, flags);
        }
    }

private:
    std::atomic<int32_t> mNotes{0};
};

const voxtrel_test::Role kServer("bench-server", [](const voxtrel_test::Arguments& arguments) {
    android::ProcessState::self()->startThreadPool();
    const char* name = arguments.empty() ? "bench" : arguments[0].c_str();
    const status_t status =
        android::defaultServiceManager()->addService(String16(name), new BnBench());
    voxtrel_test::tell(status == android::OK ? "ready" : "failed");
    while (!voxtrel_test::hear().empty()) {
    }
    return 0;
});

}  // namespace

IMPLEMENT_META_INTERFACE(Bench, "voxtrel.IBench")

size_t BpBench::echo(const void* bytes, size_t size) {
    Parcel data;
    Parcel reply;
    data.write(bytes, size);
    remote()->transact(kEcho, data, &reply, 0);
    return reply.readInplace(size) != nullptr ? size : 0;
}

void BpBench::note(const void* bytes, size_t size) {
    Parcel data;
    data.write(bytes, size);
    remote()->transact(kNote, data, nullptr, IBinder::FLAG_ONEWAY);
}

int32_t BpBench::noted() {
    const Parcel data;
    Parcel reply;
    remote()->transact(kNoted, data, &reply, 0);
    return reply.readInt32();
}

uint64_t BpBench::allocated() {
    const Parcel data;
    Parcel reply;
    remote()->transact(kAllocated, data, &reply, 0);
    return reply.readUint64();
}

sp<IBinder> BpBench::make() {
    const Parcel data;
    Parcel reply;
    remote()->transact(kMake, data, &reply, 0);
    return reply.readStrongBinder();
}

sp<IBinder> findService(const char* name) {
    sp<IBinder> found;
    (void)voxtrel_test::eventually([&] {
        found = android::defaultServiceManager()->getService(String16(name));
        return found != nullptr;
    });
    return found;
}

sp<IBench> findBench(const char* name) {
    return IBench::asInterface(findService(name));
}

}  // namespace bench
