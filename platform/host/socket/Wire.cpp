// SPDX-License-Identifier: Apache-2.0
#include "socket/Wire.h"

#include <cstring>

namespace android::transport {

namespace {

constexpr uint32_t kOneWayFlag = 1;

bool replyOptionsAreSound(const Header& header) {
    return announcesDescriptors(header) ? header.options == kDescriptorsFollow &&
                                              header.payloadSize == 0 && header.objectCount == 0
                                        : (header.options & ~kPayloadInMemfd) == 0;
}

bool kindIsSound(const Header& header) {
    switch (header.kind) {
        case Kind::Request:
            return (header.flags & kOneWayFlag) == 0 && header.status == 0 &&
                   (header.options & ~kPayloadInMemfd) == 0;
        case Kind::OneWay:
            return (header.flags & kOneWayFlag) != 0 && header.status == 0 &&
                   (header.options & ~(kPayloadInMemfd | kCounted)) == 0;
        case Kind::Reply:
            return header.flags == 0 && replyOptionsAreSound(header);
        case Kind::Adopt:
            return header.code >= static_cast<uint32_t>(Role::Control) &&
                   header.code <= static_cast<uint32_t>(Role::Calls) && header.payloadSize == 0 &&
                   header.objectCount == 0 && header.options == 0;
    }
    return false;
}

// By the header.
size_t claimedFds(const Header& header) {
    const bool isOneMore = header.kind == Kind::Adopt || (header.options & kPayloadInMemfd) != 0;
    return header.objectCount + (isOneMore ? size_t{1} : 0);
}

bool recordsAreSound(const uint8_t* packet, const Layout& layout) {
    size_t free = 0;
    for (size_t i = 0; i < layout.header.objectCount; ++i) {
        const ObjectRecord record = recordAt(packet, layout, i);
        if (record.reserved != 0 || record.offset % 4 != 0 || record.offset < free ||
            layout.header.payloadSize < kBinderBytes ||
            record.offset > layout.header.payloadSize - kBinderBytes) {
            return false;
        }
        free = record.offset + kBinderBytes;
    }
    return true;
}

}  // namespace

size_t largestPayload(Kind kind) {
    return kind == Kind::OneWay ? kLargestOneWay : kLargestRequest;
}

bool decode(const uint8_t* packet, size_t size, size_t fdCount, Layout* out) {
    if (size < sizeof(Header)) {
        return false;
    }
    Layout layout{};
    std::memcpy(&layout.header, packet, sizeof(Header));
    const Header& header = layout.header;
    if (header.magic != kMagic || header.payloadSize > largestPayload(header.kind) ||
        !kindIsSound(header) || header.objectCount > kMaxObjects ||
        (fdCount != kFdsAreLost && fdCount != claimedFds(header))) {
        return false;
    }
    const bool apart = (header.options & kPayloadInMemfd) != 0;
    if (apart && header.payloadSize <= kInlineWithMemfd) {
        return false;
    }
    layout.inlinePayload = apart ? kInlineWithMemfd : header.payloadSize;
    layout.records = sizeof(Header) + layout.inlinePayload;
    if (size != layout.records + header.objectCount * sizeof(ObjectRecord) ||
        !recordsAreSound(packet, layout)) {
        return false;
    }
    *out = layout;
    return true;
}

ObjectRecord recordAt(const uint8_t* packet, const Layout& layout, size_t index) {
    ObjectRecord record;
    std::memcpy(&record, packet + layout.records + index * sizeof(record), sizeof(record));
    return record;
}

}  // namespace android::transport
