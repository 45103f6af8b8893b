// SPDX-License-Identifier: Apache-2.0
#include "bench/platform/SdBus.h"

#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace bench {

namespace {

constexpr const char* kName = "voxtrel.Bench";
constexpr const char* kPath = "/bench";

void check(int result, const char* what) {
    if (result < 0) {
        std::fprintf(stderr, "%s: %s\n", what, std::strerror(-result));
        std::_Exit(1);
    }
}

int onEcho(sd_bus_message* call, void* /*data*/, sd_bus_error* /*error*/) {
    const void* bytes = nullptr;
    size_t size = 0;
    sd_bus_message* reply = nullptr;
    check(sd_bus_message_read_array(call, 'y', &bytes, &size), "read");
    check(sd_bus_message_new_method_return(call, &reply), "reply");
    check(sd_bus_message_append_array(reply, 'y', bytes, size), "append");
    check(sd_bus_send(nullptr, reply, nullptr), "send");
    sd_bus_message_unref(reply);
    return 1;
}

int onNote(sd_bus_message* call, void* /*data*/, sd_bus_error* /*error*/) {
    const void* bytes = nullptr;
    size_t size = 0;
    return sd_bus_message_read_array(call, 'y', &bytes, &size) < 0 ? 0 : 1;
}

const sd_bus_vtable kMethods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Echo", "ay", "ay", onEcho, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Note", "ay", "", onNote,
                  SD_BUS_VTABLE_UNPRIVILEGED | SD_BUS_VTABLE_METHOD_NO_REPLY),
    SD_BUS_VTABLE_END,
};

sd_bus* connect(const std::string& address) {
    sd_bus* bus = nullptr;
    check(sd_bus_new(&bus), "new");
    check(sd_bus_set_address(bus, address.c_str()), "address");
    check(sd_bus_set_bus_client(bus, 1), "client");
    check(sd_bus_start(bus), "start");
    return bus;
}

sd_bus* overSocket(int socket, bool server) {
    sd_bus* bus = nullptr;
    sd_id128_t id = {};
    check(sd_id128_randomize(&id), "id");
    check(sd_bus_new(&bus), "new");
    check(sd_bus_set_fd(bus, socket, socket), "fd");
    if (server) {
        check(sd_bus_set_server(bus, 1, id), "server");
    }
    check(sd_bus_start(bus), "start");
    return bus;
}

[[noreturn]] void serve(sd_bus* bus, int ready) {
    check(sd_bus_add_object_vtable(bus, nullptr, kPath, kName, kMethods, nullptr), "vtable");
    check(write(ready, "r", 1) == 1 ? 0 : -1, "ready");
    for (;;) {
        const int more = sd_bus_process(bus, nullptr);
        if (more < 0 || (more == 0 && sd_bus_wait(bus, UINT64_MAX) < 0)) {
            std::_Exit(0);
        }
    }
}

}  // namespace

SdBusPeer::SdBusPeer(const std::string& daemonAddress) {
    int ends[2];
    int ready[2];
    check(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), "socketpair");
    check(pipe(ready), "pipe");
    const bool direct = daemonAddress.empty();
    mPid = fork();
    if (mPid == 0) {
        close(ends[0]);
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        sd_bus* bus = direct ? overSocket(ends[1], true) : connect(daemonAddress);
        if (!direct) {
            check(sd_bus_request_name(bus, kName, 0), "name");
        }
        serve(bus, ready[1]);
    }
    close(ends[1]);
    close(ready[1]);
    char byte = 0;
    check(read(ready[0], &byte, 1) == 1 ? 0 : -1, "peer");
    close(ready[0]);
    mBus = direct ? overSocket(ends[0], false) : connect(daemonAddress);
    mDestination = direct ? "" : kName;
    call(1);
}

SdBusPeer::~SdBusPeer() {
    kill(mPid, SIGKILL);
    waitpid(mPid, nullptr, 0);
    sd_bus_unref(mBus);
}

sd_bus_message* SdBusPeer::newCall(const char* method, size_t size) {
    static const std::array<char, 4096> bytes{};
    sd_bus_message* message = nullptr;
    const char* destination = mDestination.empty() ? nullptr : mDestination.c_str();
    check(sd_bus_message_new_method_call(mBus, &message, destination, kPath, kName, method),
          "call");
    check(sd_bus_message_append_array(message, 'y', bytes.data(), size), "append");
    return message;
}

void SdBusPeer::call(size_t size) {
    sd_bus_message* message = newCall("Echo", size);
    sd_bus_message* reply = nullptr;
    const void* bytes = nullptr;
    check(sd_bus_call(mBus, message, 0, nullptr, &reply), "echo");
    check(sd_bus_message_read_array(reply, 'y', &bytes, &size), "read");
    sd_bus_message_unref(reply);
    sd_bus_message_unref(message);
}

void SdBusPeer::sendOneWay(size_t size) {
    sd_bus_message* message = newCall("Note", size);
    check(sd_bus_message_set_expect_reply(message, 0), "one-way");
    check(sd_bus_send(mBus, message, nullptr), "send");
    sd_bus_message_unref(message);
}

}  // namespace bench
