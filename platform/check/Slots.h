// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_PLATFORM_CHECK_SLOTS_H
#define VOXTREL_PLATFORM_CHECK_SLOTS_H

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "check/Probe.h"

namespace check {

/// The slot of a virtual function in its table, as the Itanium C++ ABI, and its ARM form, write it
/// into a pointer to a member.
template <typename Function>
size_t slotOf(Function function) {
    uintptr_t words[2] = {};
    static_assert(sizeof function == sizeof words, "a pointer to a member is two words");
    std::memcpy(words, &function, sizeof words);
#if defined(__arm__) || defined(__aarch64__)
    return words[0] / sizeof(void*);
#else
    return (words[0] - 1) / sizeof(void*);
#endif
}

/// Names the function, which interfaces keep protected.
class AsBinderSlot : public IProbe {
public:
    static size_t get() { return slotOf(&AsBinderSlot::onAsBinder); }
};

}  // namespace check

#endif
