// SPDX-License-Identifier: Apache-2.0
#include "tools/EventQueue.h"

#include <poll.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace voxtrelctl {
namespace {

sigset_t endingSignals() {
    sigset_t set;
    sigemptyset(&set);
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        sigaddset(&set, number);
    }
    return set;
}

int checked(int descriptor, const char* what) {
    if (descriptor < 0) {
        throw std::system_error(errno, std::generic_category(), what);
    }
    return descriptor;
}

int millisecondsUntil(EventQueue::Clock::time_point deadline) {
    if (deadline == EventQueue::Clock::time_point::max()) {
        return -1;
    }
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - EventQueue::Clock::now());
    return static_cast<int>(std::clamp<int64_t>(left.count(), 0, 3'600'000));
}

}  // namespace

EventQueue& EventQueue::instance() {
    static auto* const queue = new EventQueue;
    return *queue;
}

EventQueue::EventQueue() {
    const sigset_t set = endingSignals();
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    mSignals = checked(signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK), "signalfd");
    mWake = checked(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK), "eventfd");
}

void EventQueue::onEvent(unsigned first, unsigned second, unsigned third) {
    instance().post({Notice::Source::Service, {first, second, third}, 0});
}

void EventQueue::post(const Notice& notice) {
    {
        const std::lock_guard<std::mutex> hold(mMutex);
        mQueue.push_back(notice);
    }
    // A full counter is a wake-up that is still to be read, so a refused write loses nothing.
    (void)eventfd_write(mWake, 1);
}

bool EventQueue::take(const Filter& wanted, Notice& notice) {
    const std::lock_guard<std::mutex> hold(mMutex);
    const auto found = std::find_if(mQueue.begin(), mQueue.end(), wanted);
    if (found == mQueue.end()) {
        return false;
    }
    notice = *found;
    mQueue.erase(found);
    return true;
}

Notice EventQueue::next(Clock::time_point deadline, const Filter& wanted) {
    for (;;) {
        signalfd_siginfo signal = {};
        if (read(mSignals, &signal, sizeof(signal)) == sizeof(signal)) {
            return {Notice::Source::Interrupted, {}, static_cast<int>(signal.ssi_signo)};
        }
        // The counter is cleared before the queue is looked at: a post in between wakes the poll.
        eventfd_t posted = 0;
        (void)eventfd_read(mWake, &posted);
        Notice notice;
        if (take(wanted, notice)) {
            return notice;
        }
        pollfd sources[] = {{mSignals, POLLIN, 0}, {mWake, POLLIN, 0}};
        if (poll(sources, 2, millisecondsUntil(deadline)) == 0 && Clock::now() >= deadline) {
            return {};
        }
    }
}

Notice EventQueue::next() {
    return next(Clock::time_point::max(), [](const Notice&) { return true; });
}

}  // namespace voxtrelctl
