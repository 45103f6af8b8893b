// SPDX-License-Identifier: Apache-2.0
#include "support/BudgetPage.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>

namespace android::transport {

namespace {

constexpr size_t kPageSize = 4096;
// A call without a payload takes some room as well. So many wait at most that a sender's share of
// the receiver's memory holds them.
constexpr size_t kSmallestCost = 128;

uint32_t costOf(size_t payload) {
    return static_cast<uint32_t>(std::max(payload, kSmallestCost));
}

}  // namespace

Fd BudgetPage::make() {
    Fd page(memfd_create("budget", MFD_CLOEXEC));
    return page.valid() && ftruncate(page.get(), kPageSize) == 0 ? std::move(page) : Fd();
}

BudgetPage::BudgetPage(Fd page) : mPage(std::move(page)) {
    void* shared = mmap(nullptr, kPageSize, PROT_READ | PROT_WRITE, MAP_SHARED, mPage.get(), 0);
    mUsed = shared != MAP_FAILED ? static_cast<Counter*>(shared) : nullptr;
}

BudgetPage::~BudgetPage() {
    if (valid()) {
        (void)munmap(mUsed, kPageSize);
    }
}

bool BudgetPage::take(size_t payload) {
    const uint32_t cost = costOf(payload);
    uint32_t used = mUsed->load();
    do {
        if (uint64_t{used} + cost > kBytes) {
            return false;
        }
    } while (!mUsed->compare_exchange_weak(used, used + cost));
    return true;
}

void BudgetPage::giveBack(size_t payload) {
    if (!valid()) {
        return;
    }
    const uint32_t cost = costOf(payload);
    uint32_t used = mUsed->load();
    while (!mUsed->compare_exchange_weak(used, used - std::min(used, cost))) {
    }
}

}  // namespace android::transport
