// SPDX-License-Identifier: Apache-2.0
// Where the system refuses what waiting for signals takes: the line says which it was.
#include "tools/Interrupts.h"

#include <gtest/gtest.h>
#include <sys/eventfd.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <string>

namespace {

thread_local int gRefusal = 0;  // what eventfd fails with

std::string refusedWith(int error) {
    gRefusal = error;
    std::string said;
    try {
        const voxtrelctl::Interrupts interrupts;
    } catch (const std::exception& refusal) {
        said = refusal.what();
    }
    gRefusal = 0;
    return said;
}

TEST(WaitingForSignals, WithoutDescriptorsSaysHowToGetThem) {
    for (const int error : {EMFILE, ENFILE}) {
        EXPECT_EQ("out of file descriptors: raise the limit (ulimit -n), or close some",
                  refusedWith(error));
    }
}

TEST(WaitingForSignals, ThatFailsOtherwiseSaysWhy) {
    EXPECT_EQ("it cannot wait for signals: Cannot allocate memory", refusedWith(ENOMEM));
}

}  // namespace

// In front of the C library's.
extern "C" int eventfd(unsigned count, int flags) noexcept {
    if (gRefusal != 0) {
        errno = gRefusal;
        return -1;
    }
    return static_cast<int>(syscall(SYS_eventfd2, count, flags));
}
