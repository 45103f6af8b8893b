// SPDX-License-Identifier: Apache-2.0
// Preloaded into a program under test: the n-th time that it makes a certain call, the call fails.
//
//   VOXTREL_FAULT_PROGRAM  the program it is meant for, by its short name; others run as ever
//   VOXTREL_FAULT_CALL     the call, by the name it has here; empty: all are counted
//   VOXTREL_FAULT_AT       which one fails, from 1 on; 0: none, they are counted alone
//   VOXTREL_FAULT_TIMES    how many fail from there on; default 1, 0: all
//   VOXTREL_FAULT_ERRNO    the number of the error
//   VOXTREL_FAULT_RECORD   the file that holds a voxtrel_faults::Record
//
// Calls are counted from the beginning of main() on: what goes wrong before it, in constructors of
// libraries, is not the program's to handle. Calls that the C library makes within itself do not
// come by here (the open() of fopen(), the mmap() of malloc() and of thread stacks), except for
// malloc() and its kin, which it calls as everybody does.
#include "tests/faults/injection.h"

#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <spawn.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/timerfd.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* old, size_t size);
}

namespace {

using voxtrel_faults::Record;

struct Plan {
    const char* call = "";
    uint32_t first = 0;
    uint32_t times = 1;
    int error = 0;
    Record* record = nullptr;
};

constexpr time_t kJump = 3600;

Plan gPlan;
std::atomic<bool> gArmed{false};
thread_local bool tInside = false;

uint32_t numberIn(const char* variable, uint32_t otherwise) {
    const char* text = getenv(variable);
    return text != nullptr ? static_cast<uint32_t>(strtoul(text, nullptr, 10)) : otherwise;
}

const char* textIn(const char* variable) {
    const char* text = getenv(variable);
    return text != nullptr ? text : "";
}

bool isMeant() {
    return strcmp(program_invocation_short_name, textIn("VOXTREL_FAULT_PROGRAM")) == 0;
}

void readPlan() {
    const int file = static_cast<int>(
        syscall(SYS_openat, AT_FDCWD, textIn("VOXTREL_FAULT_RECORD"), O_RDWR | O_CLOEXEC));
    void* shared = mmap(nullptr, sizeof(Record), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    if (shared == MAP_FAILED) {
        fputs("fault injection: no record to write to\n", stderr);
        _exit(125);
    }
    close(file);
    gPlan.call = textIn("VOXTREL_FAULT_CALL");
    gPlan.first = numberIn("VOXTREL_FAULT_AT", 0);
    gPlan.times = numberIn("VOXTREL_FAULT_TIMES", 1);
    gPlan.error = static_cast<int>(numberIn("VOXTREL_FAULT_ERRNO", ENOMEM));
    gPlan.record = static_cast<Record*>(shared);
}

void keepStack(void* const* frames, int count) {
    Record& record = *gPlan.record;
    for (int i = 0; i < count; ++i) {
        record.stack[i] = reinterpret_cast<uint64_t>(frames[i]);
    }
    record.frames = static_cast<uint32_t>(count);
    const int maps = static_cast<int>(syscall(SYS_openat, AT_FDCWD, "/proc/self/maps", O_RDONLY));
    size_t filled = 0;
    for (long got = 1; maps >= 0 && got > 0 && filled < sizeof record.mappings - 1;) {
        got =
            syscall(SYS_read, maps, record.mappings + filled, sizeof record.mappings - 1 - filled);
        filled += got > 0 ? static_cast<size_t>(got) : 0;
    }
    syscall(SYS_close, maps);
}

uint64_t hashOf(void* const* frames, int count) {
    uint64_t hash = 14695981039346656037U;
    for (int i = 0; i < count; ++i) {
        hash = (hash ^ reinterpret_cast<uint64_t>(frames[i])) * 1099511628211U;
    }
    return hash;
}

/// Counts a call of that name. Whether it is to fail; errno is set then.
bool fails(const char* call) {
    if (!gArmed.load(std::memory_order_acquire) || tInside ||
        (gPlan.call[0] != 0 && strcmp(call, gPlan.call) != 0)) {
        return false;
    }
    tInside = true;
    void* frames[voxtrel_faults::kMaxFrames];
    const int depth = backtrace(frames, voxtrel_faults::kMaxFrames);
    const uint32_t number = ++gPlan.record->calls;
    if (number <= voxtrel_faults::kMaxPlaces) {
        Record::Place& place = gPlan.record->places[number - 1];
        strncpy(place.call, call, sizeof place.call);
        place.stack = hashOf(frames + 1, depth - 1);
    }
    const bool due = gPlan.first != 0 && number >= gPlan.first &&
                     (gPlan.times == 0 || number - gPlan.first < gPlan.times);
    if (due && ++gPlan.record->failed == 1) {
        keepStack(frames, depth);
    }
    tInside = false;
    if (due) {
        errno = gPlan.error;
    }
    return due;
}

/// There and back.
time_t jump() {
    return gPlan.record->failed % 2 == 0 ? kJump : -kJump;
}

/// Of what write() and read() are called with, files and pipes alone run out of room or break; and
/// standard error not at all, or nobody could say what has happened.
bool isStored(int file) {
    struct stat status {};
    return file != STDERR_FILENO &&
           syscall(SYS_newfstatat, file, "", &status, AT_EMPTY_PATH) == 0 &&
           (S_ISREG(status.st_mode) || S_ISFIFO(status.st_mode));
}

/// The function that this one stands before.
template <typename Function>
Function* following(const char* name) {
    const bool before = tInside;
    tInside = true;
    auto* function = reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
    tInside = before;
    return function;
}

using Main = int(int, char**, char**);
Main* gMain = nullptr;

int mainOnceArmed(int argc, char** argv, char** environment) {
    if (isMeant()) {
        void* frames[2];
        (void)backtrace(frames, 2);  // loads what it takes
        readPlan();
        gArmed.store(true, std::memory_order_release);
    }
    return gMain(argc, argv, environment);
}

}  // namespace

// A macro, because each of these has a signature of its own.
#define VOXTREL_FAULT_POINT(Result, name, failure, parameters, arguments) \
    Result name parameters {                                              \
        static auto* const real = following<Result parameters>(#name);    \
        return fails(#name) ? (failure) : real arguments;                 \
    }

extern "C" {

int __libc_start_main(Main* main, int argc, char** argv, void (*init)(), void (*fini)(),
                      void (*loader)(), void* stack) {
    using Start = int(Main*, int, char**, void (*)(), void (*)(), void (*)(), void*);
    gMain = main;
    return following<Start>("__libc_start_main")(mainOnceArmed, argc, argv, init, fini, loader,
                                                 stack);
}

// A clock of the day that jumps an hour there and back each time that it is read. The monotonic one
// cannot jump.
int clock_gettime(clockid_t clock, timespec* now) {
    static auto* const real = following<int(clockid_t, timespec*)>("clock_gettime");
    const int result = real(clock, now);
    if (result == 0 && clock == CLOCK_REALTIME && fails("clock")) {
        now->tv_sec += jump();
    }
    return result;
}

int gettimeofday(timeval* now, void* zone) noexcept {
    static auto* const real = following<int(timeval*, void*)>("gettimeofday");
    const int result = real(now, zone);
    if (result == 0 && fails("clock")) {
        now->tv_sec += jump();
    }
    return result;
}
time_t time(time_t* place) noexcept {
    static auto* const real = following<time_t(time_t*)>("time");
    const time_t now = real(nullptr) + (fails("clock") ? jump() : 0);
    if (place != nullptr) {
        *place = now;
    }
    return now;
}

void* malloc(size_t size) {
    return fails("malloc") ? nullptr : __libc_malloc(size);
}
void* calloc(size_t count, size_t size) {
    return fails("malloc") ? nullptr : __libc_calloc(count, size);
}
void* realloc(void* old, size_t size) {
    return fails("malloc") ? nullptr : __libc_realloc(old, size);
}

int open(const char* path, int flags, ...) {
    static auto* const real = following<int(const char*, int, ...)>("open");
    va_list rest;
    va_start(rest, flags);
    const unsigned mode = (flags & O_CREAT) != 0 ? va_arg(rest, unsigned) : 0;
    va_end(rest);
    return fails("open") ? -1 : real(path, flags, mode);
}
int openat(int folder, const char* path, int flags, ...) {
    static auto* const real = following<int(int, const char*, int, ...)>("openat");
    va_list rest;
    va_start(rest, flags);
    const unsigned mode = (flags & O_CREAT) != 0 ? va_arg(rest, unsigned) : 0;
    va_end(rest);
    return fails("open") ? -1 : real(folder, path, flags, mode);
}
FILE* fopen(const char* path, const char* mode) {
    static auto* const real = following<FILE*(const char*, const char*)>("fopen");
    return fails("open") ? nullptr : real(path, mode);
}
FILE* fopen64(const char* path, const char* mode) {
    static auto* const real = following<FILE*(const char*, const char*)>("fopen64");
    return fails("open") ? nullptr : real(path, mode);
}
ssize_t write(int file, const void* data, size_t size) {
    static auto* const real = following<ssize_t(int, const void*, size_t)>("write");
    return isStored(file) && fails("write") ? -1 : real(file, data, size);
}
ssize_t read(int file, void* data, size_t size) {
    static auto* const real = following<ssize_t(int, void*, size_t)>("read");
    return isStored(file) && fails("read") ? -1 : real(file, data, size);
}
ssize_t writev(int file, const iovec* parts, int count) {
    static auto* const real = following<ssize_t(int, const iovec*, int)>("writev");
    return isStored(file) && fails("write") ? -1 : real(file, parts, count);
}
ssize_t pwritev2(int file, const iovec* parts, int count, off_t offset, int flags) {
    static auto* const real = following<ssize_t(int, const iovec*, int, off_t, int)>("pwritev2");
    return isStored(file) && fails("write") ? -1 : real(file, parts, count, offset, flags);
}
ssize_t pwrite(int file, const void* data, size_t size, off_t offset) {
    static auto* const real = following<ssize_t(int, const void*, size_t, off_t)>("pwrite");
    return isStored(file) && fails("write") ? -1 : real(file, data, size, offset);
}
ssize_t pread(int file, void* data, size_t size, off_t offset) {
    static auto* const real = following<ssize_t(int, void*, size_t, off_t)>("pread");
    return isStored(file) && fails("read") ? -1 : real(file, data, size, offset);
}
int posix_spawnp(pid_t* process, const char* program, const posix_spawn_file_actions_t* actions,
                 const posix_spawnattr_t* attributes, char* const* words,
                 char* const* environment) {
    static auto* const real =
        following<int(pid_t*, const char*, const posix_spawn_file_actions_t*,
                      const posix_spawnattr_t*, char* const*, char* const*)>("posix_spawnp");
    return fails("posix_spawnp") ? gPlan.error
                                 : real(process, program, actions, attributes, words, environment);
}
int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*),
                   void* argument) {
    static auto* const real =
        following<int(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*)>(
            "pthread_create");
    return fails("pthread_create") ? gPlan.error : real(thread, attributes, body, argument);
}

// Only what is added takes memory.
int epoll_ctl(int epoll, int operation, int file, epoll_event* event) {
    static auto* const real = following<int(int, int, int, epoll_event*)>("epoll_ctl");
    return operation == EPOLL_CTL_ADD && fails("epoll_ctl") ? -1
                                                            : real(epoll, operation, file, event);
}

VOXTREL_FAULT_POINT(ssize_t, sendmsg, -1, (int file, const msghdr* message, int flags),
                    (file, message, flags))
VOXTREL_FAULT_POINT(ssize_t, recvmsg, -1, (int file, msghdr* message, int flags),
                    (file, message, flags))
VOXTREL_FAULT_POINT(ssize_t, send, -1, (int file, const void* data, size_t size, int flags),
                    (file, data, size, flags))
VOXTREL_FAULT_POINT(ssize_t, recv, -1, (int file, void* data, size_t size, int flags),
                    (file, data, size, flags))
VOXTREL_FAULT_POINT(void*, mmap, MAP_FAILED,
                    (void* place, size_t size, int access, int flags, int file, off_t offset),
                    (place, size, access, flags, file, offset))
VOXTREL_FAULT_POINT(int, fsync, -1, (int file), (file))
VOXTREL_FAULT_POINT(int, fdatasync, -1, (int file), (file))
VOXTREL_FAULT_POINT(int, ftruncate, -1, (int file, off_t size), (file, size))
VOXTREL_FAULT_POINT(int, link, -1, (const char* from, const char* to), (from, to))
VOXTREL_FAULT_POINT(int, rename, -1, (const char* from, const char* to), (from, to))
VOXTREL_FAULT_POINT(int, mkdir, -1, (const char* path, mode_t mode), (path, mode))
VOXTREL_FAULT_POINT(int, unlink, -1, (const char* path), (path))
VOXTREL_FAULT_POINT(int, signalfd, -1, (int file, const sigset_t* set, int flags),
                    (file, set, flags))
VOXTREL_FAULT_POINT(int, flock, -1, (int file, int operation), (file, operation))
VOXTREL_FAULT_POINT(int, socket, -1, (int domain, int type, int protocol), (domain, type, protocol))
VOXTREL_FAULT_POINT(int, socketpair, -1, (int domain, int type, int protocol, int* ends),
                    (domain, type, protocol, ends))
VOXTREL_FAULT_POINT(int, bind, -1, (int file, const sockaddr* address, socklen_t size),
                    (file, address, size))
VOXTREL_FAULT_POINT(int, listen, -1, (int file, int backlog), (file, backlog))
VOXTREL_FAULT_POINT(int, connect, -1, (int file, const sockaddr* address, socklen_t size),
                    (file, address, size))
VOXTREL_FAULT_POINT(int, accept4, -1, (int file, sockaddr* address, socklen_t* size, int flags),
                    (file, address, size, flags))
VOXTREL_FAULT_POINT(int, epoll_create1, -1, (int flags), (flags))
VOXTREL_FAULT_POINT(int, epoll_wait, -1, (int epoll, epoll_event* events, int count, int timeout),
                    (epoll, events, count, timeout))
VOXTREL_FAULT_POINT(int, poll, -1, (pollfd * files, nfds_t count, int timeout),
                    (files, count, timeout))
VOXTREL_FAULT_POINT(int, eventfd, -1, (unsigned value, int flags), (value, flags))
VOXTREL_FAULT_POINT(int, timerfd_create, -1, (int clock, int flags), (clock, flags))
VOXTREL_FAULT_POINT(int, memfd_create, -1, (const char* name, unsigned flags), (name, flags))
VOXTREL_FAULT_POINT(int, pipe2, -1, (int* ends, int flags), (ends, flags))
VOXTREL_FAULT_POINT(int, dup2, -1, (int file, int to), (file, to))
VOXTREL_FAULT_POINT(pid_t, fork, -1, (), ())
VOXTREL_FAULT_POINT(int, sigtimedwait, -1,
                    (const sigset_t* set, siginfo_t* info, const timespec* limit),
                    (set, info, limit))

}  // extern "C"
