// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BENCH_PLATFORM_BENCHNODE_H
#define VOXTREL_BENCH_PLATFORM_BENCHNODE_H

#include <binder/IInterface.h>

#include <cstddef>
#include <cstdint>

namespace bench {

/// The smallest interface that has what is measured: proxy, runtime and stub.
class IBench : public android::IInterface {
public:
    DECLARE_META_INTERFACE(Bench)
    /// `size` bytes there and back; the number that came back.
    virtual size_t echo(const void* bytes, size_t size) = 0;
    /// `size` bytes, one-way.
    virtual void note(const void* bytes, size_t size) = 0;
    /// Waits until all notes of this caller have been taken; how many there were, of all callers.
    virtual int32_t noted() = 0;
    /// Heap blocks that the process has taken so far.
    virtual uint64_t allocated() = 0;
    virtual android::sp<android::IBinder> make() = 0;
};

class BpBench : public android::BpInterface<IBench> {
public:
    explicit BpBench(const android::sp<android::IBinder>& remote) : BpInterface<IBench>(remote) {}
    size_t echo(const void* bytes, size_t size) override;
    void note(const void* bytes, size_t size) override;
    int32_t noted() override;
    uint64_t allocated() override;
    android::sp<android::IBinder> make() override;
};

/// The node that some process has added under `name`; waits until it is there.
android::sp<IBench> findBench(const char* name = "bench");
android::sp<android::IBinder> findService(const char* name);

}  // namespace bench

#endif
