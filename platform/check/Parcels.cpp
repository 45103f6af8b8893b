// SPDX-License-Identifier: Apache-2.0
#include <cstring>

#include "check/CallNode.h"
#include "check/Peer.h"
#include "check/PeerNode.h"
#include "check/Row.h"

namespace check {
namespace {

using android::Parcel;
using android::sp;

void append(std::string& image, const void* bytes, size_t size) {
    image.append(static_cast<const char*>(bytes), size);
    image.append((4 - size % 4) % 4, '\0');
}

Result parcelWrites() {
    const int32_t number = 0x01020304;
    const float fraction = 1.5F;
    std::string expected;
    append(expected, &number, sizeof number);
    append(expected, &fraction, sizeof fraction);
    append(expected, "abcde", 5);
    append(expected, "xy", 3);
    Parcel parcel;
    parcel.writeInt32(number);
    parcel.writeFloat(fraction);
    parcel.write("abcde", 5);
    parcel.writeCString("xy");
    const bool isSame = parcel.dataSize() == expected.size() &&
                        std::memcmp(parcel.data(), expected.data(), expected.size()) == 0;
    return require(isSame, std::to_string(parcel.dataSize()) + " bytes, " +
                               (isSame ? "as expected" : "not the 20 that were expected"));
}

Result readsPastTheEnd() {
    const Parcel parcel;
    const int32_t number = parcel.readInt32();
    const float fraction = parcel.readFloat();
    return require(number == 0 && fraction == 0.0F,
                   std::to_string(number) + " and " + std::to_string(fraction));
}

Result textsPastTheEnd() {
    Parcel parcel;
    parcel.writeInt32(-1);  // no NUL in it
    parcel.setDataPosition(0);
    const bool isNull = parcel.readCString() == nullptr;
    parcel.setDataPosition(0);
    char bytes[8];
    const bool isError = parcel.read(bytes, sizeof bytes) != android::OK;
    return require(isNull && isError, std::string(isNull ? "null" : "a text") + " and " +
                                          (isError ? "an error" : "bytes"));
}

Result bytesLeft() {
    Parcel parcel;
    parcel.writeInt32(1);
    parcel.writeInt32(2);
    parcel.setDataPosition(0);
    const size_t all = parcel.dataAvail();
    parcel.readInt32();
    const size_t half = parcel.dataAvail();
    return require(all == 8 && half == 4,
                   std::to_string(all) + ", " + std::to_string(half) + " after 4 of 8 were read");
}

Result bindersInParcels() {
    android::ProcessState::self()->startThreadPool();
    const Peer peer;
    const sp<CallNode> mine = new CallNode();
    const int32_t status = callThrough(peer.node(), mine, 7, 0);
    Parcel request;
    request.writeStrongBinder(nullptr);
    Parcel reply;
    (void)peer.node()->transact(kIsNull, request, &reply, 0);
    const bool carriesNull = reply.readInt32() == 1;
    return require(status == android::OK && mine->waitForCall(7) && carriesNull,
                   "called back with status " + std::to_string(status) + ", null is " +
                       (carriesNull ? "carried" : "not carried"));
}

}  // namespace

Rows parcelRows() {
    return {
        {"parcel-writes", "4-byte padding, native byte order, one behind the other",
         "client and service built on different platforms misread each other", parcelWrites},
        {"reads-past-the-end", "0",
         "the result of every one-way operation, and of every failed call, is garbage",
         readsPastTheEnd},
        {"texts-past-the-end", "null, or an error", "as above", textsPastTheEnd},
        {"bytes-left", "the bytes that are left",
         "the voice list of a lying service is not cut where its data ends", bytesLeft},
        {"binders-in-parcels", "a working reference in the other process; null is carried",
         "no events", bindersInParcels},
    };
}

}  // namespace check
