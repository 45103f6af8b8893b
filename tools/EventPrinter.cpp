// SPDX-License-Identifier: Apache-2.0
#include "tools/EventPrinter.h"

#include <utility>

#include "tools/Json.h"

namespace voxtrelctl {

EventPrinter::EventPrinter(Style style, const std::string& text, Sink sink)
    : mStyle(style), mText(text), mSink(std::move(sink)), mCursor(text) {}

void EventPrinter::show(const Event& event) {
    const std::string word = event.kind == TTS::EVENT_WORD ? wordAt(mText, event.byte) : "";
    switch (mStyle) {
        case Style::Silent:
            break;
        case Style::Words:
            showWords(event);
            break;
        case Style::Lines:
            mSink(describe(event) + (event.kind == TTS::EVENT_WORD ? ": " : "") +
                  forTerminal(word) + "\n");
            break;
        case Style::Json:
            mSink(eventJson(event, word) + "\n");
            break;
    }
}

void EventPrinter::showWords(const Event& event) {
    switch (event.kind) {
        case TTS::EVENT_WORD:
            print(mCursor.advanceTo(event.byte));
            break;
        case TTS::EVENT_FINISHED:
            print(mCursor.rest());
            endLine();
            break;
        case TTS::EVENT_STOPPED:
            print(" [stopped]");
            endLine();
            break;
        default:
            break;
    }
}

void EventPrinter::print(const std::string& text) {
    if (!text.empty()) {
        mLast = text.back();
        mSink(forTerminal(text));
    }
}

void EventPrinter::endLine() {
    if (mLast != '\n') {
        print("\n");
    }
}

}  // namespace voxtrelctl
