// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BENCH_SCALE_USAGE_H
#define VOXTREL_BENCH_SCALE_USAGE_H

#include <sys/types.h>

#include <cstddef>

namespace bench {

/// What a process holds for itself alone, in KiB.
double privateKib(pid_t pid);

size_t descriptors(pid_t pid);

size_t threads(pid_t pid);

}  // namespace bench

#endif
