// SPDX-License-Identifier: Apache-2.0
#include "bench/ipc/Allocations.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<uint64_t> count{0};

}  // namespace

uint64_t allocations() {
    return count.load(std::memory_order_relaxed);
}

// The C library's own functions, under the names that stay when a program brings its own.
extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t number, size_t size);
void* __libc_realloc(void* block, size_t size);

void* malloc(size_t size) {
    count.fetch_add(1, std::memory_order_relaxed);
    return __libc_malloc(size);
}

void* calloc(size_t number, size_t size) {
    count.fetch_add(1, std::memory_order_relaxed);
    return __libc_calloc(number, size);
}

void* realloc(void* block, size_t size) {
    count.fetch_add(1, std::memory_order_relaxed);
    return __libc_realloc(block, size);
}
}

void* operator new(size_t size) {
    void* block = std::malloc(size);  // counted there
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

void operator delete(void* block) noexcept {
    std::free(block);
}

void operator delete(void* block, size_t) noexcept {
    std::free(block);
}
