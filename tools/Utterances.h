// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_UTTERANCES_H
#define VOXTREL_TOOLS_UTTERANCES_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>

#include "tools/Events.h"

namespace voxtrelctl {

/// The utterances that were sent and have not ended yet, by the events about them.
///
/// A request can be lost on its way without a word to anybody. The utterances of one client are
/// spoken in the order sent: when one is being spoken, every earlier one has had its events, or
/// there will never be any. Called on: any one thread. Locks: none.
class Utterances {
public:
    /// Numbers must grow.
    void sent(uint32_t number) { mOpen[number] = false; }

    /// Takes note of an event.
    void see(const Event& event);

    /// True when an utterance with this number was sent and has not ended.
    bool isOpen(uint32_t number) const { return mOpen.count(number) != 0; }
    bool isAnyOpen(uint32_t upTo) const { return !mOpen.empty() && mOpen.begin()->first <= upTo; }
    size_t open() const { return mOpen.size(); }

    /// Takes note that something sent behind the utterances up to `number` is being spoken: those
    /// without any event are lost, and not open any more.
    void passed(uint32_t number);

    /// The first that is known to be lost.
    std::optional<uint32_t> lost() const { return mLost; }

private:
    std::map<uint32_t, bool> mOpen;  ///< number, and whether there was an event about it
    std::optional<uint32_t> mLost;
};

}  // namespace voxtrelctl

#endif
