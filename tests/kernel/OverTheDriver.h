// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_KERNEL_OVERTHEDRIVER_H
#define VOXTREL_TESTS_KERNEL_OVERTHEDRIVER_H

#include <binder/Binder.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "kernel/DriverReference.h"
#include "kernel/DriverThread.h"
#include "kernel/FlatObject.h"
#include "tests/kernel/FakeDriver.h"

namespace fake_driver {

using Numbers = std::vector<uint32_t>;

constexpr uint32_t kHandle = 5;
constexpr uint32_t kNoop = BR_NOOP;
constexpr uint32_t kComplete = BR_TRANSACTION_COMPLETE;

/// A node that does what the test says.
class Scripted : public android::BBinder {
public:
    using Script =
        std::function<android::status_t(const android::Parcel& data, android::Parcel* reply)>;
    explicit Scripted(Script script) : mScript(std::move(script)) {}

protected:
    android::status_t onTransact(uint32_t, const android::Parcel& data, android::Parcel* reply,
                                 uint32_t) override {
        return mScript(data, reply);
    }

private:
    const Script mScript;
};

/// A recipient that counts what it is told.
class CountsDeaths : public android::IBinder::DeathRecipient {
public:
    void binderDied(const android::wp<android::IBinder>&) override { ++mDeaths; }
    int deaths() const { return mDeaths; }

private:
    int mDeaths = 0;
};

inline std::unique_ptr<android::kernel::Device> open(FakeDriver& driver) {
    std::string error;
    return android::kernel::Device::open(driver, "/dev/binder", error);
}

/// What a thread has with the driver, against one that the test writes.
class OverTheDriver : public testing::Test {
protected:
    // What the driver gives for a parcel; the data stays as long as the test.
    binder_transaction_data delivered(const std::vector<int32_t>& values, uint32_t flags = 0) {
        mData.push_back(std::make_unique<std::vector<int32_t>>(values));
        binder_transaction_data transaction = {};
        transaction.flags = flags;
        transaction.data_size = values.size() * sizeof(int32_t);
        transaction.data.ptr.buffer = android::kernel::toWord(mData.back()->data());
        return transaction;
    }
    binder_transaction_data deliveredBinder(const flat_binder_object& object) {
        mObject = object;
        binder_transaction_data transaction = {};
        transaction.data_size = sizeof(mObject);
        transaction.data.ptr.buffer = android::kernel::toWord(&mObject);
        transaction.offsets_size = sizeof(mOffset);
        transaction.data.ptr.offsets = android::kernel::toWord(&mOffset);
        return transaction;
    }
    static binder_ptr_cookie wordsOf(android::BBinder& node) {
        return {android::kernel::toWord(node.getWeakRefs()), android::kernel::toWord(&node)};
    }
    static binder_transaction_data callTo(android::BBinder& node,
                                          binder_transaction_data transaction) {
        transaction.target.ptr = android::kernel::toWord(node.getWeakRefs());
        transaction.cookie = android::kernel::toWord(&node);
        transaction.code = 1;
        transaction.sender_pid = 77;
        transaction.sender_euid = 88;
        return transaction;
    }
    // The driver acquires the node. With the next read the test lets go of it, and so does the
    // driver in that read, behind `before`.
    void willHoldAndLetGo(android::sp<android::BBinder>& node,
                          const Bytes& before = bytesOf(kNoop, kComplete),
                          const Bytes& behind = {}) {
        const binder_ptr_cookie words = wordsOf(*node);
        mDriver.willRead(bytesOf(kNoop, uint32_t{BR_INCREFS}, words, uint32_t{BR_ACQUIRE}, words));
        mDriver.reads.emplace_back([&node, words, before, behind] {
            node.clear();
            Bytes read = bytesOf(uint32_t{BR_RELEASE}, words, uint32_t{BR_DECREFS}, words);
            read.insert(read.begin(), before.begin(), before.end());
            read.insert(read.end(), behind.begin(), behind.end());
            return read;
        });
    }
    void willReply(const binder_transaction_data& reply) {
        mDriver.willRead(bytesOf(kNoop, kComplete, uint32_t{BR_REPLY}, reply));
    }
    android::kernel::DriverThread::Result call(android::Parcel* reply, uint32_t flags = 0) {
        android::Parcel data;
        data.writeInt32(42);
        return mThread.transact(kHandle, 9, data, reply, flags);
    }
    void serve() { mThread.serveForever(BC_ENTER_LOOPER); }

    FakeDriver mDriver;
    android::kernel::Process mProcess{open(mDriver),
                                      android::kernel::HandleTable([this](uint32_t handle) {
                                          return std::make_unique<android::kernel::DriverReference>(
                                              mProcess, mThreads, handle);
                                      }),
                                      {},
                                      android::kernel::ThreadStarter(mDriver),
                                      [] {}};
    android::kernel::Threads mThreads{mProcess};
    android::kernel::DriverThread mThread{mProcess};
    std::vector<std::unique_ptr<std::vector<int32_t>>> mData;
    flat_binder_object mObject = {};
    const binder_size_t mOffset = 0;
};

}  // namespace fake_driver

#endif
