// SPDX-License-Identifier: Apache-2.0
#include "tests/kernel/FakeDriver.h"

#include <fcntl.h>

#include <algorithm>
#include <cerrno>
#include <stdexcept>
#include <utility>

namespace fake_driver {

namespace {

int fail(int error) {
    errno = error;
    return error != 0 ? -1 : 0;
}

}  // namespace

android::transport::Fd FakeDriver::open(const char* /*path*/) {
    (void)fail(openError);
    return android::transport::Fd(openError != 0 ? -1 : ::open("/dev/null", O_RDWR | O_CLOEXEC));
}

void* FakeDriver::map(int /*fd*/, size_t size) {
    (void)fail(ENOMEM);
    mapped = mapFails ? 0 : size;
    mMemory.resize(mapped);
    return mapFails ? nullptr : mMemory.data();
}

void FakeDriver::unmap(void* /*address*/, size_t size) {
    mapped -= size;
}

int FakeDriver::startThread(std::function<void()> body) {
    if (threadError == 0) {
        threads.push_back(std::move(body));
    }
    return threadError;
}

void FakeDriver::runThreads() {
    for (const auto& body : std::exchange(threads, {})) {
        body();
    }
}

int FakeDriver::ioctl(int /*fd*/, unsigned long request, void* argument) {
    if (request != BINDER_WRITE_READ && requestInterruptions > 0) {
        --requestInterruptions;
        return fail(EINTR);
    }
    switch (request) {
        case BINDER_VERSION:
            static_cast<binder_version*>(argument)->protocol_version = version;
            return fail(versionError);
        case BINDER_SET_MAX_THREADS:
            maxThreads = *static_cast<uint32_t*>(argument);
            return 0;
        case BINDER_SET_CONTEXT_MGR:
            return fail(contextError);
        case BINDER_THREAD_EXIT:
            ++threadExits;
            return 0;
        case BINDER_WRITE_READ:
            return transfer(static_cast<binder_write_read*>(argument));
        default:
            return fail(EINVAL);
    }
}

int FakeDriver::transfer(binder_write_read* transfer) {
    transfer->write_consumed =
        take(android::kernel::toPointer<const uint8_t>(transfer->write_buffer),
             static_cast<size_t>(transfer->write_size));
    if (interruptions > 0) {
        --interruptions;
        return fail(EINTR);
    }
    if (transfer->read_size == 0) {
        return 0;
    }
    if (reads.empty()) {
        return fail(ECONNREFUSED);
    }
    const auto next = reads.front();
    reads.pop_front();
    const Bytes bytes = next();
    std::copy(bytes.begin(), bytes.end(),
              android::kernel::toPointer<uint8_t>(transfer->read_buffer));
    transfer->read_consumed = bytes.size();
    return 0;
}

size_t FakeDriver::take(const uint8_t* commands, size_t size) {
    size_t done = 0;
    for (size_t taken = 0; done < size && (!commandsAWrite || taken < *commandsAWrite); ++taken) {
        uint32_t number = 0;
        std::memcpy(&number, commands + done, sizeof(number));
        const uint8_t* const payload = commands + done + sizeof(number);
        written.push_back({number, Bytes(payload, payload + _IOC_SIZE(number))});
        if (onWrite) {
            onWrite(written.back());
        }
        done += sizeof(number) + _IOC_SIZE(number);
    }
    return done;
}

std::vector<uint32_t> FakeDriver::numbers() const {
    std::vector<uint32_t> all;
    for (const Command& one : written) {
        all.push_back(one.number);
    }
    return all;
}

size_t FakeDriver::count(uint32_t number) const {
    const auto same = [number](const Command& one) { return one.number == number; };
    return static_cast<size_t>(std::count_if(written.begin(), written.end(), same));
}

const Command& FakeDriver::last(uint32_t number) const {
    const auto same = [number](const Command& one) { return one.number == number; };
    const auto found = std::find_if(written.rbegin(), written.rend(), same);
    if (found == written.rend()) {
        throw std::out_of_range("no such command has been written");
    }
    return *found;
}

}  // namespace fake_driver
