// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/session/WaitingLines.h"

#include <algorithm>

namespace voxtrel {
namespace {

template <typename Lines>
auto find(Lines& lines, const Mailbox* client) {
    return std::find_if(lines.begin(), lines.end(),
                        [client](const auto& line) { return line.client == client; });
}

}  // namespace

void WaitingLines::add(Item speech) {
    put({++mLast, std::move(speech)}, false);
}

void WaitingLines::addFirst(Item speech) {
    put({--mFirst, std::move(speech)}, true);
}

/// Where memory runs out, no line is left empty.
void WaitingLines::put(Place place, bool isFirst) {
    const Mailbox* const client = place.speech->client.get();
    const auto line = find(mLines, client);
    if (line == mLines.end()) {
        mLines.push_back({client, {std::move(place)}});
    } else if (isFirst) {
        line->places.push_front(std::move(place));
    } else {
        line->places.push_back(std::move(place));
    }
}

WaitingLines::Item WaitingLines::firstOfAnother(const Mailbox* client) const {
    const Place* first = nullptr;
    for (const Line& line : mLines) {
        const Place& place = line.places.front();
        if (line.client != client && (first == nullptr || place.order < first->order)) {
            first = &place;
        }
    }
    return first == nullptr ? nullptr : first->speech;
}

WaitingLines::Item WaitingLines::firstOf(const Mailbox* client) const {
    const auto line = find(mLines, client);
    return line == mLines.end() ? nullptr : line->places.front().speech;
}

void WaitingLines::takeFirst(const Item& speech) {
    const auto line = find(mLines, speech->client.get());
    line->places.pop_front();
    if (line->places.empty()) {
        mLines.erase(line);
    }
}

WaitingLines::Places WaitingLines::takeAllOf(const Mailbox& client) {
    Places taken;
    const auto line = find(mLines, &client);
    if (line != mLines.end()) {
        taken.swap(line->places);
        mLines.erase(line);
    }
    return taken;
}

WaitingLines::Places WaitingLines::takeAll() {
    Places taken;
    for (Line& line : mLines) {
        taken.splice(taken.end(), line.places);
    }
    mLines.clear();
    return taken;
}

bool WaitingLines::has(const Mailbox& client) const {
    return find(mLines, &client) != mLines.end();
}

}  // namespace voxtrel
