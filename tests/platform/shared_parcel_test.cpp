// SPDX-License-Identifier: Apache-2.0
// One parcel that several threads send at once. Sending once wrote the message's header into the
// parcel and sorted its binders there, so that calls of two threads could mix.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstring>
#include <thread>
#include <vector>

#include "tests/platform/ProbeTest.h"

namespace {

using android::IBinder;
using android::OK;
using android::Parcel;

constexpr int kThreads = 4;
constexpr int kCalls = 200;

class ASharedParcel : public probe::ProbeTest {
protected:
    // Calls that did not come back with what was sent, of all threads together. Every other one is
    // one-way, so that a header that is not the thread's own shows. So many bytes behind the first
    // 8 are binders', which the driver writes anew for their receiver.
    int failuresOf(const Parcel& shared, size_t binders = 0) {
        std::atomic<int> wrong{0};
        std::vector<std::thread> threads;
        for (int i = 0; i < kThreads; ++i) {
            threads.emplace_back([&, oneWay = i % 2 != 0] {
                for (int call = 0; call < kCalls; ++call) {
                    wrong += oneWay ? sendOneWay(shared) : echo(shared, binders);
                }
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        return wrong;
    }

private:
    // Until it is taken: who is busy for 100 ms takes no more.
    int sendOneWay(const Parcel& shared) {
        android::status_t status = android::FAILED_TRANSACTION;
        while (status == android::FAILED_TRANSACTION) {
            status = mNode->transact(probe::kEcho, shared, nullptr, IBinder::FLAG_ONEWAY);
        }
        return status == OK ? 0 : 1;
    }
    int echo(const Parcel& shared, size_t binders) {
        Parcel reply;
        const size_t behind = 8 + binders;
        const bool right = mNode->transact(probe::kEcho, shared, &reply) == OK &&
                           reply.dataSize() == shared.dataSize() &&
                           std::memcmp(reply.data(), shared.data(), 8) == 0 &&
                           std::memcmp(reply.data() + behind, shared.data() + behind,
                                       shared.dataSize() - behind) == 0;
        return right ? 0 : 1;
    }
};

TEST_F(ASharedParcel, MayBeSentBySeveralThreadsAtOnce) {
    for (const size_t size : {size_t{8}, size_t{2000}}) {  // in its own room, and beyond it
        Parcel parcel;
        std::memset(parcel.writeInplace(size), 7, size);
        EXPECT_EQ(0, failuresOf(parcel));
    }
}

TEST_F(ASharedParcel, WithBindersMayBeSentBySeveralThreadsAtOnce) {
    Parcel parcel;
    parcel.writeInt64(3);
    // The second place first.
    parcel.setDataPosition(32);
    parcel.writeStrongBinder(probe::makeNode());
    parcel.setDataPosition(8);
    parcel.writeStrongBinder(probe::makeNode());
    parcel.setDataPosition(56);
    parcel.writeInt64(5);
    EXPECT_EQ(0, failuresOf(parcel, 48));
}

}  // namespace
