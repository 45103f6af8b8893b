// SPDX-License-Identifier: Apache-2.0
#include <functional>
#include <mutex>
#include <optional>

#include "tools/ClientSettings.h"
#include "tools/Commands.h"
#include "tools/EventPrinter.h"
#include "tools/SsmlChecker.h"
#include "tools/Text.h"
#include "tools/TextInput.h"

namespace voxtrelctl {
namespace {

using voxtrel::Milliseconds;
using voxtrel::Outcome;
using voxtrel::Status;
using voxtrel::Utterance;

constexpr Milliseconds kProgressStep(1000);

/// So long the end of speech that the user has interrupted is waited for.
constexpr Milliseconds kLastEvents(50);

/// So much of a text is on its way at a time.
constexpr std::size_t kWindow = 65536;

std::string textOf(const Options& options) {
    if (!options.words.empty() && !options.file.empty()) {
        throw Failure(TTS::STATUS_BAD_PARAMETER, "both a text and a file are given",
                      "give one of them");
    }
    if (options.words.empty()) {
        return options.file.empty() || options.file == "-" ? readStandardInput()
                                                           : readTextFile(options.file);
    }
    std::string text;
    for (const std::string& word : options.words) {
        text += (text.empty() ? "" : " ") + word;
    }
    return toUtf8(text, "the text");
}

void checkText(const Options& options, const std::string& text) {
    const auto mistake = options.ssml ? SsmlChecker(text).check() : std::nullopt;
    if (mistake) {
        throw Failure(TTS::STATUS_BAD_PARAMETER,
                      "line " + std::to_string(mistake->line) + ", column " +
                          std::to_string(mistake->column) + ": " + forTerminal(mistake->what),
                      "correct the markup, or leave out --ssml");
    }
    if (isMarkedUp(text) && text.size() > kWindow) {
        throw Failure(TTS::STATUS_BAD_PARAMETER,
                      "the marked-up text has " + std::to_string(text.size()) +
                          " bytes, and no more than " + std::to_string(kWindow) +
                          " can be sent at once",
                      "say it in several texts, each in a <speak> of its own");
    }
    if (isBlank(text)) {
        throw Failure(TTS::STATUS_BAD_PARAMETER, "there is nothing to say",
                      "give a text, --file FILE, or pipe a text into standard input");
    }
}

EventPrinter::Style styleOf(const Options& options, const Terminal& terminal, bool isMarkup) {
    if (options.json) {
        return EventPrinter::Style::Json;
    }
    // The running text would be full of tags.
    return terminal.isInteractive() && !isMarkup ? EventPrinter::Style::Words
                                                 : EventPrinter::Style::Lines;
}

/// What is switched off is said before anything is sent.
void requireSpeech(Connection& connection) {
    const auto isOn = connection.client().isOn(voxtrel::Switch::Speech, connection.left());
    check(connection.require(isOn) ? 0 : TTS::STATUS_DISABLED, "");
}

/// Throws what an utterance ended with, unless it is in order.
void judge(Connection& connection, const Outcome& outcome) {
    if (connection.isInterrupted()) {
        throw Interrupted();
    }
    const bool hasDied =
        outcome.kind() == Outcome::Kind::Lost && outcome.status() == Status::NoService;
    if (outcome.status() != Status::Ok) {
        throw Failure(static_cast<int>(outcome.status()), hasDied ? "it died while speaking" : "");
    }
}

/// Shows what becomes of an utterance.
class Follower {
public:
    /// @param text must outlive this object.
    Follower(Connection& connection, const std::string& text, EventPrinter::Style style,
             Terminal& terminal)
        : mConnection(connection),
          mPrinter(style, text, [&terminal](const std::string& line) { terminal.print(line); }) {
        // What a handler throws is lost, so it only notes.
        connection.client().onEvent([this](const voxtrel::Event& told) {
            mIsOver = mIsOver || told.kind == voxtrel::Event::Kind::Ended;
            const std::optional<Event> event = toEvent(told);
            if (event && event->kind != TTS::EVENT_STATE) {
                mEvents.push_back(*event);
            }
        });
    }
    ~Follower() {
        mConnection.onEnd({});
        mConnection.client().onEvent({});
    }
    Follower(const Follower&) = delete;
    Follower& operator=(const Follower&) = delete;

