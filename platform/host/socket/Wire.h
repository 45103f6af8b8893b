// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_WIRE_H
#define VOXTREL_SOCKET_WIRE_H

#include <cstddef>
#include <cstdint>

namespace android::transport {

// One message is one packet of a SOCK_SEQPACKET socket: a header, the payload (unless it travels in
// a memfd), and one record for each binder in the payload. All words are 32 bits wide and in native
// order, so that 32-bit and 64-bit processes talk to each other.

enum class Kind : uint32_t {
    Request = 1,  ///< a call whose caller waits
    Reply = 2,    ///< `code` is how many one-way calls through the same control socket are done
    OneWay = 3,
    Adopt = 4,  ///< "serve this socket too": `code` is a Role, and one descriptor comes along
};

/// What a socket is for, as the end that serves it sees it.
enum class Role : uint32_t {
    Control = 1,  ///< stands for the reference itself; carries Adopt only, and hangs up at the end
    Calls = 2,    ///< one-way calls, and requests, one at a time, with their replies
};

/// Names a node for as long as it lives, wherever references to it travel. Random, so that only who
/// was given a reference can name it; in the manners of a driver its second word is the `name` of
/// its process's `BudgetPage`.
struct NodeId {
    uint64_t words[2];
    bool operator==(const NodeId& other) const {
        return words[0] == other.words[0] && words[1] == other.words[1];
    }
};

struct NodeIdHash {
    size_t operator()(const NodeId& id) const { return static_cast<size_t>(id.words[0]); }
};

struct Header {
    uint32_t magic;
    Kind kind;
    uint32_t code;
    int32_t status;
    uint32_t flags;
    uint32_t payloadSize;
    uint32_t objectCount;
    uint32_t options;
};
static_assert(sizeof(Header) == 32, "the same on every machine");

/// The payload is in a memfd, the first descriptor of the message, but for its first
/// `kInlineWithMemfd` bytes.
constexpr uint32_t kPayloadInMemfd = 1;
/// A one-way call that is counted in its receiver's `BudgetPage`.
constexpr uint32_t kCounted = 2;
/// A reply without contents: the reply itself follows in a packet of its own, with descriptors. So
/// a caller takes what descriptors cost on itself only where some come.
constexpr uint32_t kDescriptorsFollow = 4;

inline bool announcesDescriptors(const Header& header) {
    return (header.options & kDescriptorsFollow) != 0;
}

struct ObjectRecord {
    uint32_t offset;  ///< of the binder's 24 bytes in the payload
    uint32_t reserved;
    NodeId id;
};
static_assert(sizeof(ObjectRecord) == 24, "the same on every machine");

constexpr uint32_t kMagic = 0x31585856;  // "VXX1"
constexpr size_t kLargestPacket = 65536;
// A socket's buffer counts packets, not memfds: without some of it in the packet, 277 of the
// largest one-way calls would fit into one.
constexpr size_t kInlineWithMemfd = 32768;
constexpr size_t kLargestRequest = 1040384;
constexpr size_t kLargestOneWay = kLargestRequest / 2;
// However much waits at a node, a connection is read on while no more one-way calls of its own wait
// there than this. So a two-way call may go behind so many: whatever they wait for, it is received.
constexpr uint32_t kMaxAhead = 8;
constexpr uint32_t kMaxBytesOfOneAhead = 16384;
constexpr size_t kMaxBytesAhead = size_t{kMaxAhead} * kMaxBytesOfOneAhead;
constexpr size_t kBinderBytes = 24;
constexpr size_t kMaxObjects = 64;
constexpr size_t kMaxFds = kMaxObjects + 1;

/// Largest payload that a message of this kind may carry.
size_t largestPayload(Kind kind);

/// Where the parts of a packet stand.
struct Layout {
    Header header;
    size_t inlinePayload;  ///< bytes of payload in the packet, right behind the header
    size_t records;        ///< where the object records begin
};

/// In place of a number, of a packet whose descriptors this process had no room for.
constexpr size_t kFdsAreLost = SIZE_MAX;

/// Takes a packet of `size` bytes that came with `fdCount` descriptors apart. False when anything
/// in it contradicts anything else; nothing outside of the packet is looked at.
bool decode(const uint8_t* packet, size_t size, size_t fdCount, Layout* out);

/// One record of a packet that `decode` accepted.
ObjectRecord recordAt(const uint8_t* packet, const Layout& layout, size_t index);

}  // namespace android::transport

#endif
