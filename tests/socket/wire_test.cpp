// SPDX-License-Identifier: Apache-2.0
// What leaves a process, byte by byte, and what is taken for sound.
#include "socket/Wire.h"

#include <binder/Binder.h>
#include <binder/Parcel.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <cstring>

#include "socket/Message.h"
#include "tests/socket/RawWire.h"

namespace {

using android::OK;
using android::Parcel;
using android::transport::Attachments;
using android::transport::decode;
using android::transport::Envelope;
using android::transport::Fd;
using android::transport::Kind;
using android::transport::Layout;
using android::transport::makeSocketPair;
using android::transport::Received;
using android::transport::SocketPair;
using raw::Bytes;

TEST(AMessage, IsAHeaderOfEightWordsAndItsPayload) {
    const SocketPair pair = makeSocketPair();
    Parcel parcel;
    parcel.writeInt32(0x01020304);
    ASSERT_EQ(OK, sendMessage(pair.held, {0, Kind::OneWay, 27, 0, 1, 0, 0, 0}, parcel, {}));
    EXPECT_EQ((Bytes{'V', 'X', 'X', '1', 3, 0, 0, 0, 27, 0, 0, 0, 0, 0, 0, 0, 1, 0,
                     0,   0,   4,   0,   0, 0, 0, 0, 0,  0, 0, 0, 0, 0, 4, 3, 2, 1}),
              raw::receive(pair.served.get()));
}

TEST(AMessage, CarriesItsBindersBehindThePayload) {
    const SocketPair pair = makeSocketPair();
    SocketPair reference = makeSocketPair();
    Parcel parcel;
    parcel.writeInt32(9);
    Attachments attachments;
    attachments.records.push_back({4, 0, {{0x1111111111111111, 0x2222222222222222}}});
    attachments.fds.push_back(std::move(reference.held));
    parcel.writeInplace(24);
    ASSERT_EQ(OK,
              sendMessage(pair.held, {0, Kind::Request, 2, 0, 0, 0, 0, 0}, parcel, attachments));
    const Bytes bytes = raw::receive(pair.served.get());
    ASSERT_EQ(32U + 28U + 24U, bytes.size());
    EXPECT_EQ((Bytes{28, 0, 0, 0, 1, 0, 0, 0, 0, 0, 0, 0}),
              Bytes(bytes.begin() + 20, bytes.begin() + 32));
    EXPECT_EQ((Bytes{4,    0,    0,    0,    0,    0,    0,    0,    0x11, 0x11, 0x11, 0x11,
                     0x11, 0x11, 0x11, 0x11, 0x22, 0x22, 0x22, 0x22, 0x22, 0x22, 0x22, 0x22}),
              Bytes(bytes.begin() + 60, bytes.end()));
}

TEST(AMessage, OfMoreThanAPacketLeavesAllButTheBeginningOfItsPayloadBehind) {
    const SocketPair pair = makeSocketPair();
    Parcel parcel;
    std::memset(parcel.writeInplace(65504), 5, 65504);
    ASSERT_EQ(OK, sendMessage(pair.held, {0, Kind::Request, 2, 0, 0, 0, 0, 0}, parcel, {}));
    EXPECT_EQ(65536U, raw::receive(pair.served.get()).size());
    parcel.writeInt32(1);
    ASSERT_EQ(OK, sendMessage(pair.held, {0, Kind::Request, 2, 0, 0, 0, 0, 0}, parcel, {}));
    const Bytes bytes = raw::receive(pair.served.get());
    ASSERT_EQ(32U + 32768U, bytes.size());
    EXPECT_EQ((Bytes{0xE4, 0xFF, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0}),
              Bytes(bytes.begin() + 20, bytes.begin() + 32));
    EXPECT_EQ(Bytes(32768, 5), Bytes(bytes.begin() + 32, bytes.end()));
}

TEST(AnAdopt, NamesTheProcessItIsForAndItsUser) {
    const SocketPair pair = makeSocketPair();
    const SocketPair given = makeSocketPair();
    constexpr auto kRole = android::transport::Role::Control;
    ASSERT_EQ(OK, sendAdopt(pair.held, kRole, given.served, {7, 9}));
    EXPECT_EQ((Bytes{'V', 'X', 'X', '1', 4, 0, 0, 0, 1, 0, 0, 0, 9, 0, 0, 0,
                     7,   0,   0,   0,   0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}),
              raw::receivePacket(pair.served.get()));
    ASSERT_EQ(OK, sendAdopt(pair.held, kRole, given.served, {7, 9}));
    Parcel empty;
    Envelope envelope;
    ASSERT_EQ(Received::Message, receiveMessage(pair.served, false, empty, envelope));
    EXPECT_EQ(7, holderOf(envelope.header()).pid);
    EXPECT_EQ(9U, holderOf(envelope.header()).uid);
}

TEST(AReply, IsAnnouncedWhereDescriptorsComeWithIt) {
    const SocketPair pair = makeSocketPair();
    Parcel large;
    ASSERT_EQ(OK, large.setDataSize(70000));
    ASSERT_EQ(OK, sendMessage(pair.held, {0, Kind::Reply, 7, 0, 0, 0, 0, 0}, large, {}));
    EXPECT_EQ((Bytes{'V', 'X', 'X', '1', 2, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                     0,   0,   0,   0,   0, 0, 0, 0, 0, 0, 0, 0, 4, 0, 0, 0}),
              raw::receivePacket(pair.served.get()));
    EXPECT_EQ(32U + 32768U, raw::receivePacket(pair.served.get()).size());
}

TEST(AMessage, FindsNoRoomWhereNobodyReads) {
    const SocketPair pair = makeSocketPair();
    const Parcel parcel;
    android::status_t status = OK;
    int sent = 0;
    while (status == OK) {
        status = sendMessage(pair.held, {0, Kind::OneWay, 1, 0, 1, 0, 0, 0}, parcel, {});
        ++sent;
    }
    EXPECT_EQ(android::WOULD_BLOCK, status);
    EXPECT_LT(sent, 10000);
}

TEST(AMessage, FindsNobodyWhereTheOtherEndIsClosed) {
    SocketPair pair = makeSocketPair();
    pair.served.reset();
    EXPECT_EQ(android::DEAD_OBJECT,
              sendMessage(pair.held, {0, Kind::OneWay, 1, 0, 1, 0, 0, 0}, Parcel(), {}));
}

// A socket of another family that hears itself. With each packet it tells the hops that are left,
// which has the number that SCM_CREDENTIALS has where a socket is local.
Fd socketThatTellsHops() {
    Fd socket(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0));
    const int on = 1;
    sockaddr_in self = {};
    self.sin_family = AF_INET;
    self.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof(self);
    auto* const address = reinterpret_cast<sockaddr*>(&self);
    EXPECT_EQ(0, setsockopt(socket.get(), IPPROTO_IP, IP_RECVTTL, &on, sizeof(on)));
    EXPECT_EQ(0, bind(socket.get(), address, size));
    EXPECT_EQ(0, getsockname(socket.get(), address, &size));
    EXPECT_EQ(0, connect(socket.get(), address, size));
    return socket;
}

