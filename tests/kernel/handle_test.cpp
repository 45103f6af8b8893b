// SPDX-License-Identifier: Apache-2.0
#include "kernel/DriverThread.h"

#include <gtest/gtest.h>

#include <cstring>

#include "tests/kernel/OverTheDriver.h"

namespace {

using android::IBinder;
using android::Parcel;
using android::sp;
using fake_driver::bytesOf;
using fake_driver::kComplete;
using fake_driver::kHandle;
using fake_driver::kNoop;
using fake_driver::Numbers;
using fake_driver::OverTheDriver;

using AHandle = OverTheDriver;

TEST_F(AHandle, IsAcquiredBeforeTheBufferThatBroughtItIsFreedAndReleasedWithItsProxy) {
    willReply(deliveredBinder(android::kernel::flatHandle(3)));
    Parcel reply;
    ASSERT_EQ(android::OK, call(&reply).status);
    sp<IBinder> proxy = reply.readStrongBinder();
    ASSERT_TRUE(proxy != nullptr);
    EXPECT_EQ(3U, android::kernel::handleOf(*proxy->remoteBinder()));
    EXPECT_EQ((Numbers{BC_TRANSACTION, BC_INCREFS, BC_ACQUIRE, BC_FREE_BUFFER}), mDriver.numbers());
    mDriver.written.clear();
    reply.freeData();
    proxy.clear();
    EXPECT_EQ((Numbers{BC_RELEASE, BC_DECREFS}), mDriver.numbers());
    EXPECT_EQ(3U, mDriver.last(BC_RELEASE).as<uint32_t>());
}

TEST_F(AHandle, IsReleasedOnlyWhenTheDriverHasTakenTheWholeAcquisition) {
    mDriver.commandsAWrite = 1;
    mThread.proxyOf(3);
    EXPECT_EQ(Numbers{}, mDriver.numbers());
    mThread.flush();
    EXPECT_EQ((Numbers{BC_INCREFS, BC_ACQUIRE, BC_RELEASE, BC_DECREFS}), mDriver.numbers());
}

TEST_F(AHandle, ThatComesTwiceIsTheSameProxyAndAcquiredOnce) {
    Parcel first;
    Parcel second;
    willReply(deliveredBinder(android::kernel::flatHandle(3)));
    ASSERT_EQ(android::OK, call(&first).status);
    willReply(deliveredBinder(android::kernel::flatHandle(3)));
    ASSERT_EQ(android::OK, call(&second).status);
    EXPECT_TRUE(first.readStrongBinder() == second.readStrongBinder());
    EXPECT_EQ(1U, mDriver.count(BC_ACQUIRE));
}

TEST_F(AHandle, IsSentAsAFlatObjectWithItsPlace) {
    Parcel data;
    data.writeInt32(1);
    data.writeStrongBinder(mThread.proxyOf(3));
    data.writeStrongBinder(nullptr);
    mDriver.reads.emplace_back([this, &data] {
        const auto sent = mDriver.last(BC_TRANSACTION).as<binder_transaction_data>();
        const auto* image = android::kernel::toPointer<const uint8_t>(sent.data.ptr.buffer);
        EXPECT_EQ(data.dataSize(), sent.data_size);
        EXPECT_EQ(sizeof(binder_size_t), sent.offsets_size) << "a null binder is not translated";
        EXPECT_EQ(4U, *android::kernel::toPointer<const binder_size_t>(sent.data.ptr.offsets));
        flat_binder_object object = {};
        std::memcpy(&object, image + 4, sizeof(object));
        EXPECT_EQ(uint32_t{BINDER_TYPE_HANDLE}, object.hdr.type);
        EXPECT_EQ(3U, object.handle);
        std::memcpy(&object, image + 28, sizeof(object));
        EXPECT_EQ(uint32_t{BINDER_TYPE_BINDER}, object.hdr.type);
        EXPECT_EQ(0U, object.binder);
        EXPECT_EQ(0U, object.cookie);
        return bytesOf(kNoop, kComplete);
    });
    EXPECT_EQ(android::OK,
              mThread.transact(kHandle, 1, data, nullptr, IBinder::FLAG_ONEWAY).status);
}

}  // namespace
