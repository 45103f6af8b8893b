// SPDX-License-Identifier: Apache-2.0
#include "service/Registration.h"

#include <binder/IServiceManager.h>
#include <binder/ProcessState.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <ctime>
#include <functional>
#include <utility>

#include "ipc/ITextToSpeechFestival.h"
#include "service/Locking.h"
#include "service/ManagerPlace.h"

namespace voxtreld {
namespace {

using android::IBinder;
using android::sp;
using android::status_t;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kStartPatience(10);
constexpr std::chrono::seconds kAnswerPatience(5);
constexpr std::chrono::seconds kStopPatience(1);
constexpr std::chrono::milliseconds kPause(100);
constexpr std::chrono::milliseconds kStartPause(10);

bool signalComesWithin(const sigset_t& signals, std::chrono::milliseconds time) {
    const timespec limit = {0, static_cast<long>(std::chrono::nanoseconds(time).count())};
    return sigtimedwait(&signals, nullptr, &limit) > 0;
}

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

}  // namespace

/// What the object and its threads share. It outlives the object where one of them still waits in
/// the runtime.
class Registration::Work : public std::enable_shared_from_this<Work> {
public:
    Work(AfterDeath after, Log log) : mAfter(after), mLog(std::move(log)) {}

    void keepRegistered(const sp<IBinder>& service);
    void end();
    void abandonCall() { mCallAbandoned = true; }

    bool isSettled() const;
    std::string failure() const;
    bool managerHasDied() const { return mManagerDied; }
    bool hasAbandonedCall() const { return mCallAbandoned; }

private:
    bool registerWith(const sp<IBinder>& manager, const sp<IBinder>& service);
    status_t add(const sp<IBinder>& service);
    bool answersInTime(const sp<IBinder>& other);
    void setRegistered();
    void fail(const std::string& reason);
    bool isOver() const;
    void wake();
    void pause();
    void waitForDeath(const ManagerDeath& death);

    const AfterDeath mAfter;
    const Log mLog;
    std::atomic<bool> mManagerDied{false};
    std::atomic<bool> mCallAbandoned{false};
    mutable Mutex mMutex;
    std::condition_variable mChanged;
    bool mRegistered VOXTRELD_GUARDED_BY(mMutex) = false;  // once, at least
    bool mEnded VOXTRELD_GUARDED_BY(mMutex) = false;
    std::string mFailure VOXTRELD_GUARDED_BY(mMutex);
};

void Registration::Work::keepRegistered(const sp<IBinder>& service) {
    while (!isOver()) {
        const sp<IBinder> manager = android::ProcessState::self()->getContextObject(nullptr);
        if (manager == nullptr && !isSettled()) {
            fail("no service manager answers at " + managerPlace() +
                 ": start it first (on a PC: voxtrel-servicemanager)");
        } else if (manager == nullptr || !registerWith(manager, service)) {
            pause();
        }
    }
}

/// Returns when that service manager has died, or there is nothing more to do.
/// @return false if it could not be asked, and another one is to be looked for after a while.
bool Registration::Work::registerWith(const sp<IBinder>& manager, const sp<IBinder>& service) {
    const sp<ManagerDeath> death = new ManagerDeath([self = shared_from_this()] { self->wake(); });
    const status_t linked = manager->linkToDeath(death, nullptr, 0);
    if (linked != android::OK && linked != android::INVALID_OPERATION) {
        return false;
    }
    const status_t added = add(service);
    if (added == android::DEAD_OBJECT || isOver()) {
        return false;
    }
    if (added != android::OK) {
        fail("the service manager refused the service's name: status " + std::to_string(added) +
             ": see its log; -1 means that another user holds the name, or that it is reserved for "
             "another user");
        return false;
    }
    setRegistered();
    waitForDeath(*death);
    return true;
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
    std::packaged_task<bool()> question([other] { return other->pingBinder() == android::OK; });
    std::future<bool> answer = question.get_future();
    std::thread asker(std::move(question));
    if (answer.wait_for(kAnswerPatience) == std::future_status::ready) {
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
    if (again) {
        mLog(LogLevel::Info, "registered again, with the service manager that has been started");
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
        kill(getpid(), SIGTERM);
    }
}

void Registration::Work::waitForDeath(const ManagerDeath& death) {
    {
        MutexLock held(mMutex);
        while (!mEnded && !death.told()) {
            held.wait(mChanged);
        }
        if (mEnded) {
            return;
        }
    }
    if (mAfter == AfterDeath::RegisterAgain) {
        mLog(LogLevel::Warning,
             "the service manager has died: new clients find the service when it is there again");
        return;
    }
    mManagerDied = true;
    end();
    kill(getpid(), SIGTERM);
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

Registration::Registration(AfterDeath after, Log log)
    : mWork(std::make_shared<Work>(after, std::move(log))) {}

Registration::~Registration() {
    (void)stop();
}

bool Registration::begin(const sp<IBinder>& service, const sigset_t& signals, std::string& error) {
    std::packaged_task<void()> task([work = mWork, service] { work->keepRegistered(service); });
    mEnd = task.get_future();
    mThread = std::thread(std::move(task));
    const auto deadline = Clock::now() + kStartPatience;
    while (!mWork->isSettled()) {
        if (Clock::now() >= deadline) {
            mWork->end();
            error = "the service manager at " + managerPlace() +
                    " has not registered the service within " +
                    std::to_string(kStartPatience.count()) + " s: it may hang; start it again";
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
        if (mEnd.wait_for(kStopPatience) == std::future_status::ready) {
            mThread.join();
        } else {
            mThread.detach();
            mWork->abandonCall();
        }
    }
    return !mWork->hasAbandonedCall();
}

}  // namespace voxtreld
