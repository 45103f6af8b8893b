// SPDX-License-Identifier: Apache-2.0
// A plugin of the emulator qemu-user: counts the instructions and system calls of one process, all
// its threads together, and writes them down at each mark. Argument: out=FILE. A line of the file
// is the mark's number, instructions, system calls.
//
// Debian has the emulator's interface for plugins without its header; what is used of version 1 is
// declared here.
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "bench/gate/Mark.h"

extern "C" {

using PluginId = uint64_t;
struct qemu_plugin_tb;

// NOLINTBEGIN(readability-identifier-naming): the emulator's names
void qemu_plugin_register_vcpu_tb_trans_cb(PluginId id,
                                           void (*translated)(PluginId, qemu_plugin_tb*));
void qemu_plugin_register_vcpu_tb_exec_cb(qemu_plugin_tb* block, void (*run)(unsigned, void*),
                                          int registers, void* data);
size_t qemu_plugin_tb_n_insns(const qemu_plugin_tb* block);
void qemu_plugin_register_vcpu_syscall_cb(PluginId id,
                                          void (*called)(PluginId, unsigned, int64_t, uint64_t,
                                                         uint64_t, uint64_t, uint64_t, uint64_t,
                                                         uint64_t, uint64_t, uint64_t));

[[gnu::visibility("default")]] extern const int qemu_plugin_version;
const int qemu_plugin_version = 1;
[[gnu::visibility("default")]] int qemu_plugin_install(PluginId id, const void* emulator, int count,
                                                       char** arguments);
// NOLINTEND(readability-identifier-naming)
}

namespace {

constexpr int kReadsNoRegisters = 0;

std::atomic<uint64_t> gInstructions{0};
std::atomic<uint64_t> gSystemCalls{0};
std::FILE* gOut = nullptr;

void onBlock(unsigned /*processor*/, void* instructions) {
    gInstructions.fetch_add(reinterpret_cast<uintptr_t>(instructions), std::memory_order_relaxed);
}

// A block is left before its end only for a signal or a fault. Its size travels as the callback's
// data.
void onTranslated(PluginId /*id*/, qemu_plugin_tb* block) {
    const size_t size = qemu_plugin_tb_n_insns(block);
    // NOLINTNEXTLINE(performance-no-int-to-ptr): nothing is read through it
    auto* data = reinterpret_cast<void*>(size);
    qemu_plugin_register_vcpu_tb_exec_cb(block, onBlock, kReadsNoRegisters, data);
}

void onSystemCall(PluginId /*id*/, unsigned /*processor*/, int64_t /*number*/, uint64_t first,
                  uint64_t second, uint64_t /*a3*/, uint64_t /*a4*/, uint64_t /*a5*/,
                  uint64_t /*a6*/, uint64_t /*a7*/, uint64_t /*a8*/) {
    if (first != bench::kMarkOfGate) {
        gSystemCalls.fetch_add(1, std::memory_order_relaxed);
        return;
    }
    std::fprintf(gOut, "%u %llu %llu\n", static_cast<unsigned>(second),
                 static_cast<unsigned long long>(gInstructions.load()),
                 static_cast<unsigned long long>(gSystemCalls.load()));
    std::fflush(gOut);
}

}  // namespace

int qemu_plugin_install(PluginId id, const void* /*emulator*/, int count, char** arguments) {
    if (count != 1 || std::strncmp(arguments[0], "out=", 4) != 0) {
        std::fprintf(stderr, "gate_counter: where to? Give it out=FILE\n");
        return -1;
    }
    gOut = std::fopen(arguments[0] + 4, "w");
    if (gOut == nullptr) {
        std::perror(arguments[0] + 4);
        return -1;
    }
    qemu_plugin_register_vcpu_tb_trans_cb(id, onTranslated);
    qemu_plugin_register_vcpu_syscall_cb(id, onSystemCall);
    return 0;
}
