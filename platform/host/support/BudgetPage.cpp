// SPDX-License-Identifier: Apache-2.0
#include "support/BudgetPage.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <string>

namespace android::transport {

namespace {

constexpr size_t kPageSize = 4096;
// In front of the number of a descriptor and the process's. Names of other things have it by chance
// only, and then hardly lead to anything.
constexpr uint64_t kMarker = 0xB6E7;
// A call without a payload takes some room as well. So many wait at most that a sender's share of
// the receiver's memory holds them.
constexpr size_t kSmallestCost = 128;

uint32_t costOf(size_t payload) {
    return static_cast<uint32_t>(std::max(payload, kSmallestCost));
}

}  // namespace

BudgetPage::BudgetPage() : mOwn(memfd_create("budget", MFD_CLOEXEC)) {
    if (ftruncate(mOwn.get(), kPageSize) == 0) {
        map(mOwn);
    }
}

BudgetPage::BudgetPage(uint64_t name) {
    if (name >> 48U == kMarker) {
        const std::string descriptor = "/proc/" + std::to_string(name & 0xFFFFFFFFU) + "/fd/" +
                                       std::to_string(name >> 32U & 0xFFFFU);
        map(Fd(open(descriptor.c_str(), O_RDWR | O_CLOEXEC)));
    }
}

uint64_t BudgetPage::name() const {
    return kMarker << 48U | static_cast<uint64_t>(mOwn.get()) << 32U |
           static_cast<uint32_t>(getpid());
}

void BudgetPage::map(const Fd& page) {
    void* shared = mmap(nullptr, kPageSize, PROT_READ | PROT_WRITE, MAP_SHARED, page.get(), 0);
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
