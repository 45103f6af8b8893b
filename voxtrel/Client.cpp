// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/Client.h"

#include <algorithm>

#include "voxtrel/ClientState.h"
#include "voxtrel/Deadline.h"
#include "voxtrel/session/TextCutter.h"
#include "voxtrel/session/Wire.h"
#include "voxtrel/testing/FakeSession.h"

namespace voxtrel {
namespace {

/// A text that is marked up cannot be cut.
constexpr std::size_t kMaxMarkedUp = 262144;

/// Ok if it can be spoken, whatever service there is.
Status checkText(const Speech& speech) {
    const bool isTooLong = speech.isMarkedUp() && speech.text.size() > kMaxMarkedUp;
    return isTooLong || firstInvalidByte(speech.text) ? Status::BadParameter : Status::Ok;
}

std::shared_ptr<Session> sessionFor(const ClientOptions& options,
                                    const std::shared_ptr<Mailbox>& mailbox) {
    return options.fake != nullptr ? testing::sessionOf(*options.fake, mailbox)
                                   : Session::ofProcess(mailbox, options.trustedUsers);
}

std::shared_ptr<ClientState> newState(const ClientOptions& options) {
    const bool isPolled = options.handlerThread == HandlerThread::OfTheApplication;
    const ClientState::Times times = {options.deadline, options.linger};
    auto state = std::make_shared<ClientState>(times, isPolled);
    // Last, for who has joined must leave again, also where memory has run out.
    state->session = sessionFor(options, state->mailbox);
    return state;
}

}  // namespace

Client::Client(const std::string&, const ClientOptions& options) : mState(newState(options)) {}

Client::~Client() {
    if (mState != nullptr) {
        mState->end(std::chrono::steady_clock::time_point::max());
    }
}

void Client::close(Milliseconds deadline) noexcept {
    if (mState != nullptr) {
        mState->end(deadlineAfter(deadline));
        mState.reset();
    }
}

Client::Client(Client&&) noexcept = default;

Client& Client::operator=(Client&& other) noexcept {
    if (this != &other) {
        Client old(std::move(*this));
        mState = std::move(other.mState);
    }
    return *this;
}

// What is asked for here may come to its end, and a handler of that may destroy the client, before
// these return: behind the request they use nothing of the client's.

Utterance Client::say(std::string_view text, const SpeechOptions& options) {
    const std::shared_ptr<Session> session = mState->session;
    const std::shared_ptr<Speech> speech = mState->newSpeech();
    speech->text = text;
    // Texts travel with a NUL behind them.
    std::replace(speech->text.begin(), speech->text.end(), '\0', ' ');
    speech->options = merged(options, speech->options);
    const Status textStatus = checkText(*speech);
    const Status status = textStatus != Status::Ok ? textStatus : checkOptions(speech->options);
    Utterance utterance(speech->state);
    if (status == Status::Ok) {
        session->say(speech);
    } else {
        session->refuse(speech, status);
    }
    return utterance;
}

Utterance Client::pause(Milliseconds length) {
    const std::shared_ptr<Session> session = mState->session;
    const std::shared_ptr<Speech> speech = mState->newSpeech();
    Utterance utterance(speech->state);
    if (length.count() >= 0 && length.count() < wire::kEndlessPause) {
        speech->pauseMs = static_cast<std::uint32_t>(length.count());
        session->say(speech);
    } else {
        session->refuse(speech, Status::BadParameter);
    }
    return utterance;
}

void Client::stop() {
    const std::shared_ptr<Session> session = mState->session;
    const std::shared_ptr<Mailbox> mailbox = mState->mailbox;
    session->stop(mailbox);
}

Result<void> Client::stopEverybody(std::optional<Milliseconds> deadline) {
    return mState->session->stopEverybody(mState->mailbox, mState->deadline(deadline));
}

Result<void> Client::stopProcess(std::uint32_t process, std::optional<Milliseconds> deadline) {
    return mState->session->stopProcess(process, mState->deadline(deadline));
}

Result<void> Client::waitForAll(Milliseconds timeout) {
    if (mState->session->waitForAll(*mState->mailbox, deadlineAfter(timeout))) {
        return {};
    }
    return Error{Status::TimedOut, "something is still being spoken, or waits for its turn"};
}

void Client::setDefaults(const SpeechOptions& defaults) {
    const std::lock_guard<std::mutex> lock(mState->mutex);
    mState->defaults = defaults;
}

SpeechOptions Client::defaults() const {
    const std::lock_guard<std::mutex> lock(mState->mutex);
    return mState->defaults;
}

void Client::onEvent(std::function<void(const Event&)> handler) {
    if (handler && !mState->mailbox->isPolled()) {
        mState->session->startHandling();
    }
    mState->mailbox->setHandler(std::move(handler));
}

int Client::fd() const noexcept {
    return mState->mailbox->fd();
}

std::size_t Client::dispatch(std::size_t max) {
    const std::shared_ptr<Mailbox> mailbox = mState->mailbox;  // a handler may destroy this client
    return mailbox->isPolled() ? mailbox->dispatch(max) : 0;
}

bool Client::isConnected() const noexcept {
    return mState->session->isConnected();
}

Result<void> Client::waitUntilConnected(std::optional<Milliseconds> deadline) {
    return mState->session->waitUntilConnected(mState->deadline(deadline));
}

Diagnosis Client::diagnose(std::optional<Milliseconds> deadline) {
    return mState->session->diagnose(mState->deadline(deadline));
}

Result<void> Client::waitUntilTaken(std::optional<Milliseconds> deadline) {
    return mState->session->waitUntilTaken(*mState->mailbox, mState->deadline(deadline));
}

Result<void> Client::checkEvents(std::optional<Milliseconds> deadline) {
    return mState->session->checkEvents(mState->deadline(deadline));
}

Result<Lock> Client::lock(std::optional<Milliseconds> deadline) {
    const Result<std::uint64_t> locked =
        mState->session->lock(*mState->mailbox, mState->deadline(deadline));
    return locked ? Result<Lock>(Lock(mState, *locked)) : Result<Lock>(locked.error());
}

Result<LockState> Client::lockState(std::optional<Milliseconds> deadline) {
    return mState->session->lockState(mState->deadline(deadline));
}

Result<std::uint32_t> Client::breakLock(std::optional<Milliseconds> deadline) {
    return mState->session->breakLock(*mState->mailbox, mState->deadline(deadline));
}

Lock& Lock::operator=(Lock&& other) noexcept {
    if (this != &other) {
        release();
        mClient = std::move(other.mClient);
        mNumber = other.mNumber;
    }
    return *this;
}

Lock::~Lock() {
    release();
}

bool Lock::isHeld() const noexcept {
    return mClient != nullptr && mClient->session->holdsLock(mNumber);
}

void Lock::release() noexcept {
    if (mClient != nullptr) {
        mClient->session->unlock(mNumber);
        mClient.reset();
    }
}

}  // namespace voxtrel
