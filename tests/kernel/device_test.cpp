// SPDX-License-Identifier: Apache-2.0
#include "kernel/Device.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>

#include "kernel/FlatObject.h"
#include "tests/kernel/FakeDriver.h"

namespace {

using android::kernel::CommandBuffer;
using android::kernel::Device;
using android::kernel::Return;
using android::kernel::ReturnBuffer;
using fake_driver::bytesOf;
using fake_driver::FakeDriver;

constexpr const char* kPath = "/dev/binder";

class TheDriversDevice : public testing::Test {
protected:
    std::string whyNot() {
        std::string error;
        EXPECT_EQ(nullptr, Device::open(mDriver, kPath, error));
        EXPECT_EQ(std::string::npos, error.find('\n'));
        return error;
    }
    std::unique_ptr<Device> opened() {
        std::string error;
        std::unique_ptr<Device> device = Device::open(mDriver, kPath, error);
        EXPECT_EQ("", error);
        return device;
    }

    FakeDriver mDriver;
};

TEST_F(TheDriversDevice, ThatIsMissingIsToBeLoaded) {
    for (const int error : {ENOENT, ENODEV, ENXIO}) {
        mDriver.openError = error;
        EXPECT_EQ(
            "cannot open the binder driver /dev/binder: there is none; load it with 'modprobe "
            "binder_linux devices=binder', or unset VOXTREL_BINDER_DRIVER to use sockets",
            whyNot());
    }
}

TEST_F(TheDriversDevice, ThatIsNotPermittedIsToBeOpenedToThisUser) {
    for (const int error : {EACCES, EPERM}) {
        mDriver.openError = error;
        EXPECT_EQ(
            "cannot open the binder driver /dev/binder: not permitted; let this user read and "
            "write it, say with 'chmod 666 /dev/binder', or unset VOXTREL_BINDER_DRIVER to use "
            "sockets",
            whyNot());
    }
}

TEST_F(TheDriversDevice, OfAnotherProtocolIsRefusedWithBothVersions) {
    mDriver.version = 7;
    EXPECT_EQ(
        "/dev/binder speaks version 7 of the binder protocol, and this runtime version 8: use a "
        "kernel without CONFIG_ANDROID_BINDER_IPC_32BIT, or unset VOXTREL_BINDER_DRIVER to use "
        "sockets",
        whyNot());
}

TEST_F(TheDriversDevice, ThatIsSomethingElseIsRefused) {
    mDriver.versionError = ENOTTY;
    EXPECT_EQ(
        "/dev/binder is no binder driver: set VOXTREL_BINDER_DRIVER to its device, say "
        "/dev/binder, or unset it to use sockets",
        whyNot());
}

TEST_F(TheDriversDevice, ThatCannotBeMappedIsRefused) {
    mDriver.mapFails = true;
    EXPECT_NE(std::string::npos, whyNot().find("cannot map"));
}

TEST_F(TheDriversDevice, HasRoomForOneMebibyteLessTwoPagesUntilItGoes) {
    std::unique_ptr<Device> device = opened();
    EXPECT_EQ(1024U * 1024U - 2U * static_cast<size_t>(sysconf(_SC_PAGESIZE)), mDriver.mapped);
    device.reset();
    EXPECT_EQ(0U, mDriver.mapped);
}

TEST_F(TheDriversDevice, IsNotGivenACommandTwiceWhenASignalComes) {
    const std::unique_ptr<Device> device = opened();
    mDriver.interruptions = 3;
    mDriver.willRead(bytesOf(uint32_t{BR_NOOP}));
    CommandBuffer commands;
    commands.addHandle(BC_ACQUIRE, 5);
    ReturnBuffer returns;
    EXPECT_EQ(0, device->exchange(commands, &returns));
    EXPECT_EQ(1U, mDriver.written.size());
    EXPECT_TRUE(commands.empty());
    Return one;
    ASSERT_TRUE(returns.next(&one));
    EXPECT_EQ(uint32_t{BR_NOOP}, one.command());
}

TEST_F(TheDriversDevice, IsAskedAgainWhenASignalComes) {
    const std::unique_ptr<Device> device = opened();
    mDriver.requestInterruptions = 2;
    EXPECT_EQ(0, device->setMaxThreads(7));
    EXPECT_EQ(7U, mDriver.maxThreads);
}

CommandBuffer threeCommands() {
    CommandBuffer commands;
    commands.addHandle(BC_INCREFS, 5);
    commands.addHandle(BC_ACQUIRE, 5);
    commands.addDeath(BC_REQUEST_DEATH_NOTIFICATION, 5, 1);
    return commands;
}

TEST_F(TheDriversDevice, IsGivenAgainWhatItHasNotTaken) {
    const std::unique_ptr<Device> device = opened();
    mDriver.commandsAWrite = 2;
    CommandBuffer commands = threeCommands();
    EXPECT_EQ(0, device->exchange(commands, nullptr));
    EXPECT_EQ((std::vector<uint32_t>{BC_INCREFS, BC_ACQUIRE}), mDriver.numbers());
    EXPECT_EQ(4U + 12U, commands.size());
    EXPECT_EQ(0, device->exchange(commands, nullptr));
    EXPECT_TRUE(commands.empty());
    EXPECT_EQ(5U, mDriver.last(BC_REQUEST_DEATH_NOTIFICATION).as<binder_handle_cookie>().handle);
}

TEST_F(TheDriversDevice, IsWrittenToUntilItHasTakenEverything) {
    const std::unique_ptr<Device> device = opened();
    mDriver.commandsAWrite = 1;
    device->write(threeCommands());
    EXPECT_EQ((std::vector<uint32_t>{BC_INCREFS, BC_ACQUIRE, BC_REQUEST_DEATH_NOTIFICATION}),
              mDriver.numbers());
}

TEST_F(TheDriversDevice, IsNotWrittenToForEverWhenItTakesNothing) {
    const std::unique_ptr<Device> device = opened();
    mDriver.commandsAWrite = 0;
    device->write(threeCommands());
    EXPECT_EQ((std::vector<uint32_t>{}), mDriver.numbers());
}

TEST_F(TheDriversDevice, TellsWhenItServesThisProcessNoLonger) {
    const std::unique_ptr<Device> device = opened();
    CommandBuffer commands;
    ReturnBuffer returns;
    EXPECT_EQ(ECONNREFUSED, device->exchange(commands, &returns));
}

TEST(TheDriversCommands, AreANumberAndWhatBelongsToIt) {
    CommandBuffer commands;
    commands.add(BC_ENTER_LOOPER);
    commands.addHandle(BC_ACQUIRE, 0x01020304);
    commands.addWord(BC_FREE_BUFFER, 0x1122334455667788);
    commands.addNode(BC_ACQUIRE_DONE, {0x10, 0x20});
    commands.addDeath(BC_REQUEST_DEATH_NOTIFICATION, 7, 0x30);
    const fake_driver::Bytes expected = {
        0x0c, 0x63, 0x00, 0x00,                          // _IO('c', 12)
        0x05, 0x63, 0x04, 0x40, 0x04, 0x03, 0x02, 0x01,  // _IOW('c', 5, 4 bytes)
        0x03, 0x63, 0x08, 0x40,                          // _IOW('c', 3, 8 bytes)
        0x88, 0x77, 0x66, 0x55, 0x44, 0x33, 0x22, 0x11,  //
        0x09, 0x63, 0x10, 0x40,                          // _IOW('c', 9, 16 bytes)
        0x10, 0,    0,    0,    0,    0,    0,    0,     //
        0x20, 0,    0,    0,    0,    0,    0,    0,     //
        0x0e, 0x63, 0x0c, 0x40, 0x07, 0,    0,    0,     // _IOW('c', 14, 12 bytes)
        0x30, 0,    0,    0,    0,    0,    0,    0,
    };
    EXPECT_EQ(expected, fake_driver::Bytes(commands.data(), commands.data() + commands.size()));
    commands.consume(4);
    EXPECT_EQ(expected.size() - 4, commands.size());
    EXPECT_EQ(0x05, commands.data()[0]);
}

TEST(AFlatObject, TakesCallsOfAnyPriorityAndNoDescriptors) {
    const android::sp<android::BBinder> node = new android::BBinder();
    const flat_binder_object object = android::kernel::flatNode(*node);
    EXPECT_EQ(uint32_t{BINDER_TYPE_BINDER}, object.hdr.type);
    EXPECT_EQ(0x7FU, object.flags & FLAT_BINDER_FLAG_PRIORITY_MASK);
    EXPECT_EQ(0U, object.flags & FLAT_BINDER_FLAG_ACCEPTS_FDS);
    EXPECT_EQ(0x7FU, android::kernel::flatHandle(3).flags);
}

TEST(TheDriversReturns, AreSkippedWhenTheyAreUnknownAndEndBeforeAHalfOne) {
    ReturnBuffer returns;
    const auto unknown = static_cast<uint32_t>(_IOR('r', 99, uint64_t));
    const auto bytes = bytesOf(unknown, uint64_t{1}, uint32_t{BR_NOOP}, uint32_t{BR_REPLY});
    std::copy(bytes.begin(), bytes.end(), returns.data());
    returns.fill(bytes.size());
    Return one;
    ASSERT_TRUE(returns.next(&one));
    EXPECT_EQ(unknown, one.command());
    ASSERT_TRUE(returns.next(&one));
    EXPECT_EQ(uint32_t{BR_NOOP}, one.command());
    EXPECT_FALSE(returns.next(&one));
}

}  // namespace
