// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_VOXTREL_COUNTEDNEW_H
#define VOXTREL_TESTS_VOXTREL_COUNTEDNEW_H

#include <cstddef>

namespace voxtrel_test {

/// How often the calling thread has asked for memory.
std::size_t allocationsOfThisThread();

/// The calling thread gets memory so many times more, then std::bad_alloc so many times, and memory
/// again.
void failAllocationsOfThisThread(int after, int failures = 1);

}  // namespace voxtrel_test

#endif
