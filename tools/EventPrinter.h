// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_EVENTPRINTER_H
#define VOXTREL_TOOLS_EVENTPRINTER_H

#include <functional>
#include <memory>
#include <string>

#include "tools/Events.h"

namespace voxtrelctl {

/// Shows what becomes of utterances, as they are spoken. One utterance is shown at a time, in the
/// order of their events. Called on: the main thread. Locks: none.
class EventPrinter {
public:
    /// Where the text goes; the string is printed as it stands.
    using Sink = std::function<void(const std::string&)>;

    enum class Style {
        Silent,  ///< nothing
        Words,   ///< the running text, for a person at a terminal
        Lines,   ///< a line an event
        Json,    ///< a JSON object an event, one on each line
    };

    static std::unique_ptr<EventPrinter> make(Style style, Sink sink);

    virtual ~EventPrinter() = default;

    /// @param event of an utterance.
    /// @param text the text of that utterance; the same at each of its events.
    virtual void show(const Event& event, const std::string& text) = 0;
};

}  // namespace voxtrelctl

#endif
