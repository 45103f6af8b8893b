// SPDX-License-Identifier: Apache-2.0
// A client of the service, as an application is one.
// usage: scale_client BOARD crowd   joins, says one text at each turn, and counts what it is told
//        scale_client BOARD idle    is no client, and waits
//        scale_client BOARD woken   is no client, and counts at each turn that it has run
//        scale_client BOARD         does what the lines on standard input say, and prints a line of
//                                   microseconds for each:
//   events N       from say to the started event, N times
//   fill N         to hand N texts over, of which none is spoken yet
//   drain N        to have these spoken
//   set N LISTENERS  to the answer, and to the last of the listeners being told, N times each
#include <binder/ProcessState.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <algorithm>
#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <mutex>
#include <string>

#include "bench/scale/Board.h"
#include "client/TTSClientPrivate.h"
#include "vocabulary/Events.h"

namespace bench {
namespace {

constexpr const char* kText = "Hello, world.";

/// Counts what the process is told, for a thread that waits for so many of them.
class Events {
public:
    void come(unsigned event) {
        const int64_t now = nowNs();
        const std::lock_guard<std::mutex> lock(mMutex);
        if (event == TTS::EVENT_STARTED) {
            ++mStarted;
            mStartedNs = now;
        } else if (event == TTS::EVENT_FINISHED || event == TTS::EVENT_STOPPED) {
            ++mEnded;
            mEndedNs = now;
        }
        if (mEnded >= mWanted) {
            mCame.notify_all();
        }
    }

    /// Waits until `more` texts have ended since the last time.
    void awaitEnds(unsigned more) {
        std::unique_lock<std::mutex> lock(mMutex);
        mWanted += more;
        mCame.wait(lock, [&] { return mEnded >= mWanted; });
    }

    /// Of the latest, while no other is on its way.
    int64_t startedNs() const { return mStartedNs; }
    int64_t endedNs() const { return mEndedNs; }

private:
    std::mutex mMutex;
    std::condition_variable mCame;
    unsigned mWanted = 0;
    unsigned mStarted = 0;
    unsigned mEnded = 0;
    int64_t mStartedNs = 0;
    int64_t mEndedNs = 0;
};

Events gEvents;
Board* gBoard = nullptr;

void onEvent(unsigned event, unsigned /*second*/, unsigned /*third*/) {
    gEvents.come(event);
}

/// The latest moment wins, in whatever order the processes come.
void note(std::atomic<uint32_t>& counter) {
    const int64_t now = nowNs();
    int64_t last = gBoard->lastNs;
    while (last < now && !gBoard->lastNs.compare_exchange_weak(last, now)) {
    }
    ++counter;
}

void onCrowdEvent(unsigned event, unsigned /*second*/, unsigned /*third*/) {
    if (event == TTS::EVENT_STATE) {
        note(gBoard->told);
    } else if (event == TTS::EVENT_FINISHED) {
        note(gBoard->ended);
    }
}

void print(int64_t from, int64_t to) {
    std::cout << ' ' << static_cast<double>(to - from) / 1000.0;
}

void measureEvents(TTS::TTSClientPrivate& client, int rounds) {
    for (int n = 0; n < rounds; ++n) {
        const int64_t called = nowNs();
        (void)client.say(1, kText);
        gEvents.awaitEnds(1);
        print(called, gEvents.startedNs());
    }
}

void fillQueue(TTS::TTSClientPrivate& client, unsigned texts) {
    gBoard->hold = 1;
    const int64_t called = nowNs();
    for (unsigned n = 0; n < texts; ++n) {
        (void)client.say(n, kText);
    }
    (void)client.enabled();  // the service has taken all of them
    print(called, nowNs());
}

void drainQueue(unsigned texts) {
    const int64_t begun = nowNs();
    gBoard->hold = 0;
    gEvents.awaitEnds(texts);
    print(begun, gEvents.endedNs());
}

/// So long that all listeners have gone back to sleep since the last change.
constexpr useconds_t kRestUs = 20'000;

void measureSetting(TTS::TTSClientPrivate& client, int rounds, unsigned listeners) {
    for (int n = 0; n < rounds; ++n) {
        static uint32_t speed = 200;
        speed = 200 + (speed + 1) % 100;
        usleep(kRestUs);
        const uint32_t all = gBoard->told + listeners;
        const int64_t called = nowNs();
        (void)client.setGlobalConfig(GCONF_SPEED, &speed);
        const int64_t answered = nowNs();
        while (gBoard->told != all) {
            usleep(100);
        }
        print(called, answered);
        print(called, std::max<int64_t>(gBoard->lastNs, answered));
    }
}

void obey(TTS::TTSClientPrivate& client) {
    std::string what;
    unsigned first = 0;
    unsigned second = 0;
    while (std::cin >> what >> first) {
        if (what == "events") {
            measureEvents(client, static_cast<int>(first));
        } else if (what == "fill") {
            fillQueue(client, first);
        } else if (what == "drain") {
            drainQueue(first);
        } else if (what == "set" && std::cin >> second) {
            measureSetting(client, static_cast<int>(first), second);
        }
        std::cout << std::endl;
    }
}

[[noreturn]] void beWoken() {
    uint32_t turn = gBoard->turn;
    ++gBoard->joined;
    for (;;) {
        turn = awaitTurn(*gBoard, turn);
        note(gBoard->ended);
    }
}

[[noreturn]] void beOneOfTheCrowd(TTS::TTSClientPrivate& client) {
    uint32_t turn = gBoard->turn;
    ++gBoard->joined;
    for (;;) {
        turn = awaitTurn(*gBoard, turn);
        (void)client.say(1, kText);
    }
}

int run(const std::string& what) {
    if (what == "idle") {
        ++gBoard->joined;
        pause();
        return 0;
    }
    if (what == "woken") {
        beWoken();
    }
    android::ProcessState::self()->startThreadPool();
    TTS::TTSClientPrivate client("scale_client", what == "crowd" ? onCrowdEvent : onEvent);
    const int status = client.connect();
    if (status != 0) {
        std::fprintf(stderr, "scale_client: connect answers %d\n", status);
        return 1;
    }
    if (what == "crowd") {
        beOneOfTheCrowd(client);
    }
    obey(client);
    return 0;
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (argc < 2) {
        return 2;
    }
    bench::gBoard = &bench::boardAt(std::atoi(argv[1]));
    return bench::run(argc > 2 ? argv[2] : "");
}
