// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/session/Session.h"

#include <unistd.h>

#include <algorithm>
#include <new>

#include "vocabulary/Status.h"
#include "voxtrel/session/BinderPort.h"
#include "voxtrel/session/CheckedCall.h"
#include "voxtrel/session/Wire.h"

namespace voxtrel {
namespace {

/// How long a thread that has nothing more to do may take to end.
constexpr std::chrono::milliseconds kToEnd(200);

/// A right service refuses a pause that is too long at once.
constexpr std::chrono::milliseconds kToRefuse(200);

/// A call that takes longer does not answer, whatever the deadline of whoever waits for it.
constexpr std::chrono::milliseconds kPrompt(100);

/// The service may still speak what an earlier session of this process has left it, and tells the
/// process: the numbers of the next one begin elsewhere.
std::shared_ptr<Session> newSessionOfProcess(
    const std::optional<std::vector<std::uint32_t>>& trusted) {
    constexpr std::uint32_t kNumbersOfOne = 0x100000;
    static std::uint32_t lastNumber = 0;
    lastNumber = (lastNumber + kNumbersOfOne) % Session::kFirstFence;
    return std::make_shared<Session>(std::make_unique<BinderPort>(trusted), lastNumber);
}

std::mutex gMutex;
std::weak_ptr<Session>& theSession() {
    static auto& session = *new std::weak_ptr<Session>;  // threads may outlive static objects
    return session;
}

}  // namespace

std::shared_ptr<Session> Session::ofProcess(
    const std::shared_ptr<Mailbox>& client,
    const std::optional<std::vector<std::uint32_t>>& trusted) {
    const std::lock_guard<std::mutex> guard(gMutex);
    return joinAt(
        theSession(), [&trusted] { return newSessionOfProcess(trusted); }, client);
}

std::shared_ptr<Session> Session::joinAt(std::weak_ptr<Session>& place,
                                         const NewSession& newSession,
                                         const std::shared_ptr<Mailbox>& client) {
    std::shared_ptr<Session> session = place.lock();
    if (session == nullptr || session->pid() != static_cast<unsigned>(getpid())) {
        // A forked child has the memory of its parent's session, and none of the threads.
        session = newSession();
        place = session;
    }
    session->join(client);
    return session;
}

Session::Session(std::unique_ptr<Port> port, std::uint32_t lastNumber)
    : mPort(std::move(port)),
      mPid(static_cast<unsigned>(getpid())),
      mSpeech([this](Mailbox& client, Event&& event) { tell(client, std::move(event)); },
              lastNumber) {}

Session::~Session() = default;

void Session::join(const std::shared_ptr<Mailbox>& client) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mClients.push_back(client);
    mIsEnding = false;
    try {
        mConnector.startWithoutSignals([self = shared_from_this()] { self->keepConnected(); });
        mSender.startWithoutSignals([self = shared_from_this()] { self->send(); });
    } catch (...) {
        mClients.pop_back();
        mIsEnding = mClients.empty();
        mToSend.notify_all();
        mToConnect.notify_all();
        throw;
    }
    mToSend.notify_all();
    mToConnect.notify_all();
}

/// The last that a thread does under the lock.
void Session::finish(Worker& worker) {
    worker.finish();
    mChanged.notify_all();
}

void Session::startHandling() {
    const std::lock_guard<std::mutex> lock(mMutex);
    mHandler.start([self = shared_from_this()] { self->handle(); });
}

void Session::leave(const std::shared_ptr<Mailbox>& client, Clock::time_point deadline) {
    client->close();
    std::unique_lock<std::mutex> lock(mMutex);
    const auto isLast = [&] { return mClients.size() == 1 && !mSpeech.isWanted(*client); };
    const auto isRefused = [this] { return mOpenFence == 0 || mService == nullptr || mIsStuck; };
    const auto inTime = std::min(deadline, mFenceSent + kToRefuse);
    if (isLast() && !mChanged.wait_until(lock, inTime, isRefused) && isLast()) {
        // Lest a service that takes such a pause begins it when nobody recalls it any more.
        mSpeech.oweFlush();
    }
    endDropped(lock, mSpeech.close(*client));
    // Whoever silences everybody gives this client's speech its outcomes without the lock, too.
    mChanged.wait(lock, [this] { return mEndings == 0; });
    mClients.erase(std::remove(mClients.begin(), mClients.end(), client), mClients.end());
    mHasNews = true;  // those behind it have moved to other places
    mToHandle.notify_one();
    if (mClients.empty() && !mIsEnding) {
        end(lock, deadline);
    }
}

/// No thread of the session runs but the caller's.
bool Session::isAlone() const {
    return !mConnector.isRunning() && !mSender.isRunning() &&
           (!mHandler.isRunning() || mHandler.isHere());
}

