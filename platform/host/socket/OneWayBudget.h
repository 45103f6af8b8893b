// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_ONEWAYBUDGET_H
#define VOXTREL_SOCKET_ONEWAYBUDGET_H

#include "socket/Wire.h"
#include "support/BudgetPage.h"
#include "support/Manners.h"

namespace android::transport {

static_assert(BudgetPage::kBytes == kLargestOneWay, "the largest call uses it up");

/// Is this call counted in this process's budget? Never in the default manners.
inline bool isCounted(const Header& oneWay) {
    return (oneWay.options & kCounted) != 0 && gManners.ofDriver;
}

}  // namespace android::transport

#endif
