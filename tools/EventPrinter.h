// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_EVENTPRINTER_H
#define VOXTREL_TOOLS_EVENTPRINTER_H

#include <functional>
#include <string>

#include "tools/Events.h"
#include "tools/Text.h"

namespace voxtrelctl {

/// Shows what becomes of an utterance, as it is spoken. Called on: the main thread. Locks: none.
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

    /// @param text of the utterance; must outlive the printer.
    EventPrinter(Style style, const std::string& text, Sink sink);

    void show(const Event& event);

private:
    void showWords(const Event& event);
    void print(const std::string& text);
    void endLine();

    const Style mStyle;
    const std::string& mText;
    const Sink mSink;
    WordCursor mCursor;
    char mLast = '\n';
};

}  // namespace voxtrelctl

#endif
