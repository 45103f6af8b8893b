// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SESSION_WAITINGLINES_H
#define VOXTREL_SESSION_WAITINGLINES_H

#include <cstdint>
#include <list>
#include <memory>
#include <vector>

#include "voxtrel/session/Speech.h"

namespace voxtrel {

/// Utterances of which nothing has been sent: a line for each client, so that what a turn costs
/// does not grow with what waits. Called on: one thread at a time.
class WaitingLines {
public:
    using Item = std::shared_ptr<Speech>;

    struct Place {
        std::int64_t order = 0;
        Item speech;
    };
    using Places = std::list<Place>;

    /// Behind everything.
    void add(Item speech);

    /// Before everything.
    void addFirst(Item speech);

    /// What has waited longest of any other client's, or with null of anybody's; null: nothing.
    Item firstOfAnother(const Mailbox* client) const;
    Item firstOf(const Mailbox* client) const;

    /// Takes the first of its client's away.
    void takeFirst(const Item& speech);

    /// Take away all of a client's, or of everybody's; as fast however many there are.
    Places takeAllOf(const Mailbox& client);
    Places takeAll();

    bool has(const Mailbox& client) const;
    bool isEmpty() const { return mLines.empty(); }

private:
    struct Line {
        const Mailbox* client = nullptr;
        Places places = {};
    };

    void put(Place place, bool isFirst);

    std::vector<Line> mLines;  ///< none is empty
    std::int64_t mFirst = 0;   ///< order of whatever was put before everything
    std::int64_t mLast = 0;
};

}  // namespace voxtrel

#endif
