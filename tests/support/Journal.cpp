// SPDX-License-Identifier: Apache-2.0
#include "tests/support/Journal.h"

#include <mutex>

namespace support {
namespace {

struct Notes {
    std::mutex mutex;
    Lines lines;
};

// Never destroyed: what a program releases at its end may still be noted.
Notes& notes() {
    static auto* const all = new Notes;
    return *all;
}

}  // namespace

void note(const std::string& line) {
    const std::lock_guard<std::mutex> guard(notes().mutex);
    notes().lines.push_back(line);
}

Lines takeNotes() {
    const std::lock_guard<std::mutex> guard(notes().mutex);
    Lines taken;
    taken.swap(notes().lines);
    return taken;
}

}  // namespace support
