// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_KERNEL_FAKEDRIVER_H
#define VOXTREL_TESTS_KERNEL_FAKEDRIVER_H

#include <cstring>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "kernel/Device.h"
#include "kernel/Protocol.h"

namespace fake_driver {

using Bytes = std::vector<uint8_t>;

/// The bytes of values one behind the other, as the driver's buffers have them.
template <typename... Values>
Bytes bytesOf(const Values&... values) {
    Bytes bytes;
    const auto append = [&bytes](const void* from, size_t size) {
        const auto* begin = static_cast<const uint8_t*>(from);
        bytes.insert(bytes.end(), begin, begin + size);
    };
    (append(&values, sizeof(values)), ...);
    return bytes;
}

/// A command that was written, with what came with it.
struct Command {
    uint32_t number;
    Bytes payload;

    template <typename T>
    T as() const {
        T value = {};
        std::memcpy(&value, payload.data(), std::min(sizeof(value), payload.size()));
        return value;
    }
};

/// The driver as a test writes it: what is written is kept, each read gives the next of the reads
/// that were prepared. A read without one fails as for a process that the driver serves no longer.
class FakeDriver : public android::kernel::SystemCalls {
public:
    android::transport::Fd open(const char* path) override;
    int ioctl(int fd, unsigned long request, void* argument) override;
    void* map(int fd, size_t size) override;
    void unmap(void* address, size_t size) override;
    int startThread(std::function<void()> body) override;

    /// Prepared reads; one is used up by each read.
    std::deque<std::function<Bytes()>> reads;
    void willRead(const Bytes& bytes) {
        reads.emplace_back([bytes] { return bytes; });
    }

    /// The threads that were asked for; they run when the test has them run.
    std::vector<std::function<void()>> threads;
    void runThreads();
    /// Why no thread can be started.
    int threadError = 0;

    /// What the test does at each command as it is written.
    std::function<void(const Command& command)> onWrite;

    std::vector<Command> written;
    std::vector<uint32_t> numbers() const;
    size_t count(uint32_t number) const;
    const Command& last(uint32_t number) const;

    int openError = 0;
    int versionError = 0;
    int32_t version = BINDER_CURRENT_PROTOCOL_VERSION;
    bool mapFails = false;
    size_t mapped = 0;
    uint32_t maxThreads = 0;
    int contextError = 0;
    int threadExits = 0;
    /// How many commands one write takes; all of them unless set. What is left is to be written
    /// again.
    std::optional<size_t> commandsAWrite;
    /// So many transfers are interrupted once their commands have been taken, before anything is
    /// read.
    int interruptions = 0;
    /// So many of the other requests are interrupted, too.
    int requestInterruptions = 0;

private:
    int transfer(binder_write_read* transfer);
    size_t take(const uint8_t* commands, size_t size);

    Bytes mMemory;
};

}  // namespace fake_driver

#endif
