// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SUPPORT_BUDGETPAGE_H
#define VOXTREL_SUPPORT_BUDGETPAGE_H

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "support/Fd.h"

namespace android::transport {

/// The bytes of one-way calls that a process has still to carry out, in the manners of a driver:
/// the kernel keeps them in half of the process's 1 MB. All senders of its user count in one page
/// of its memory, and are trusted to: this is for tests. Called on: any thread. Locks: none.
class BudgetPage {
public:
    static constexpr uint32_t kBytes = 520192;

    /// This process's own, as the receiver of calls.
    BudgetPage();
    /// Another process's, by the `name` that it has there.
    explicit BudgetPage(uint64_t name);
    ~BudgetPage();
    BudgetPage(const BudgetPage&) = delete;
    BudgetPage& operator=(const BudgetPage&) = delete;

    /// False when it could not be made, and when the name is none.
    bool valid() const { return mUsed != nullptr; }
    /// Only of this process's own.
    uint64_t name() const;

    /// A call with so many bytes of payload is about to be sent. False when there is no room.
    bool take(size_t payload);
    /// It has been carried out, or was not sent.
    void giveBack(size_t payload);

private:
    using Counter = std::atomic<uint32_t>;
    static_assert(Counter::is_always_lock_free, "processes share it");

    void map(const Fd& page);

    Fd mOwn;
    Counter* mUsed = nullptr;
};

}  // namespace android::transport

#endif
