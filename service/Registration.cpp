// SPDX-License-Identifier: Apache-2.0
#include "service/Registration.h"

#include <binder/IServiceManager.h>
#include <binder/ProcessState.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <optional>
#include <utility>

#include "ipc/ITextToSpeechFestival.h"
#include "service/Lifetime.h"
#include "service/Locking.h"
#include "service/ManagerPlace.h"

namespace voxtreld {
namespace {

using android::IBinder;
using android::sp;
using android::status_t;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kStartTimeout(10);
constexpr std::chrono::seconds kAnswerTimeout(5);
constexpr std::chrono::seconds kStopTimeout(1);
constexpr std::chrono::seconds kNameCheck(1);
constexpr std::chrono::milliseconds kPause(100);
constexpr std::chrono::milliseconds kStartPause(10);

class ManagerDeath : public IBinder::DeathRecipient {
public:
    explicit ManagerDeath(std::function<void()> tell) : mTell(std::move(tell)) {}
    void binderDied(const android::wp<IBinder>& /*who*/) override {
        mTold = true;
        mTell();
    }
    bool told() const { return mTold; }

private:
    const std::function<void()> mTell;
    std::atomic<bool> mTold{false};
};

// An early manager, or a service of another runtime, may not know the ping and answer it with an
// error.
bool answersAtAll(const sp<IBinder>& node) {
    const android::status_t status = node->pingBinder();
    return status != android::DEAD_OBJECT && status != android::FAILED_TRANSACTION;
}

}  // namespace

/// State shared by the object and its threads. Outlives the object while one of them still waits
/// in the runtime.
class Registration::Work : public std::enable_shared_from_this<Work> {
public:
    Work(AfterDeath after, Log log, Process process)
        : mAfter(after), mLog(std::move(log)), mProcess(std::move(process)) {}

    void keepRegistered(const sp<IBinder>& service);
    void end();
    void abandonCall() { mCallAbandoned = true; }

    bool isSettled() const;
    std::string failure() const;
    bool managerHasDied() const { return mManagerDied; }
    bool hasAbandonedCall() const { return mCallAbandoned; }

private:
    /// What became of an attempt to register.
    enum class Outcome {
        ManagerDied,  ///< or there is nothing more to do
        NotNow,       ///< to be tried again after a while
        DeadReference
    };

    Outcome registerWith(const sp<IBinder>& manager, const sp<IBinder>& service);
    Outcome addLinked(const sp<IBinder>& manager, const sp<IBinder>& service,
                      const ManagerDeath& death);
    Outcome refused(status_t status);
    status_t add(const sp<IBinder>& service);
    void failIfDeadForLong(Outcome outcome);
    bool keepName(const sp<IBinder>& manager, const sp<IBinder>& service,
                  const ManagerDeath& death);
    bool deathComesWithin(std::chrono::milliseconds time, const ManagerDeath& death);
    bool isRegistered() const;
    bool answersInTime(const sp<IBinder>& other);
    void setRegistered();
    void fail(const std::string& reason);
    bool isOver() const;
    void wake();
    void pause();
    void takeNoteOfDeath();

