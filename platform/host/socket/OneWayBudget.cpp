// SPDX-License-Identifier: Apache-2.0
#include "socket/OneWayBudget.h"

#include <poll.h>

#include "socket/Deadline.h"
#include "socket/Message.h"
#include "support/Manners.h"

namespace android::transport {

static_assert(BudgetPage::kBytes == kLargestOneWay, "the largest call uses it up");

BudgetPage* PeerBudget::find(const Fd& control) {
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
        auto budget = std::make_unique<BudgetPage>(envelope.takeFd(0));
        mBudget = budget->valid() ? std::move(budget) : nullptr;
    }
    mAnswer.reset();
}

bool isCounted(const Header& oneWay) {
    return (oneWay.options & kCounted) != 0 && gManners.ofDriver;
}

}  // namespace android::transport
