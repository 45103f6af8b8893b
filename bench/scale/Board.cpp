// SPDX-License-Identifier: Apache-2.0
#include "bench/scale/Board.h"

#include <linux/futex.h>
#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <chrono>
#include <climits>
#include <cstdio>
#include <cstdlib>

namespace bench {

int makeBoard() {
    const int descriptor = memfd_create("board", 0);
    if (descriptor < 0 || ftruncate(descriptor, sizeof(Board)) != 0) {
        std::perror("memfd_create");
        std::exit(1);
    }
    return descriptor;
}

Board& boardAt(int descriptor) {
    void* memory = mmap(nullptr, sizeof(Board), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    if (memory == MAP_FAILED) {
        std::perror("mmap");
        std::exit(1);
    }
    return *static_cast<Board*>(memory);
}

void nextTurn(Board& board) {
    ++board.turn;
    (void)syscall(SYS_futex, &board.turn, FUTEX_WAKE, INT_MAX, nullptr, nullptr, 0);
}

uint32_t awaitTurn(Board& board, uint32_t last) {
    while (board.turn == last) {
        (void)syscall(SYS_futex, &board.turn, FUTEX_WAIT, last, nullptr, nullptr, 0);
    }
    return board.turn;
}

int64_t nowNs() {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

}  // namespace bench