TEST(AMessage, OverASocketThatIsNotLocalHasNoSenderAndNoDescriptors) {
    static_assert(static_cast<int>(IP_TTL) == static_cast<int>(SCM_CREDENTIALS), "taken for it");
    const Fd socket = socketThatTellsHops();
    ASSERT_EQ(OK, sendMessage(socket, {0, Kind::OneWay, 1, 0, 1, 0, 0, 0}, Parcel(), {}));
    pollfd request = {socket.get(), POLLIN, 0};
    ASSERT_EQ(1, poll(&request, 1, 60000));
    Parcel parcel;
    Envelope envelope;
    ASSERT_EQ(Received::Message, receiveMessage(socket, false, parcel, envelope));
    EXPECT_EQ(0, envelope.senderPid());
    EXPECT_EQ(0U, envelope.fdCount());
}

bool sound(const raw::Words& words, const Bytes& rest = {}, size_t fds = 0) {
    const Bytes bytes = raw::packet(words, rest);
    Layout layout;
    return decode(bytes.data(), bytes.size(), fds, &layout);
}

raw::Words of(uint32_t kind, uint32_t code, uint32_t flags, uint32_t payload, uint32_t objects = 0,
              uint32_t options = 0) {
    raw::Words words;
    words.kind = kind;
    words.code = code;
    words.flags = flags;
    words.payloadSize = payload;
    words.objects = objects;
    words.options = options;
    return words;
}

TEST(ASoundMessage, IsOneOfTheFourKinds) {
    EXPECT_TRUE(sound(of(raw::kRequest, 7, 0, 4), Bytes(4)));
    EXPECT_TRUE(sound(of(raw::kReply, 7, 0, 4), Bytes(4)));
    EXPECT_TRUE(sound(of(raw::kOneWay, 7, 1, 4), Bytes(4)));
    EXPECT_TRUE(sound(of(raw::kAdopt, raw::kControl, 0, 0), {}, 1));
    EXPECT_TRUE(sound(of(raw::kAdopt, raw::kCalls, 0, 0), {}, 1));
    EXPECT_FALSE(sound(of(0, 7, 0, 4), Bytes(4)));
    EXPECT_FALSE(sound(of(5, 7, 0, 4), Bytes(4)));
    EXPECT_FALSE(sound(of(raw::kAdopt, 0, 0, 0), {}, 1));
    EXPECT_FALSE(sound(of(raw::kAdopt, 3, 0, 0), {}, 1));
    EXPECT_FALSE(sound(of(raw::kAdopt, raw::kControl, 0, 4), Bytes(4), 1));
}