void Session::end(std::unique_lock<std::mutex>& lock, Clock::time_point deadline) {
    mIsEnding = true;
    const std::uint64_t end = ++mEnds;
    mToSend.notify_all();
    mToConnect.notify_all();
    mToHandle.notify_all();
    mChanged.notify_all();
    if (mIsStuck || mService == nullptr) {  // nobody has to be taken leave of
        deadline = std::min(deadline, Clock::now() + kToEnd);
    }
    const auto isOverruled = [&] { return !mIsEnding || mEnds != end; };
    mChanged.wait_until(lock, deadline, [&] { return isAlone() || isOverruled(); });
    if (isOverruled()) {
        return;  // a new client has joined, and goes on with the threads
    }
    // A thread that the runtime keeps ends by itself when the service answers or dies.
    std::thread ended[] = {mConnector.release(), mSender.release(), mHandler.release()};
    lock.unlock();
    for (std::thread& thread : ended) {
        if (thread.joinable()) {
            thread.join();
        }
    }
}

void Session::say(const std::shared_ptr<Speech>& speech) {
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mSpeech.add(speech);
    }
    mToSend.notify_one();  // without the lock, which whoever wakes up takes first
}

void Session::refuse(const std::shared_ptr<Speech>& speech, Status status) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mSpeech.refuse(speech, status);
}

void Session::stop(const std::shared_ptr<Mailbox>& client) {
    std::unique_lock<std::mutex> lock(mMutex);
    DroppedSpeech dropped = mSpeech.stop(*client);
    if (mOpenFence != 0 && !mSpeech.isAnythingInFlight()) {
        mSpeech.oweFlush();
    }
    mToSend.notify_one();
    endDropped(lock, std::move(dropped));
}

/// Lets go of the lock.
void Session::endDropped(std::unique_lock<std::mutex>& lock, DroppedSpeech dropped) {
    if (dropped.isEmpty()) {
        return;
    }
    ++mEndings;
    lock.unlock();
    dropped.end([](Mailbox& client, Event&& event) { client.put(std::move(event)); });
    lock.lock();
    --mEndings;
    mHasNews = true;
    mToHandle.notify_one();
    mChanged.notify_all();
}

bool Session::waitForAll(const Mailbox& client, Clock::time_point deadline) {
    std::unique_lock<std::mutex> lock(mMutex);
    return mChanged.wait_until(lock, deadline,
                               [&] { return !mSpeech.isOpen(client) && mEndings == 0; });
}

void Session::waitUntilSent(const Mailbox& client, Clock::time_point deadline) {
    std::unique_lock<std::mutex> lock(mMutex);
    mChanged.wait_until(lock, deadline, [&] {
        const bool isTaken = !mSpeech.isWaiting(client) && !mIsInside;
        return isTaken || (mService == nullptr && mIsAbsent) || mIsStuck;
    });
}

bool Session::isConnected() const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mService != nullptr;
}

Result<void> Session::waitUntilConnected(Clock::time_point deadline) {
    std::unique_lock<std::mutex> lock(mMutex);
    if (!mChanged.wait_until(lock, deadline, [this] { return mService != nullptr; })) {
        return unavailable(lock);
    }
    return {};
}

Result<TTS::Capabilities> Session::capabilities(Clock::time_point deadline) {
    const Result<void> connected = waitUntilConnected(deadline);
    if (!connected) {
        return connected.error();
    }
    const std::lock_guard<std::mutex> lock(mMutex);
    return *mCapabilities;
}

Result<Features> Session::features(Clock::time_point deadline) {
    const Result<void> connected = waitUntilConnected(deadline);
    if (!connected) {
        return connected.error();
    }
    const std::lock_guard<std::mutex> lock(mMutex);
    return mFeatures;
}

Result<void> Session::request(Work work, Clock::time_point deadline) {
    return perform(
        [work = std::move(work)](Service& service) { return callChecked(service, work).status(); },
        deadline);
}

Result<void> Session::perform(Work work, Clock::time_point deadline) {
    std::unique_lock<std::mutex> lock(mMutex);
    if (mIsStuck) {
        return Error{Status::Unresponsive, describe(Status::Unresponsive)};
    }
    if (!mChanged.wait_until(lock, deadline, [this] { return mService != nullptr; })) {
        return unavailable(lock);
    }
    const auto call = std::make_shared<Call>();
    call->work = std::move(work);
    mCalls.push_back(call);
    mToSend.notify_one();
    if (!mChanged.wait_until(lock, deadline, [&] { return call->isDone; })) {
        mCalls.erase(std::remove(mCalls.begin(), mCalls.end(), call), mCalls.end());
        mIsStuck = mIsInside && Clock::now() >= mInsideSince + kPrompt;
        return Error{Status::TimedOut, describe(Status::TimedOut)};
    }
    if (call->isOutOfMemory) {
        throw std::bad_alloc();
    }
    if (call->status == 0) {
        return {};
    }
    const auto status = static_cast<Status>(call->status);
    return Error{status, describe(status)};
}

}  // namespace voxtrel
