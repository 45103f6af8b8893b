// SPDX-License-Identifier: Apache-2.0
#include "tools/EventPrinter.h"

#include <utility>

#include "tools/Json.h"
#include "tools/Text.h"

namespace voxtrelctl {
namespace {

class SilentPrinter : public EventPrinter {
public:
    void show(const Event&) override {}
};

class WordPrinter : public EventPrinter {
public:
    WordPrinter(const std::string& text, Sink sink) : mCursor(text), mSink(std::move(sink)) {}

    void show(const Event& event) override {
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

private:
    void print(const std::string& text) {
        if (!text.empty()) {
            mLast = text.back();
            mSink(forTerminal(text));
        }
    }

    void endLine() {
        if (mLast != '\n') {
            print("\n");
        }
    }

    WordCursor mCursor;
    Sink mSink;
    char mLast = '\n';
};

class LinePrinter : public EventPrinter {
public:
    LinePrinter(const std::string& text, Sink sink) : mText(text), mSink(std::move(sink)) {}

    void show(const Event& event) override {
        std::string line = describe(event);
        if (event.kind == TTS::EVENT_WORD) {
            line += ": " + forTerminal(wordAt(mText, event.byte));
        }
        mSink(line + "\n");
    }

private:
    const std::string& mText;
    Sink mSink;
};

class JsonPrinter : public EventPrinter {
public:
    JsonPrinter(const std::string& text, Sink sink) : mText(text), mSink(std::move(sink)) {}

    void show(const Event& event) override {
        const bool isWord = event.kind == TTS::EVENT_WORD;
        mSink(eventJson(event, isWord ? wordAt(mText, event.byte) : "") + "\n");
    }

private:
    const std::string& mText;
    Sink mSink;
};

}  // namespace

std::unique_ptr<EventPrinter> EventPrinter::make(Style style, const std::string& text, Sink sink) {
    switch (style) {
        case Style::Words:
            return std::make_unique<WordPrinter>(text, std::move(sink));
        case Style::Lines:
            return std::make_unique<LinePrinter>(text, std::move(sink));
        case Style::Json:
            return std::make_unique<JsonPrinter>(text, std::move(sink));
        default:
            return std::make_unique<SilentPrinter>();
    }
}

}  // namespace voxtrelctl
