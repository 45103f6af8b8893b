// SPDX-License-Identifier: Apache-2.0
// Sanitizers have an allocator of their own.
#ifndef VOXTREL_TESTS_SANITIZED
#include "tests/voxtrel/CountedNew.h"

#include <cstdlib>
#include <new>

namespace {

thread_local std::size_t count = 0;
thread_local int beforeFailures = 0;
thread_local int failuresLeft = 0;

void failIfWanted() {
    if (failuresLeft == 0) {
        return;
    }
    if (beforeFailures > 0) {
        --beforeFailures;
        return;
    }
    --failuresLeft;
    throw std::bad_alloc();
}

void* counted(std::size_t size) {
    ++count;
    failIfWanted();
    if (void* const memory = std::malloc(size == 0 ? 1 : size)) {
        return memory;
    }
    throw std::bad_alloc();
}

}  // namespace

std::size_t voxtrel_test::allocationsOfThisThread() {
    return count;
}

void voxtrel_test::failAllocationsOfThisThread(int after, int failures) {
    beforeFailures = after;
    failuresLeft = failures;
}

void* operator new(std::size_t size) {
    return counted(size);
}

void* operator new[](std::size_t size) {
    return counted(size);
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete[](void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}

#endif
