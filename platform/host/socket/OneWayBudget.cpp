// SPDX-License-Identifier: Apache-2.0
#include "socket/OneWayBudget.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "socket/Deadline.h"
#include "socket/Message.h"
#include "socket/Syscalls.h"
#include "support/Manners.h"

namespace android::transport {

namespace {

constexpr size_t kPageSize = 4096;
constexpr uint32_t kBytes = kLargestOneWay;
// A call without a payload takes some room as well. So many wait at most that a sender's share of
// the receiver's memory holds them (see QuotaCharge).
constexpr size_t kSmallestCost = 128;

// Access beyond the end of a shorter page would be a SIGBUS.
bool isPage(const Fd& page) {
    const int seals = page.valid() ? fcntl(page.get(), F_GET_SEALS) : -1;
    struct stat status {};
    return seals >= 0 && (seals & F_SEAL_SHRINK) != 0 && fstat(page.get(), &status) == 0 &&
           status.st_size == static_cast<off_t>(kPageSize);
}

uint32_t costOf(size_t payload) {
    return static_cast<uint32_t>(std::max(payload, kSmallestCost));
}

}  // namespace

Fd OneWayBudget::makePage() {
    Fd page(sys::makeMemfd());
    if (!page.valid() || ftruncate(page.get(), kPageSize) != 0 ||
        fcntl(page.get(), F_ADD_SEALS, F_SEAL_SHRINK | F_SEAL_SEAL) != 0) {
        return Fd();
    }
    return page;
}

OneWayBudget::OneWayBudget(Fd page) : mPage(std::move(page)) {
    if (!isPage(mPage)) {
        return;
    }
    void* shared = mmap(nullptr, kPageSize, PROT_READ | PROT_WRITE, MAP_SHARED, mPage.get(), 0);
    mUsed = shared != MAP_FAILED ? static_cast<Counter*>(shared) : nullptr;
}

OneWayBudget::~OneWayBudget() {
    if (valid()) {
        (void)munmap(mUsed, kPageSize);
    }
}

bool OneWayBudget::take(size_t payload) {
    const uint32_t cost = costOf(payload);
    uint32_t used = mUsed->load();
    do {
        if (uint64_t{used} + cost > kBytes) {
            return false;
        }
    } while (!mUsed->compare_exchange_weak(used, used + cost));
    return true;
}

void OneWayBudget::giveBack(size_t payload) {
    if (!valid()) {
        return;
    }
    const uint32_t cost = costOf(payload);
    uint32_t used = mUsed->load();
    while (!mUsed->compare_exchange_weak(used, used - std::min(used, cost))) {
    }
}

OneWayBudget* PeerBudget::find(const Fd& control) {
    Mutex::Autolock held(mLock);
    if (!mAsked) {
        ask(control);
    }
    if (mAnswer.valid()) {
        readAnswer();
    }
    return mBudget.get();
}

void PeerBudget::ask(const Fd& control) {
    SocketPair pair = makeSocketPair();
    mAsked = pair.held.valid() && sendAdopt(control, Role::Budget, pair.served) == OK;
    if (!mAsked) {
        return;  // the next call asks
    }
    pair.served.reset();  // so that a process that keeps no budget is seen to hang up
    mAnswer = std::move(pair.held);
    Deadline deadline;
    (void)deadline.wait({mAnswer.get(), POLLIN});
}

void PeerBudget::readAnswer() {
    Parcel nothing;
    Envelope envelope;
    const Received received = receiveMessage(mAnswer, false, nothing, envelope);
    if (received == Received::Nothing) {
        return;
    }
    if (received == Received::Message && envelope.header().kind == Kind::Adopt) {
        auto budget = std::make_unique<OneWayBudget>(envelope.takeFd(0));
        mBudget = budget->valid() ? std::move(budget) : nullptr;
    }
    mAnswer.reset();
}

bool isCounted(const Header& oneWay) {
    return (oneWay.options & kCounted) != 0 && gManners.ofDriver;
}

}  // namespace android::transport