TEST(ASoundMessage, StaysWithinItsKindsLimit) {
    const Bytes begin(32768);
    EXPECT_TRUE(sound(of(raw::kRequest, 7, 0, 1040384, 0, 1), begin, 1));
    EXPECT_FALSE(sound(of(raw::kRequest, 7, 0, 1040388, 0, 1), begin, 1));
    EXPECT_TRUE(sound(of(raw::kOneWay, 7, 1, 520192, 0, 1), begin, 1));
    EXPECT_FALSE(sound(of(raw::kOneWay, 7, 1, 520196, 0, 1), begin, 1));
}

TEST(ASoundMessage, IsCountedOnlyIfItIsAOneWayCall) {
    EXPECT_TRUE(sound(of(raw::kOneWay, 7, 1, 4, 0, 2), Bytes(4)));
    EXPECT_TRUE(sound(of(raw::kOneWay, 7, 1, 70000, 0, 3), Bytes(32768), 1));
    EXPECT_FALSE(sound(of(raw::kRequest, 7, 0, 4, 0, 2), Bytes(4)));
    EXPECT_FALSE(sound(of(raw::kReply, 7, 0, 4, 0, 2), Bytes(4)));
    EXPECT_FALSE(sound(of(raw::kAdopt, raw::kControl, 0, 0, 0, 2), {}, 1));
}

TEST(ASoundMessage, AnnouncesDescriptorsOnlyAsAReplyWithNothingElse) {
    EXPECT_TRUE(sound(of(raw::kReply, 7, 0, 0, 0, 4)));
    EXPECT_FALSE(sound(of(raw::kReply, 7, 0, 4, 0, 4), Bytes(4)));
    EXPECT_FALSE(sound(of(raw::kReply, 7, 0, 70000, 0, 5), Bytes(32768), 1));
    EXPECT_FALSE(sound(of(raw::kRequest, 7, 0, 0, 0, 4)));
    EXPECT_FALSE(sound(of(raw::kOneWay, 7, 1, 0, 0, 4)));
    EXPECT_FALSE(sound(of(raw::kAdopt, raw::kControl, 0, 0, 0, 4), {}, 1));
    EXPECT_FALSE(sound(of(raw::kReply, 7, 0, 0, 0, 8)));
}

TEST(ASoundMessage, HasTheBeginningOfAPayloadThatIsInAMemfd) {
    EXPECT_TRUE(sound(of(raw::kRequest, 7, 0, 32769, 0, 1), Bytes(32768), 1));
    EXPECT_FALSE(sound(of(raw::kRequest, 7, 0, 32768, 0, 1), Bytes(32768), 1));
    EXPECT_FALSE(sound(of(raw::kRequest, 7, 0, 70000, 0, 1), Bytes(32767), 1));
    EXPECT_FALSE(sound(of(raw::kRequest, 7, 0, 70000, 0, 1), Bytes(32769), 1));
    EXPECT_FALSE(sound(of(raw::kRequest, 7, 0, 70000, 0, 1), {}, 1));
    EXPECT_FALSE(sound(of(raw::kRequest, 7, 0, 56, 0, 1), Bytes(56), 1));
}

TEST(ASoundMessage, HasADescriptorForEachBinderAndForTheMemfd) {
    const Bytes binder = raw::joined(Bytes(24), raw::record(0, 1));
    EXPECT_TRUE(sound(of(raw::kRequest, 7, 0, 24, 1), binder, 1));
    EXPECT_FALSE(sound(of(raw::kRequest, 7, 0, 24, 1), binder, 0));
    EXPECT_FALSE(sound(of(raw::kRequest, 7, 0, 24, 1), binder, 2));
    const Bytes large = raw::joined(Bytes(32768), raw::record(0, 1));
    EXPECT_TRUE(sound(of(raw::kRequest, 7, 0, 70000, 1, 1), large, 2));
    EXPECT_FALSE(sound(of(raw::kRequest, 7, 0, 70000, 1, 1), large, 1));
    EXPECT_FALSE(sound(of(raw::kRequest, 7, 0, 4), Bytes(4), 1));
}

TEST(ASoundMessage, HasItsBindersInOrderAndApart) {
    const auto two = [](uint32_t first, uint32_t second) {
        const Bytes records = raw::joined(raw::record(first, 1), raw::record(second, 2));
        return sound(of(raw::kRequest, 7, 0, 56, 2), raw::joined(Bytes(56), records), 2);
    };
    EXPECT_TRUE(two(0, 24));
    EXPECT_TRUE(two(4, 32));
    EXPECT_FALSE(two(24, 0));
    EXPECT_FALSE(two(0, 20));
    EXPECT_FALSE(two(0, 36));
    EXPECT_FALSE(two(2, 28));
}

}  // namespace
