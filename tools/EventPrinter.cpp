// SPDX-License-Identifier: Apache-2.0
#include "tools/EventPrinter.h"

#include <utility>

#include "tools/Json.h"
#include "tools/Text.h"

namespace voxtrelctl {
namespace {

class SilentPrinter : public EventPrinter {
public:
    void show(const Event&, const std::string&) override {}
};

class WordPrinter : public EventPrinter {
public:
    explicit WordPrinter(Sink sink) : mSink(std::move(sink)) {}

    void show(const Event& event, const std::string& text) override {
        switch (kindOf(event)) {
            case EventKind::Started:
                mCursor = WordCursor(text);
                break;
            case EventKind::Word:
                print(mCursor.advanceTo(event.third));
                break;
            case EventKind::Finished:
                print(mCursor.rest());
                endLine();
                break;
            case EventKind::Stopped:
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

    Sink mSink;
    WordCursor mCursor{""};
    char mLast = '\n';
};

class LinePrinter : public EventPrinter {
public:
    explicit LinePrinter(Sink sink) : mSink(std::move(sink)) {}

    void show(const Event& event, const std::string& text) override {
        std::string line = describe(event);
        if (kindOf(event) == EventKind::Word) {
            line += ": " + forTerminal(WordCursor(text).wordAt(event.third));
        }
        mSink(line + "\n");
    }

private:
    Sink mSink;
};

class JsonPrinter : public EventPrinter {
public:
    explicit JsonPrinter(Sink sink) : mSink(std::move(sink)) {}

    void show(const Event& event, const std::string& text) override {
        const bool isWord = kindOf(event) == EventKind::Word;
        mSink(eventJson(event, isWord ? WordCursor(text).wordAt(event.third) : "") + "\n");
    }

private:
    Sink mSink;
};

}  // namespace

std::unique_ptr<EventPrinter> EventPrinter::make(Style style, Sink sink) {
    switch (style) {
        case Style::Words:
            return std::make_unique<WordPrinter>(std::move(sink));
        case Style::Lines:
            return std::make_unique<LinePrinter>(std::move(sink));
        case Style::Json:
            return std::make_unique<JsonPrinter>(std::move(sink));
        default:
            return std::make_unique<SilentPrinter>();
    }
}

}  // namespace voxtrelctl
