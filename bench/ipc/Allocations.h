// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BENCH_IPC_ALLOCATIONS_H
#define VOXTREL_BENCH_IPC_ALLOCATIONS_H

#include <cstdint>

/// Blocks that this program has taken from the heap so far, by `operator new`, `malloc`, `calloc`
/// or `realloc`, its libraries' included.
uint64_t allocations();

#endif
