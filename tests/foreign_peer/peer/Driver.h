// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_FOREIGN_PEER_PEER_DRIVER_H
#define VOXTREL_TESTS_FOREIGN_PEER_PEER_DRIVER_H

#include <linux/android/binder.h>

#include <cstdint>
#include <cstring>
#include <vector>

namespace foreign {

/// What the driver returns, with its payload.
struct Return {
    uint32_t command;
    std::vector<uint8_t> payload;

    template <typename T>
    T as() const {
        T value = {};
        std::memcpy(&value, payload.data(), sizeof(value));
        return value;
    }
};

/// The driver's device with one thread. What fails ends the program with a line.
class Driver {
public:
    explicit Driver(const char* path);
    ~Driver();
    Driver(const Driver&) = delete;
    Driver& operator=(const Driver&) = delete;

    int descriptor() const { return mDescriptor; }
    /// False where somebody else is the context manager.
    bool becomeContextManager();

    /// Commands are written by the next `write` or `exchange`. What a transaction points to must
    /// live until then.
    void queue(uint32_t command);
    template <typename T>
    void queue(uint32_t command, const T& payload) {
        queue(command);
        append(&payload, sizeof(payload));
    }
    void write();
    /// Writes, and waits until something is returned.
    std::vector<Return> exchange();

private:
    void append(const void* from, size_t size);
    size_t transfer(uint8_t* read, size_t room);

    int mDescriptor;
    std::vector<uint8_t> mCommands;
};

}  // namespace foreign

#endif
