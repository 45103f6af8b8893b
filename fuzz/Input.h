// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_FUZZ_INPUT_H
#define VOXTREL_FUZZ_INPUT_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

namespace voxtrel_fuzz {

/// What must be true of the code under test: the fuzzer reports an input for which it is not.
inline void require(bool holds) {
    if (!holds) {
        std::abort();
    }
}

/// The fuzzer's bytes, read from the front; behind the end everything is 0.
class Input {
public:
    Input(const uint8_t* data, size_t size) : mNext(data), mLeft(size) {}

    bool isAtEnd() const { return mLeft == 0; }

    uint8_t byte() {
        if (isAtEnd()) {
            return 0;
        }
        --mLeft;
        return *mNext++;
    }

    /// Below `limit`, which is 256 at most.
    unsigned below(unsigned limit) { return byte() % limit; }

    uint32_t word() {
        uint32_t value = 0;
        for (int i = 0; i < 4; ++i) {
            value = value << 8U | byte();
        }
        return value;
    }

    /// Up to so many bytes, fewer where the input ends.
    std::vector<uint8_t> bytes(size_t count) {
        const size_t taken = std::min(count, mLeft);
        std::vector<uint8_t> result(mNext, mNext + taken);
        mNext += taken;
        mLeft -= taken;
        return result;
    }

    /// A length in one byte, and the text.
    std::string text() {
        const std::vector<uint8_t> all = bytes(byte());
        return {all.begin(), all.end()};
    }

private:
    const uint8_t* mNext;
    size_t mLeft;
};

}  // namespace voxtrel_fuzz

#endif