    /// Until it has its outcome, or the user does not want to hear more.
    void follow(const Utterance& said) {
        mConnection.onEnd([this, number = said.number()] { endAs(number); });
        while (!mIsOver && !mConnection.isInterrupted()) {
            mConnection.dispatchWhileItAnswers();
            show();
        }
        if (!mIsOver) {
            mConnection.dispatch(kLastEvents);
            show();
        }
        mConnection.restart();
        if (mConnection.isInterrupted()) {
            endAs(said.number());
        }
    }

private:
    void show() {
        const std::lock_guard<std::mutex> lock(mMutex);
        for (const Event& event : mEvents) {
            mHasEnded =
                mHasEnded || event.kind == TTS::EVENT_FINISHED || event.kind == TTS::EVENT_STOPPED;
            mPrinter.show(event);
        }
        mEvents.clear();
    }

    /// The user has interrupted it; the service was asked to stop it, and is late to tell.
    void endAs(std::uint64_t number) {
        const std::unique_lock<std::mutex> lock(mMutex, std::try_to_lock);
        if (lock.owns_lock() && !mHasEnded) {
            mHasEnded = true;
            mPrinter.show({TTS::EVENT_STOPPED, static_cast<std::uint32_t>(number)});
        }
    }

    Connection& mConnection;
    EventPrinter mPrinter;
    std::vector<Event> mEvents;  ///< the main thread's
    bool mIsOver = false;        ///< its outcome was told; the main thread's
    std::mutex mMutex;           ///< of what is shown
    bool mHasEnded = false;
};

/// Is there more of a text than the service can have, which waits for its turn there?
bool isStillGiven(Connection& connection, const std::string& text) {
    return text.size() > kWindow && connection.client().isOn(voxtrel::Switch::Speech);
}

[[noreturn]] void giveUp(Connection& connection, const voxtrel::Error& why,
                         const std::string& what) {
    connection.client().stop();
    if (!connection.isUntold(why)) {
        connection.require(why);
    }
    throw Unanswered(
        "whether it has taken " + what + ", and it was asked to drop what is left of it",
        connection.takesAnyPause() ? Unanswered::Why::TakesAnyPause : Unanswered::Why::NoEvent);
}

/// Gives the service all of it and leaves; what is queued is spoken all the same.
void handOver(Connection& connection, Terminal& terminal, const Utterance& said,
              const std::string& text, const std::string& what) {
    voxtrel::Client& client = connection.client();
    const bool isLong = text.size() > kWindow;
    voxtrel::Result<void> taken = client.waitUntilTaken(isLong ? kProgressStep : connection.left());
    while (taken.status() == Status::TimedOut && isStillGiven(connection, text)) {
        const auto percent = 100 * said.position().bytes / text.size();
        terminal.progress("giving the text to the service as it is spoken",
                          std::to_string(percent) + " %");
        taken = client.waitUntilTaken(kProgressStep);
    }
    terminal.endProgress();
    if (!taken && said.outcome().isPending()) {
        giveUp(connection, taken.error(), what);
    }
    if (isLong) {
        connection.restart();
    }
    judge(connection, said.outcome());
}

/// Speaks with `say`, and stays as long as the options ask for.
void speak(const Options& options, Terminal& terminal, Connection& connection,
           const std::function<Utterance()>& say, const std::string& text,
           EventPrinter::Style style) {
    if (options.wait || options.json) {
        Follower follower(connection, text, style, terminal);
        const Utterance said = say();
        follower.follow(said);
        judge(connection, said.outcome());
    } else {
        const bool isPause = options.command == Command::Silence;
        handOver(connection, terminal, say(), text, isPause ? "the pause" : "the text");
    }
    connection.complain();
}

}  // namespace

int runSay(const Options& options, Terminal& terminal) {
    const std::string text = textOf(options);
    checkText(options, text);
    Connection connection(options, terminal);
    connection.connect();
    applyProsody(connection, options.prosody);
    requireSpeech(connection);
    speak(
        options, terminal, connection, [&] { return connection.client().say(text); }, text,
        styleOf(options, terminal, isMarkedUp(text)));
    return 0;
}

int runSilence(const Options& options, Terminal& terminal) {
    Connection connection(options, terminal);
    connection.connect();
    requireSpeech(connection);
    const auto pause = [&] {
        return connection.client().pause(Milliseconds(options.milliseconds));
    };
    speak(options, terminal, connection, pause, "", EventPrinter::Style::Silent);
    return 0;
}

int runStop(const Options& options, Terminal& terminal) {
    Connection connection(options, terminal);
    connection.connect();
    requireSpeech(connection);
    voxtrel::Client& client = connection.client();
    const auto stopped = options.process != 0
                             ? client.stopProcess(options.process, connection.left())
                             : client.stopEverybody(connection.left());
    if (connection.isUntold(stopped.error())) {
        throw Unanswered("whether it has stopped");
    }
    connection.require(stopped.error());
    connection.complain();
    return 0;
}

}  // namespace voxtrelctl
