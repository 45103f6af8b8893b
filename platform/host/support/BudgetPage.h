// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SUPPORT_BUDGETPAGE_H
#define VOXTREL_SUPPORT_BUDGETPAGE_H

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "support/Fd.h"

namespace android::transport {

/// The bytes of one-way calls that a process has still to carry out, in the manners of a driver:
/// the kernel keeps them in half of the process's 1 MB. All senders count in one page that it
/// shares with them, and are trusted to: this is for tests. Called on: any thread. Locks: none.
class BudgetPage {
public:
    static constexpr uint32_t kBytes = 520192;

    /// A page of this process's own, as the receiver of calls; not `valid` without a descriptor.
    static Fd make();

    /// The one of a process that has given this page away; not `valid` when there is none.
    explicit BudgetPage(Fd page);
    ~BudgetPage();
    BudgetPage(const BudgetPage&) = delete;
    BudgetPage& operator=(const BudgetPage&) = delete;

    bool valid() const { return mUsed != nullptr; }
    const Fd& fd() const { return mPage; }

    /// A call with so many bytes of payload is about to be sent. False when there is no room.
    bool take(size_t payload);
    /// It has been carried out, or was not sent.
    void giveBack(size_t payload);

private:
    using Counter = std::atomic<uint32_t>;
    static_assert(Counter::is_always_lock_free, "processes share it");

    const Fd mPage;
    Counter* mUsed = nullptr;
};

}  // namespace android::transport

#endif