    const AfterDeath mAfter;
    const Log mLog;
    const Process mProcess;
    // Of the thread that registers.
    std::string mRegisteredAgain;                 ///< logged on the next success
    bool mHasWarned = false;                      ///< of this manager's refusals
    std::optional<Clock::time_point> mDeadSince;  ///< the reference to the manager
    std::atomic<bool> mManagerDied{false};
    std::atomic<bool> mCallAbandoned{false};
    mutable Mutex mMutex;
    std::condition_variable mChanged;
    bool mRegistered VOXTRELD_GUARDED_BY(mMutex) = false;  // once, at least
    bool mEnded VOXTRELD_GUARDED_BY(mMutex) = false;
    std::string mFailure VOXTRELD_GUARDED_BY(mMutex);
};

void Registration::Work::keepRegistered(const sp<IBinder>& service) {
    const auto deadline = Clock::now() + kManagerTimeout;
    while (!isOver()) {
        const sp<IBinder> manager = mProcess.contextObject();
        if (manager == nullptr && !isSettled() && Clock::now() >= deadline) {
            fail("no service manager answers at " + managerPlace() +
                 ": start it first (on a PC: voxtrel-servicemanager)");
            return;
        }
        const Outcome outcome =
            manager == nullptr ? Outcome::NotNow : registerWith(manager, service);
        failIfDeadForLong(outcome);
        if (outcome != Outcome::ManagerDied) {
            pause();
        }
    }
}

/// Returns when that service manager has died or lost the name, or could not be asked.
Registration::Work::Outcome Registration::Work::registerWith(const sp<IBinder>& manager,
                                                             const sp<IBinder>& service) {
    const sp<ManagerDeath> death = new ManagerDeath([self = shared_from_this()] { self->wake(); });
    const status_t linked = manager->linkToDeath(death, nullptr, 0);
    if (linked != android::OK && linked != android::INVALID_OPERATION) {
        return linked == android::DEAD_OBJECT ? Outcome::DeadReference : Outcome::NotNow;
    }
    const Outcome outcome = addLinked(manager, service, *death);
    (void)manager->unlinkToDeath(death, nullptr, 0, nullptr);  // refused where it has died
    return outcome;
}

Registration::Work::Outcome Registration::Work::addLinked(const sp<IBinder>& manager,
                                                          const sp<IBinder>& service,
                                                          const ManagerDeath& death) {
    const status_t added = add(service);
    if (added == android::DEAD_OBJECT || isOver()) {
        return Outcome::NotNow;
    }
    if (added != android::OK) {
        return refused(added);
    }
    setRegistered();
    return keepName(manager, service, death) ? Outcome::ManagerDied : Outcome::NotNow;
}

/// A service that was registered before gives up on permanent errors only.
Registration::Work::Outcome Registration::Work::refused(status_t status) {
    const bool isFinal = status == android::PERMISSION_DENIED || status == android::ALREADY_EXISTS;
    if (isFinal || !isRegistered()) {
        fail("the service manager refused the service's name: status " + std::to_string(status) +
             ": see its log; -1 means that another user holds the name, or that it is reserved for "
             "another user");
    } else if (!std::exchange(mHasWarned, true)) {
        mLog(LogLevel::Warning, "the service manager does not register the service: status " +
                                    std::to_string(status) + ": it is tried again until it does");
    }
    return Outcome::NotNow;
}

/// A device's runtime may return a cached reference to a dead manager although a new one runs.
void Registration::Work::failIfDeadForLong(Outcome outcome) {
    if (outcome != Outcome::DeadReference) {
        mDeadSince.reset();
        return;
    }
    const auto now = Clock::now();
    mDeadSince = mDeadSince.value_or(now);
    if (now - *mDeadSince >= mProcess.deadLimit) {
        fail(
            "the service manager has died, and this process cannot reach the next one, since its "
            "runtime keeps the reference to the dead one: start the service again");
    }
}

status_t Registration::Work::add(const sp<IBinder>& service) {
    const android::String16& wanted = TTS::ITextToSpeechFestival::descriptor;
    const sp<android::IServiceManager> manager = android::defaultServiceManager();
    const sp<IBinder> other = manager->checkService(wanted);
    if (other != nullptr && other != service && answersInTime(other)) {
        fail("another service answers under this one's name: end that one first");
        return android::ALREADY_EXISTS;
    }
    return manager->addService(wanted, service);
}

bool Registration::Work::answersInTime(const sp<IBinder>& other) {
    std::packaged_task<bool()> question([other] { return answersAtAll(other); });
    std::future<bool> answer = question.get_future();
    std::thread asker(std::move(question));
    if (answer.wait_for(kAnswerTimeout) == std::future_status::ready) {
        asker.join();
        return answer.get();
    }
    asker.detach();
    abandonCall();
    mLog(LogLevel::Warning,
         "the service that has this one's name does not answer: its name is taken over");
    return false;
}

void Registration::Work::setRegistered() {
    bool again = false;
    {
        const MutexLock held(mMutex);
        again = std::exchange(mRegistered, true);
    }
    mHasWarned = false;
    if (again) {
        mLog(LogLevel::Info, mRegisteredAgain);
    }
}

void Registration::Work::fail(const std::string& reason) {
    bool wasRegistered = false;
    {
        const MutexLock held(mMutex);
        mFailure = reason;
        wasRegistered = mRegistered;
    }
    if (wasRegistered) {
        mProcess.end();
    }
}

/// Another service can have taken the name, and ended, while this process was stopped.
/// @return true when the service manager has died, or there is nothing more to do; false when it
///     does not give the service under its name.
bool Registration::Work::keepName(const sp<IBinder>& manager, const sp<IBinder>& service,
                                  const ManagerDeath& death) {
    while (!deathComesWithin(kNameCheck, death)) {
        if (isOver()) {
            return true;
        }
        const sp<IBinder> found =
            android::defaultServiceManager()->checkService(TTS::ITextToSpeechFestival::descriptor);
        const bool isAnswer = found != nullptr || answersAtAll(manager);
        if (found != service && isAnswer) {
            mRegisteredAgain =
                "registered again: the service manager did not give the service under its name";
            return false;
        }
    }
    takeNoteOfDeath();
    return true;
}

/// @return false when the time is up, or at the end of the service.
bool Registration::Work::deathComesWithin(std::chrono::milliseconds time,
                                          const ManagerDeath& death) {
    const auto deadline = Clock::now() + time;
    MutexLock held(mMutex);
    while (!mEnded && !death.told() && held.waitUntil(mChanged, deadline)) {
    }
    return !mEnded && death.told();
}

void Registration::Work::takeNoteOfDeath() {
    if (mAfter == AfterDeath::RegisterAgain) {
        mRegisteredAgain = "registered again, with the service manager that has been started";
        mLog(LogLevel::Warning,
             "the service manager has died: new clients find the service when it is there again");
        return;
    }
    mManagerDied = true;
    end();
    mProcess.end();
}

void Registration::Work::end() {
    {
        const MutexLock held(mMutex);
        mEnded = true;
    }
    mChanged.notify_all();
}

void Registration::Work::wake() {
    {
        // A waiter that has just checked its condition must not miss the notification.
        const MutexLock held(mMutex);
    }
    mChanged.notify_all();
}

void Registration::Work::pause() {
    const auto deadline = Clock::now() + kPause;
    MutexLock held(mMutex);
    while (!mEnded && held.waitUntil(mChanged, deadline)) {
    }
}

bool Registration::Work::isRegistered() const {
    const MutexLock held(mMutex);
    return mRegistered;
}

bool Registration::Work::isSettled() const {
    const MutexLock held(mMutex);
    return mRegistered || !mFailure.empty();
}

bool Registration::Work::isOver() const {
    const MutexLock held(mMutex);
    return mEnded || !mFailure.empty();
}

std::string Registration::Work::failure() const {
    const MutexLock held(mMutex);
    return mFailure;
}

Registration::Process Registration::Process::own() {
    return {[] { return android::ProcessState::self()->getContextObject(nullptr); },
            [] { kill(getpid(), SIGTERM); }};
}

Registration::Registration(AfterDeath after, Log log, Process process)
    : mWork(std::make_shared<Work>(after, std::move(log), std::move(process))) {}

Registration::~Registration() {
    (void)stop();
}

bool Registration::begin(const sp<IBinder>& service, const sigset_t& signals, std::string& error) {
    std::packaged_task<void()> task([work = mWork, service] { work->keepRegistered(service); });
    mEnd = task.get_future();
    mThread = std::thread(std::move(task));
    const auto deadline = Clock::now() + kStartTimeout;
    while (!mWork->isSettled()) {
        if (Clock::now() >= deadline) {
            mWork->end();
            error = "the service manager at " + managerPlace() +
                    " has not registered the service within " +
                    std::to_string(kStartTimeout.count()) + " s: it may hang; start it again";
            return false;
        }
        if (signalComesWithin(signals, kStartPause)) {
            return false;
        }
    }
    error = mWork->failure();
    return error.empty();
}

std::string Registration::loss() const {
    return mWork->failure();
}

bool Registration::managerHasDied() const {
    return mWork->managerHasDied();
}

bool Registration::stop() {
    if (mThread.joinable()) {
        mWork->end();
        if (mEnd.wait_for(kStopTimeout) == std::future_status::ready) {
            mThread.join();
        } else {
            mThread.detach();
            mWork->abandonCall();
        }
    }
    return !mWork->hasAbandonedCall();
}

}  // namespace voxtreld
