// SPDX-License-Identifier: Apache-2.0
#include "bench/platform/driver/RawBinder.h"

#include <fcntl.h>
#include <linux/android/binder.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace bench {

namespace {

constexpr size_t kRoom = 65536;
constexpr uint32_t kEcho = 1;
constexpr uint32_t kCount = 2;
uint8_t gBytes[kRoom];

[[noreturn]] void giveUp(const char* what) {
    std::perror(what);
    std::exit(1);
}

int openDriver(const char* path) {
    const int driver = open(path, O_RDWR | O_CLOEXEC);
    if (driver < 0 ||
        mmap(nullptr, 1024 * 1024 - 8192, PROT_READ, MAP_PRIVATE, driver, 0) == MAP_FAILED) {
        giveUp(path);
    }
    return driver;
}

/// Commands one behind the other, as the driver reads them.
class Commands {
public:
    template <typename T>
    void add(const T& value) {
        std::memcpy(mBytes + mSize, &value, sizeof(value));
        mSize += sizeof(value);
    }
    void free(uint64_t buffer) {
        if (buffer != 0) {
            add(uint32_t{BC_FREE_BUFFER});
            add(binder_uintptr_t{buffer});
        }
    }
    /// Writes them and reads what comes; how much that is.
    size_t exchange(int driver, uint8_t* read, size_t room) {
        binder_write_read transfer = {};
        transfer.write_size = mSize;
        transfer.write_buffer = reinterpret_cast<uintptr_t>(mBytes);
        transfer.read_size = room;
        transfer.read_buffer = reinterpret_cast<uintptr_t>(read);
        if (ioctl(driver, BINDER_WRITE_READ, &transfer) != 0) {
            giveUp("BINDER_WRITE_READ");
        }
        mSize = 0;
        return static_cast<size_t>(transfer.read_consumed);
    }

private:
    uint8_t mBytes[256];
    size_t mSize = 0;
};

/// Finds one return among those that were read; what came with it. False: it is not there.
bool find(const uint8_t* read, size_t size, uint32_t wanted, binder_transaction_data* out) {
    for (size_t at = 0; at + sizeof(uint32_t) <= size;) {
        uint32_t number = 0;
        std::memcpy(&number, read + at, sizeof(number));
        if (number == BR_FAILED_REPLY || number == BR_DEAD_REPLY) {
            std::fprintf(stderr, "the driver refuses a bare call\n");
            std::exit(1);
        }
        if (number == wanted) {
            std::memcpy(out, read + at + sizeof(number), _IOC_SIZE(number));
            return true;
        }
        at += sizeof(number) + _IOC_SIZE(number);
    }
    return false;
}

void addData(binder_transaction_data* transaction, const void* data, size_t size) {
    transaction->data_size = size;
    transaction->data.ptr.buffer = reinterpret_cast<uintptr_t>(data);
}

[[noreturn]] void answer(int driver) {
    Commands commands;
    uint8_t read[256];
    uint32_t count = 0;
    commands.add(uint32_t{BC_ENTER_LOOPER});
    for (;;) {
        const size_t size = commands.exchange(driver, read, sizeof(read));
        binder_transaction_data request = {};
        if (!find(read, size, BR_TRANSACTION, &request)) {
            continue;
        }
        commands.free(request.data.ptr.buffer);
        if ((request.flags & TF_ONE_WAY) != 0) {
            ++count;
            continue;
        }
        binder_transaction_data reply = {};
        const bool echoes = request.code == kEcho;
        addData(&reply, echoes ? static_cast<const void*>(gBytes) : &count,
                echoes ? static_cast<size_t>(request.data_size) : sizeof(count));
        commands.add(uint32_t{BC_REPLY});
        commands.add(reply);
    }
}

[[noreturn]] void serve(const char* path, int ready) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const int driver = openDriver(path);
    int32_t unused = 0;
    if (ioctl(driver, BINDER_SET_CONTEXT_MGR, &unused) != 0) {
        giveUp("BINDER_SET_CONTEXT_MGR");
    }
    (void)!write(ready, "r", 1);  // who does not hear it gives up
    answer(driver);
}

}  // namespace

RawBinder::RawBinder(const char* path) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        giveUp("pipe2");
    }
    mPid = fork();
    if (mPid == 0) {
        serve(path, ends[1]);
    }
    close(ends[1]);
    char ready = 0;
    if (read(ends[0], &ready, 1) != 1) {
        std::fprintf(stderr, "%s: the bare peer did not start\n", path);
        std::exit(1);
    }
    close(ends[0]);
    mDriver = openDriver(path);
}

RawBinder::~RawBinder() {
    kill(mPid, SIGKILL);
    waitpid(mPid, nullptr, 0);
    close(mDriver);
}

uint32_t RawBinder::exchange(uint32_t code, size_t size, uint32_t flags) {
    Commands commands;
    commands.free(mToFree);
    mToFree = 0;
    binder_transaction_data request = {};
    request.code = code;
    request.flags = flags;
    addData(&request, gBytes, size);
    commands.add(uint32_t{BC_TRANSACTION});
    commands.add(request);
    const bool isOneWay = (flags & TF_ONE_WAY) != 0;
    const uint32_t wanted = isOneWay ? static_cast<uint32_t>(BR_TRANSACTION_COMPLETE) : BR_REPLY;
    binder_transaction_data reply = {};
    uint8_t read[256];
    while (!find(read, commands.exchange(mDriver, read, sizeof(read)), wanted, &reply)) {
    }
    if (isOneWay) {
        return 0;
    }
    uint32_t first = 0;
    if (reply.data_size >= sizeof(first)) {
        std::memcpy(&first,
                    reinterpret_cast<const void*>(static_cast<uintptr_t>(reply.data.ptr.buffer)),
                    sizeof(first));
    }
    mToFree = reply.data.ptr.buffer;
    return first;
}

void RawBinder::call(size_t size) {
    (void)exchange(kEcho, size, 0);
}

void RawBinder::sendOneWay(size_t size) {
    (void)exchange(kEcho, size, TF_ONE_WAY);
    ++mSent;
}

void RawBinder::drain() {
    while (exchange(kCount, 0, 0) != mSent) {
    }
}

}  // namespace bench
