// SPDX-License-Identifier: Apache-2.0
#include <cerrno>
#include <fstream>
#include <iostream>
#include <sstream>
#include <system_error>

#include "tools/ClientSettings.h"
#include "tools/Commands.h"
#include "tools/Errors.h"
#include "tools/Settle.h"
#include "tools/Speech.h"
#include "tools/SsmlChecker.h"
#include "tools/Text.h"

namespace voxtrelctl {
namespace {

constexpr unsigned kFlushEverything = 0;

std::string readAll(std::istream& in) {
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

std::string readFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::string text = readAll(in);
    if (!in.is_open() || in.bad()) {
        throw Failure(TTS::STATUS_BAD_PARAMETER,
                      "cannot read " + path + " (" + std::generic_category().message(errno) + ")",
                      "name a text file, or - for standard input");
    }
    return text;
}

std::string textOf(const Options& options) {
    if (!options.words.empty() && !options.file.empty()) {
        throw Failure(TTS::STATUS_BAD_PARAMETER, "both a text and a file are given",
                      "give one of them");
    }
    if (options.words.empty()) {
        return options.file.empty() || options.file == "-" ? readAll(std::cin)
                                                           : readFile(options.file);
    }
    std::string text;
    for (const std::string& word : options.words) {
        text += (text.empty() ? "" : " ") + word;
    }
    return text;
}

void checkSsml(const std::string& text) {
    if (const auto mistake = SsmlChecker(text).check()) {
        throw Failure(TTS::STATUS_BAD_PARAMETER,
                      "line " + std::to_string(mistake->line) + ", column " +
                          std::to_string(mistake->column) + ": " + forTerminal(mistake->what),
                      "correct the markup, or leave out --ssml");
    }
}

/// Marked-up text goes whole: no part of it would be marked up by itself.
std::vector<std::string> piecesOf(const Options& options, std::string text) {
    if (options.ssml) {
        checkSsml(text);
    }
    if (!isMarkedUp(text)) {
        return cutIntoPieces(std::move(text));
    }
    if (text.size() > kMostOnTheWay) {
        throw Failure(TTS::STATUS_BAD_PARAMETER,
                      "the marked-up text has " + std::to_string(text.size()) +
                          " bytes, and no more than " + std::to_string(kMostOnTheWay) +
                          " can be sent at once",
                      "say it in several texts, each in a <speak> of its own");
    }
    return cutIntoPieces(std::move(text), kMostOnTheWay);
}

EventPrinter::Style styleOf(const Options& options, const Terminal& terminal, bool isMarkup) {
    if (options.json) {
        return EventPrinter::Style::Json;
    }
    // The running text would be full of tags.
    return terminal.isInteractive() && !isMarkup ? EventPrinter::Style::Words
                                                 : EventPrinter::Style::Lines;
}

/// Gives the service all of it and leaves; what is queued is spoken all the same.
void handOver(Session& session, const std::vector<std::string>& pieces) {
    Utterances sent;
    size_t onTheWay = 0;
    for (size_t n = 0; n < pieces.size(); ++n) {
        if (onTheWay + pieces[n].size() > kMostOnTheWay) {
            settle(session, sent,
                   "whether it has taken the beginning of the text (the rest was not sent), and it "
                   "was asked to drop what is left of it");
            onTheWay = 0;
        }
        const auto number = static_cast<uint32_t>(n + 1);
        check(session.client()->say(number, pieces[n]), "");
        sent.sent(number);
        onTheWay += pieces[n].size();
    }
    settle(session, sent,
           "whether it has taken the text, and it was asked to drop what is left of it");
}

}  // namespace

int runSay(const Options& options, Terminal& terminal) {
    const std::vector<std::string> pieces = piecesOf(options, textOf(options));
    if (pieces.empty()) {
        throw Failure(TTS::STATUS_BAD_PARAMETER, "there is nothing to say",
                      "give a text, --file FILE, or pipe a text into standard input");
    }
    Session session(terminal);
    applyProsody(session, options.prosody);
    if (options.wait || options.json) {
        const auto printer =
            EventPrinter::make(styleOf(options, terminal, isMarkedUp(pieces.front())),
                               [&terminal](const std::string& text) { terminal.print(text); });
        Speech(session, *printer).say(pieces);
    } else {
        handOver(session, pieces);
    }
    return 0;
}

int runSilence(const Options& options, Terminal& terminal) {
    Session session(terminal);
    if (options.wait) {
        const auto printer = EventPrinter::make(EventPrinter::Style::Silent, nullptr);
        Speech(session, *printer).pause(options.milliseconds);
    } else {
        check(session.client()->silence(1, options.milliseconds), "");
        Utterances sent;
        sent.sent(1);
        settle(session, sent,
               "whether it has taken the pause, and it was asked to drop what is left of it");
    }
    return 0;
}

int runStop(const Options&, Terminal& terminal) {
    Session session(terminal);
    check(session.client()->stopAndFlush(kFlushEverything), "");
    Utterances none;
    settle(session, none, "whether it has stopped");
    return 0;
}

}  // namespace voxtrelctl
