// SPDX-License-Identifier: Apache-2.0
// A service manager that is there, but does not get round to accepting connections.
#include <binder/ProcessState.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "socket/Listener.h"
#include "tests/platform/ProbeTest.h"
#include "tests/socket/RawWire.h"

namespace {

using android::IBinder;
using android::sp;
using std::chrono::microseconds;
using std::chrono::steady_clock;
using voxtrel_test::ChildProcess;

constexpr size_t kThreads = 8;

struct Asked {
    microseconds slowest{0};
    std::vector<sp<IBinder>> contexts;
};

// So many threads ask for the service manager at once.
Asked askAtOnce(size_t count) {
    std::vector<microseconds> took(count);
    Asked asked;
    asked.contexts.resize(count);
    std::atomic<size_t> waiting{count};
    std::vector<std::thread> threads;
    for (size_t i = 0; i < count; ++i) {
        threads.emplace_back([&, i] {
            --waiting;
            while (waiting != 0) {
                std::this_thread::yield();
            }
            const auto begin = steady_clock::now();
            asked.contexts[i] = android::ProcessState::self()->getContextObject(nullptr);
            took[i] = std::chrono::duration_cast<microseconds>(steady_clock::now() - begin);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    asked.slowest = *std::max_element(took.begin(), took.end());
    return asked;
}

size_t found(const Asked& asked) {
    return asked.contexts.size() -
           static_cast<size_t>(std::count(asked.contexts.begin(), asked.contexts.end(), nullptr));
}

// Has not asked for the service manager before it is told to: first in vain, then with success.
const voxtrel_test::Role kAsker("asker", [](const voxtrel_test::Arguments&) {
    const auto us = [](const Asked& asked) { return std::to_string(asked.slowest.count()); };
    voxtrel_test::tell("ready");
    (void)voxtrel_test::hear();
    const Asked alone = askAtOnce(1);
    const Asked many = askAtOnce(kThreads);
    voxtrel_test::tell(us(alone));
    voxtrel_test::tell(us(many));
    voxtrel_test::tell(std::to_string(found(alone) + found(many)));
    (void)voxtrel_test::hear();
    const Asked served = askAtOnce(kThreads);
    const auto& contexts = served.contexts;
    const auto same = std::count(contexts.begin(), contexts.end(), contexts.front());
    voxtrel_test::tell(std::to_string(found(served)) + " " + std::to_string(same));
    return 0;
});

// Connections until no more can wait to be accepted.
std::vector<raw::Fd> fillBacklog(const std::string& path) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof(address.sun_path) - 1);
    std::vector<raw::Fd> held;
    for (int i = 0; i < 1000; ++i) {
        raw::Fd socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
        if (connect(socket.get(), reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0) {
            break;
        }
        held.push_back(std::move(socket));
    }
    return held;
}

class AServiceManagerThatDoesNotAnswer : public probe::ProbeTest {
protected:
    void stopManager() {
        mRuntime.manager().kill(SIGSTOP);
        // Until all its threads have stopped it may accept.
        siginfo_t stopped = {};
        ASSERT_EQ(0, waitid(P_PID, static_cast<id_t>(mRuntime.manager().pid()), &stopped,
                            WSTOPPED | WNOWAIT));
    }
};

// A signal every 10 ms, to the main thread, for 5 s at most.
class Alarms {
public:
    static constexpr int kMax = 500;

    Alarms() {
        gCount = 0;
        struct sigaction action = {};
        action.sa_handler = &count;  // and no SA_RESTART
        sigaction(SIGALRM, &action, &mBefore);
        setInterval(10000);
    }
    ~Alarms() {
        setInterval(0);
        sigaction(SIGALRM, &mBefore, nullptr);
    }
    Alarms(const Alarms&) = delete;
    Alarms& operator=(const Alarms&) = delete;

    static int counted() { return gCount; }

private:
    static void setInterval(suseconds_t us) {
        const itimerval when = {{0, us}, {0, us}};
        setitimer(ITIMER_REAL, &when, nullptr);
    }
    static void count(int /*signal*/) {
        if (++gCount == kMax) {
            setInterval(0);
        }
    }

    static inline std::atomic<int> gCount{0};
    struct sigaction mBefore = {};
};

TEST_F(AServiceManagerThatDoesNotAnswer, IsGivenUpWhateverSignalsComeMeanwhile) {
    stopManager();
    const std::vector<raw::Fd> waiting = fillBacklog(mRuntime.socket());
    const Alarms alarms;
    EXPECT_FALSE(android::transport::connectTo(mRuntime.socket()).valid());
    EXPECT_GT(Alarms::counted(), 0);
    EXPECT_LT(Alarms::counted(), Alarms::kMax) << "given up only when they ended";
}

TEST_F(AServiceManagerThatDoesNotAnswer, MakesEachThreadWaitForItselfOnly) {
    ChildProcess asker = ChildProcess::asRole("asker");
    ASSERT_EQ("ready", asker.readLine());
    stopManager();
    {
        const std::vector<raw::Fd> waiting = fillBacklog(mRuntime.socket());
        const long alone = std::stol("0" + asker.ask("ask"));
        const long slowest = std::stol("0" + asker.readLine());
        EXPECT_EQ("0", asker.readLine()) << "found, though the backlog was full";
        EXPECT_GT(alone, 0);
        EXPECT_LT(slowest, 4 * alone) << "of " << kThreads;
    }
    mRuntime.manager().kill(SIGCONT);
    ASSERT_TRUE(
        voxtrel_test::eventually([this] { return raw::connectTo(mRuntime.socket()).get() >= 0; }));
    EXPECT_EQ("8 8", asker.ask("ask")) << "found, and of them the same one";
}

}  // namespace
