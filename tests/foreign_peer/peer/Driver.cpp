// SPDX-License-Identifier: Apache-2.0
#include "tests/foreign_peer/peer/Driver.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>

namespace foreign {

namespace {

constexpr size_t kMapping = 256 * 1024;
constexpr size_t kReadRoom = 1024;

[[noreturn]] void giveUp(const char* what) {
    std::perror(what);
    std::exit(1);
}

}  // namespace

Driver::Driver(const char* path) : mDescriptor(open(path, O_RDWR | O_CLOEXEC)) {
    binder_version version = {};
    if (mDescriptor < 0 || ioctl(mDescriptor, BINDER_VERSION, &version) != 0) {
        giveUp(path);
    }
    if (version.protocol_version != BINDER_CURRENT_PROTOCOL_VERSION) {
        errno = EPROTO;
        giveUp(path);
    }
    if (mmap(nullptr, kMapping, PROT_READ, MAP_PRIVATE, mDescriptor, 0) == MAP_FAILED) {
        giveUp("mmap");
    }
}

Driver::~Driver() {
    close(mDescriptor);
}

bool Driver::becomeContextManager() {
    int32_t unused = 0;
    if (ioctl(mDescriptor, BINDER_SET_CONTEXT_MGR, &unused) == 0) {
        return true;
    }
    if (errno != EBUSY) {
        giveUp("BINDER_SET_CONTEXT_MGR");
    }
    return false;
}

void Driver::append(const void* from, size_t size) {
    const auto* bytes = static_cast<const uint8_t*>(from);
    mCommands.insert(mCommands.end(), bytes, bytes + size);
}

void Driver::queue(uint32_t command) {
    append(&command, sizeof(command));
}

size_t Driver::transfer(uint8_t* read, size_t room) {
    binder_write_read exchange = {};
    exchange.write_buffer = reinterpret_cast<uintptr_t>(mCommands.data());
    exchange.write_size = mCommands.size();
    exchange.read_buffer = reinterpret_cast<uintptr_t>(read);
    exchange.read_size = room;
    const int result = ioctl(mDescriptor, BINDER_WRITE_READ, &exchange);
    if (result != 0 && errno != EINTR) {
        giveUp("BINDER_WRITE_READ");
    }
    mCommands.erase(mCommands.begin(),
                    mCommands.begin() + static_cast<ptrdiff_t>(exchange.write_consumed));
    return static_cast<size_t>(exchange.read_consumed);
}

void Driver::write() {
    while (!mCommands.empty()) {
        (void)transfer(nullptr, 0);  // nothing is read
    }
}

std::vector<Return> Driver::exchange() {
    uint8_t read[kReadRoom];
    const size_t size = transfer(read, sizeof(read));
    std::vector<Return> returns;
    for (size_t at = 0; at + sizeof(uint32_t) <= size;) {
        uint32_t command = 0;
        std::memcpy(&command, read + at, sizeof(command));
        at += sizeof(command);
        returns.push_back({command, {read + at, read + at + _IOC_SIZE(command)}});
        at += _IOC_SIZE(command);
    }
    return returns;
}

}  // namespace foreign
