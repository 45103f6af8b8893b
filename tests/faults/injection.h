// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_FAULTS_INJECTION_H
#define VOXTREL_TESTS_FAULTS_INJECTION_H

#include <atomic>
#include <cstdint>

/// What the preloaded library and the runner (scripts/faults/record.py) share: a file that both
/// map. It tells how often a program has made the call that is to fail, from which places, and
/// where it has failed, however the program ended.
namespace voxtrel_faults {

// The runner reads these numbers here.
constexpr int kMaxFrames = 24;
constexpr int kMappingsSize = 65536;
constexpr uint32_t kMaxPlaces = 1048576;

struct Record {
    std::atomic<uint32_t> calls;     ///< from the beginning of main() on, in all its processes
    std::atomic<uint32_t> failed;    ///< how many of them were made to fail
    std::atomic<uint32_t> frames;    ///< of the first that was
    std::atomic<uint32_t> reserved;  ///< 0
    uint64_t stack[kMaxFrames];      ///< return addresses, innermost first
    char mappings[kMappingsSize];    ///< /proc/self/maps as it failed, as far as it fits
    struct Place {
        char call[8];      ///< the first letters of its name
        uint64_t stack;    ///< a hash of the stack that it was made from
    } places[kMaxPlaces];  ///< of each call
};

}  // namespace voxtrel_faults

#endif
