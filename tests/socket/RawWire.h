// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SOCKET_RAWWIRE_H
#define VOXTREL_TESTS_SOCKET_RAWWIRE_H

#include <cstdint>
#include <string>
#include <vector>

namespace raw {

// The runtime's wire as a stranger would write it, by hand: nothing here uses the runtime's own
// code.

using Bytes = std::vector<uint8_t>;

enum Kind : uint32_t { kRequest = 1, kReply = 2, kOneWay = 3, kAdopt = 4 };
enum Role : uint32_t { kControl = 1, kCalls = 2 };

/// A packet's eight words, "VXX1" first.
struct Words {
    uint32_t kind = kRequest;
    uint32_t code = 0;
    int32_t status = 0;
    uint32_t flags = 0;
    uint32_t payloadSize = 0;
    uint32_t objects = 0;
    uint32_t options = 0;
    uint32_t magic = 0x31585856;
};
Bytes packet(const Words& words, const Bytes& rest = {});
/// One binder's 24 bytes behind the payload.
Bytes record(uint32_t offset, uint64_t id, uint32_t reserved = 0);
Bytes joined(const Bytes& a, const Bytes& b);

/// One descriptor, closed at the end.
class Fd {
public:
    explicit Fd(int fd) : mFd(fd) {}
    ~Fd();
    Fd(Fd&& other) noexcept;
    Fd& operator=(Fd&&) = delete;
    int get() const { return mFd; }

private:
    int mFd;
};

/// Connects to the service manager; -1 when there is none.
Fd connectTo(const std::string& path);
/// False when the other side has gone, or takes no more.
bool send(int socket, const Bytes& bytes, const std::vector<int>& fds = {});
/// Asks the service manager, through its control socket, for a service's control socket; -1 when
/// there is none.
Fd controlOf(int manager, const std::string& name);
/// Opens a socket for calls through a control socket.
Fd openCalls(int control);
/// Waits for one packet; empty when the other side has hung up.
Bytes receivePacket(int socket);
/// The same; of a reply that is announced, the reply.
Bytes receive(int socket);
/// Waits for one message, and gives the first descriptor that came with it; -1 without one.
Fd receiveFd(int socket);
/// Two ends of a new connection.
struct Pair {
    Fd ours;
    Fd theirs;
};
Pair makePair();
/// The payload that asks the service manager for a name.
Bytes managerRequest(const std::string& name);
/// The status word of a reply.
int32_t statusOf(const Bytes& reply);
/// Waits until the other side has hung up; false after 60 s.
bool hangsUp(int socket);

}  // namespace raw

#endif
