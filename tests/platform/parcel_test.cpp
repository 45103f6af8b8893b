// SPDX-License-Identifier: Apache-2.0
#include <binder/Binder.h>
#include <binder/Parcel.h>
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "binder/internal/ParcelFrame.h"

namespace {

using android::BBinder;
using android::IBinder;
using android::OK;
using android::Parcel;
using android::sp;
using android::status_t;
using android::String16;

std::vector<uint8_t> imageOf(const Parcel& parcel) {
    return {parcel.data(), parcel.data() + parcel.dataSize()};
}

using Bytes = std::vector<uint8_t>;

TEST(AParcel, HasZerosWhereNothingWasWritten) {
    Parcel parcel;
    parcel.writeInt64(-1);
    ASSERT_EQ(OK, parcel.setDataSize(0));
    parcel.setDataPosition(8);
    parcel.writeInt32(1);
    parcel.setDataPosition(0);
    EXPECT_EQ(0, parcel.readInt64());
    EXPECT_EQ(1, parcel.readInt32());
}

TEST(AParcel, ThatIsCutForgetsItsBindersAndItsPosition) {
    Parcel parcel;
    parcel.writeStrongBinder(new BBinder());
    ASSERT_EQ(OK, parcel.setDataSize(4));
    EXPECT_EQ(4U, parcel.dataPosition());
    EXPECT_TRUE(android::ParcelFrame::objects(parcel).empty());
}

// The driver wants them so.
TEST(AParcel, HasItsBindersInTheOrderOfTheirPlaces) {
    Parcel parcel;
    parcel.setDataPosition(24);
    parcel.writeStrongBinder(new BBinder());
    parcel.setDataPosition(0);
    parcel.writeStrongBinder(new BBinder());
    const auto& objects = android::ParcelFrame::objects(parcel);
    ASSERT_EQ(2U, objects.size());
    EXPECT_EQ(0U, objects[0].offset);
    EXPECT_EQ(24U, objects[1].offset);
}

TEST(AParcel, StaysBeforeATextThatIsNotAllThere) {
    Parcel parcel;
    parcel.writeInt32(5);
    parcel.setDataPosition(0);
    String16 text;
    EXPECT_NE(OK, parcel.readString16(&text));
    EXPECT_EQ(0U, parcel.dataPosition());
}

TEST(AParcel, TakesEveryNumberButZeroForTrue) {
    Parcel parcel;
    parcel.writeInt32(2);
    parcel.setDataPosition(0);
    bool value = false;
    ASSERT_EQ(OK, parcel.readBool(&value));
    EXPECT_TRUE(value);
}

TEST(AParcel, ThatGrowsAgainShowsNothingOfWhatItHad) {
    Parcel parcel;
    parcel.writeInt32(7);
    ASSERT_EQ(OK, parcel.setDataSize(0));
    ASSERT_EQ(OK, parcel.setDataSize(4));
    EXPECT_EQ(0, parcel.readInt32());
}

TEST(AParcel, WritesScalarsInNativeOrderOneBehindTheOther) {
    Parcel parcel;
    parcel.writeInt32(-2);
    parcel.writeUint32(0x01020304);
    parcel.writeFloat(1.0F);
    parcel.writeInt64(0x0102030405060708);
    parcel.writeBool(true);
    EXPECT_EQ((Bytes{0xFE, 0xFF, 0xFF, 0xFF, 0x04, 0x03, 0x02, 0x01, 0x00, 0x00, 0x80, 0x3F,
                     0x08, 0x07, 0x06, 0x05, 0x04, 0x03, 0x02, 0x01, 0x01, 0x00, 0x00, 0x00}),
              imageOf(parcel));
}

TEST(AParcel, PadsRawBytesAndTextWithZeros) {
    Parcel parcel;
    parcel.write("abcde", 5);
    parcel.writeCString("abc");
    parcel.writeCString("");
    EXPECT_EQ((Bytes{'a', 'b', 'c', 'd', 'e', 0, 0, 0, 'a', 'b', 'c', 0, 0, 0, 0, 0}),
              imageOf(parcel));
}

TEST(AParcel, WritesSixteenBitTextWithLengthAndNul) {
    Parcel parcel;
    parcel.writeString16(String16("h\xC3\xA9"));
    EXPECT_EQ((Bytes{2, 0, 0, 0, 'h', 0, 0xE9, 0, 0, 0, 0, 0}), imageOf(parcel));
}

TEST(AParcel, ReadsBackWhatItHolds) {
    Parcel parcel;
    const uint8_t image[] = {0x2A, 0, 0, 0, 'o', 'k', 0, 0, 0, 0, 0x80, 0x3F,
                             1,    0, 0, 0, 'x', 0,   0, 0, 9, 8, 7,    0};
    ASSERT_EQ(OK, parcel.setData(image, sizeof(image)));
    EXPECT_EQ(42, parcel.readInt32());
    EXPECT_STREQ("ok", parcel.readCString());
    EXPECT_EQ(1.0F, parcel.readFloat());
    EXPECT_EQ(String16("x"), parcel.readString16());
    uint8_t raw[3] = {};
    EXPECT_EQ(OK, parcel.read(raw, sizeof(raw)));
    EXPECT_EQ(8, raw[1]);
    EXPECT_EQ(0U, parcel.dataAvail());
}

TEST(ReadingPastTheEnd, GivesZeroOrNull) {
    const Parcel parcel;
    EXPECT_EQ(0, parcel.readInt32());
    EXPECT_EQ(0.0F, parcel.readFloat());
    EXPECT_EQ(0, parcel.readInt64());
    EXPECT_EQ(nullptr, parcel.readCString());
    EXPECT_EQ(nullptr, parcel.readInplace(1));
    EXPECT_EQ(0U, parcel.readString16().size());
    EXPECT_TRUE(parcel.readStrongBinder() == nullptr);
}

TEST(ReadingPastTheEnd, IsAnErrorInTheStatusFormAndTouchesNothing) {
    Parcel parcel;
    parcel.setData(reinterpret_cast<const uint8_t*>("abc"), 3);
    int32_t value = 5;
    EXPECT_EQ(android::NOT_ENOUGH_DATA, parcel.readInt32(&value));
    EXPECT_EQ(5, value);
    uint8_t raw[3] = {1, 1, 1};
    EXPECT_EQ(android::NOT_ENOUGH_DATA, parcel.read(raw, 3));
    EXPECT_EQ(1, raw[0]);
    EXPECT_EQ(nullptr, parcel.readCString());
    EXPECT_EQ(0U, parcel.dataPosition());
}

TEST(AParcel, IsReadFromAnywhere) {
    Parcel parcel;
    parcel.writeInt32(1);
    parcel.writeInt32(2);
    parcel.setDataPosition(4);
    EXPECT_EQ(2, parcel.readInt32());
    parcel.setDataPosition(400);
    EXPECT_EQ(0, parcel.readInt32());
    EXPECT_EQ(0U, parcel.dataAvail());
}

TEST(AParcel, GrowsBeyondItsOwnRoomAndKeepsItsContents) {
    Parcel parcel;
    for (int32_t i = 0; i < 1000; ++i) {
        ASSERT_EQ(OK, parcel.writeInt32(i));
    }
    EXPECT_EQ(4000U, parcel.dataSize());
    parcel.setDataPosition(0);
    for (int32_t i = 0; i < 1000; ++i) {
        ASSERT_EQ(i, parcel.readInt32());
    }
    parcel.freeData();
    EXPECT_EQ(0U, parcel.dataSize());
}

TEST(AParcel, RefusesAnAbsurdLengthAndRemembersIt) {
    Parcel parcel;
    EXPECT_EQ(nullptr, parcel.writeInplace(~size_t{0} - 2));
    EXPECT_EQ(android::BAD_VALUE, parcel.errorCheck());
    EXPECT_EQ(android::BAD_VALUE, parcel.writeInt32(1));
    parcel.freeData();
    EXPECT_EQ(OK, parcel.writeInt32(1));
}

TEST(ABinderInAParcel, IsTheSameObjectWhenRead) {
    const sp<IBinder> binder = new BBinder();
    Parcel parcel;
    parcel.writeInt32(3);
    parcel.writeStrongBinder(binder);
    parcel.writeStrongBinder(nullptr);
    EXPECT_EQ(52U, parcel.dataSize());
    parcel.setDataPosition(4);
    EXPECT_TRUE(parcel.readStrongBinder() == binder);
    sp<IBinder> none = binder;
    EXPECT_EQ(OK, parcel.readNullableStrongBinder(&none));
    EXPECT_TRUE(none == nullptr);
    parcel.setDataPosition(28);
    EXPECT_EQ(android::UNEXPECTED_NULL, parcel.readStrongBinder(&none));
}

TEST(ABinderInAParcel, IsHeldUntilTheParcelLetsGo) {
    Parcel parcel;
    sp<BBinder> binder = new BBinder();
    parcel.writeStrongBinder(binder);
    EXPECT_EQ(2, binder->getStrongCount());
    parcel.freeData();
    EXPECT_EQ(1, binder->getStrongCount());
}

TEST(ABinderInAParcel, IsGoneOnceItsPlaceIsOverwritten) {
    Parcel parcel;
    parcel.writeStrongBinder(new BBinder());
    parcel.setDataPosition(8);
    parcel.writeInt32(1);
    parcel.setDataPosition(0);
    EXPECT_TRUE(parcel.readStrongBinder() == nullptr);
}

TEST(BytesThatLookLikeABinder, AreNotOne) {
    Parcel real;
    real.writeStrongBinder(new BBinder());
    Parcel forged;
    forged.setData(real.data(), real.dataSize());
    EXPECT_TRUE(forged.readStrongBinder() == nullptr);
    forged.setDataPosition(0);
    sp<IBinder> binder;
    EXPECT_EQ(android::BAD_TYPE, forged.readStrongBinder(&binder));
}

TEST(AParcel, RefusesALengthWhosePaddingWouldNotFit) {
    constexpr size_t kNearlyAll = 0x7FFFFFFF - 64;  // not a multiple of 4
    Parcel parcel;
    parcel.setDataPosition(kNearlyAll);
    EXPECT_EQ(nullptr, parcel.writeInplace(kNearlyAll));
    EXPECT_EQ(android::BAD_VALUE, parcel.errorCheck());
    EXPECT_EQ(0U, parcel.dataSize());
}

}  // namespace
