// SPDX-License-Identifier: Apache-2.0
#include "tests/soak/Utterances.h"

#include <utility>

namespace soak {

void Utterances::said(uint64_t number, Handle handle) {
    mLedger.said(mClient, number);
    const std::lock_guard<std::mutex> lock(mMutex);
    const auto early = mEarly.find(number);
    if (early == mEarly.end()) {
        mOpen[number] = std::move(handle);
        return;
    }
    compare(number, handle, early->second);
    mEarly.erase(early);
}

void Utterances::ended(uint64_t number, const Ending& ending) {
    mLedger.ended(mClient, number, ending);
    const std::lock_guard<std::mutex> lock(mMutex);
    const auto open = mOpen.find(number);
    if (open == mOpen.end()) {
        mEarly[number] = ending;
        return;
    }
    compare(number, open->second, ending);
    mOpen.erase(open);
}

void Utterances::compare(uint64_t number, const Handle& handle, const Ending& ending) {
    if (handle() != ending) {
        mLedger.differs(mClient, number);
    }
}

void Utterances::close() {
    const std::lock_guard<std::mutex> lock(mMutex);
    for (const auto& [number, handle] : mOpen) {
        mLedger.endedWithItsClient(mClient, number, handle());
    }
    mOpen.clear();
}

std::size_t Utterances::open() const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mOpen.size();
}

}  // namespace soak
