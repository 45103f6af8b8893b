// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BENCH_SCALE_BOARD_H
#define VOXTREL_BENCH_SCALE_BOARD_H

#include <atomic>
#include <cstdint>

namespace bench {

/// Memory that the benchmark shares with a service and its clients, zeroed.
struct Board {
    std::atomic<uint32_t> hold;    ///< the service's engine waits while it is set
    std::atomic<uint32_t> turn;    ///< each time it grows, each client of the crowd says one text
    std::atomic<uint32_t> joined;  ///< clients of the crowd
    std::atomic<uint32_t> told;    ///< times that one of them was told of a change of settings
    std::atomic<uint32_t> ended;   ///< texts of theirs that were spoken
    std::atomic<int64_t> lastNs;   ///< when the latest of both happened
};

/// Descriptor of memory for a board, which child processes inherit. Ends the program on failure.
int makeBoard();

/// The board behind such a descriptor.
Board& boardAt(int descriptor);

/// Lets those go who `awaitTurn`.
void nextTurn(Board& board);

/// Sleeps until the turn is another than `last`, and returns it.
uint32_t awaitTurn(Board& board, uint32_t last);

/// Nanoseconds of the clock that all processes of a machine share.
int64_t nowNs();

}  // namespace bench

#endif
