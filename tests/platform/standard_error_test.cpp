// SPDX-License-Identifier: Apache-2.0
// Whoever reads a process's standard error, or does not, neither ends nor stops the process.
#include <binder/ProcessState.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/time.h>
#include <unistd.h>

#include <atomic>
#include <string>
#include <thread>

#include "support/Log.h"
#include "tests/platform/ProbeTest.h"

namespace {

using android::OK;
using android::String16;
using android::transport::LineLog;
using android::transport::logLine;
using probe::Call;
using voxtrel_test::ChildProcess;
using voxtrel_test::eventually;

// Standard error is a pipe from here on; gives the end to read, which runs full without a reader.
int pipeAsStandardError() {
    int ends[2] = {-1, -1};
    if (pipe2(ends, O_CLOEXEC) != 0 || dup2(ends[1], STDERR_FILENO) < 0) {
        return -1;
    }
    close(ends[1]);
    return ends[0];
}

// Leaves no room for one byte.
void fillStandardError() {
    fcntl(STDERR_FILENO, F_SETFL, O_NONBLOCK);
    const std::string much(4096, '.');
    while (write(STDERR_FILENO, much.data(), much.size()) > 0) {
    }
    while (write(STDERR_FILENO, ".", 1) > 0) {
    }
    fcntl(STDERR_FILENO, F_SETFL, 0);
}

// What can be read at once, without the filling.
std::string drained(int end) {
    fcntl(end, F_SETFL, O_NONBLOCK);
    std::string all;
    char part[4096];
    for (ssize_t got = 0; (got = read(end, part, sizeof(part))) > 0;) {
        all.append(part, static_cast<size_t>(got));
    }
    return all.substr(all.find_last_of('.') + 1);
}

std::string replaced(std::string text, const std::string& what) {
    for (size_t at = 0; (at = text.find(what)) != std::string::npos;) {
        text.replace(at, what.size(), "P");
    }
    return text;
}

// A service manager whose standard error nobody can read any more.
const voxtrel_test::Role kUnheardManager("undrained-manager", [](const voxtrel_test::Arguments&) {
    close(pipeAsStandardError());
    (void)signal(SIGPIPE, SIG_DFL);
    (void)execl(VOXTREL_SERVICEMANAGER, VOXTREL_SERVICEMANAGER, nullptr);
    return 1;
});

using TheServiceManagersLog = probe::ProbeTest;

TEST_F(TheServiceManagersLog, MayHaveNoReaderAnyMore) {
    mRuntime.killManager();
    const ChildProcess manager = ChildProcess::asRole("undrained-manager");
    for (const char* name : {"a", "b", "c"}) {
        const auto node = probe::makeNode();
        EXPECT_TRUE(eventually([&] {
            return android::defaultServiceManager()->addService(String16(name), node) == OK;
        })) << "it ended before "
            << name;
    }
    EXPECT_EQ(0, kill(manager.pid(), 0));
    EXPECT_EQ(3U, android::defaultServiceManager()->listServices().size());
}

// Serves with two threads at most and a full standard error; says what it logs when that is read.
const voxtrel_test::Role kUnreadServer("unread-server", [](const voxtrel_test::Arguments&) {
    const int end = pipeAsStandardError();
    fillStandardError();
    android::ProcessState::self()->setThreadPoolMaxThreadCount(2);
    probe::startPool();
    const auto node = probe::makeNode();
    (void)android::defaultServiceManager()->addService(String16("unread"), node);
    voxtrel_test::tell("ready");
    for (std::string line; !(line = voxtrel_test::hear()).empty();) {
        std::string logged = replaced(drained(end), std::to_string(getpid()));
        for (char& letter : logged) {
            letter = letter == '\n' ? '|' : letter;
        }
        voxtrel_test::tell("log:" + logged);
    }
    return 0;
});

using AFullStandardError = probe::ProbeTest;

TEST_F(AFullStandardError, KeepsNoThreadOfThePool) {
    ChildProcess unread = ChildProcess::asRole("unread-server");
    ASSERT_EQ("ready", unread.readLine());
    const auto node = probe::find("unread");
    const auto throwOnce = [&] {
        Call call;
        (void)call.to(node, probe::kThrow);
    };
    for (int i = 0; i < 5; ++i) {
        throwOnce();
    }
    EXPECT_EQ(OK, node->pingBinder());
    EXPECT_EQ("log:", unread.ask("drain"));
    throwOnce();
    const std::string log = unread.ask("drain");
    EXPECT_EQ(0U, log.find("log:binder[P]: 5 lines were left out|binder[P]: call ")) << log;
}

// This process's standard error is another file for a while.
class StandardErrorTest : public testing::Test {
protected:
    void TearDown() override {
        dup2(mBefore, STDERR_FILENO);
        close(mBefore);
    }
    const int mBefore = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3);
};

using ALineOnStandardError = StandardErrorTest;

TEST_F(ALineOnStandardError, IsLeftOutAndCountedWhenThereIsNoRoom) {
    const int end = pipeAsStandardError();
    fillStandardError();
    LineLog log;
    log.write("me", "first");
    log.writeLimited("me", "second");
    EXPECT_EQ("", drained(end));
    log.write("me", "third");
    log.write("me", "fourth");
    EXPECT_EQ("me: 2 lines were left out\nme: third\nme: fourth\n", drained(end));
    close(end);
}

std::atomic<int> gSignals{0};
constexpr int kMaxSignals = 500;

void setInterval(suseconds_t us) {
    const itimerval when = {{0, us}, {0, us}};
    setitimer(ITIMER_REAL, &when, nullptr);
}

// More often than the time limit, for 5 s at most.
TEST_F(ALineOnStandardError, IsLeftOutWhateverSignalsComeMeanwhile) {
    const int end = pipeAsStandardError();
    fillStandardError();
    struct sigaction before = {};
    struct sigaction counting = {};
    counting.sa_handler = [](int) {
        if (++gSignals == kMaxSignals) {
            setInterval(0);
        }
    };
    ASSERT_EQ(0, sigaction(SIGALRM, &counting, &before));
    setInterval(10000);
    for (int line = 0; line < 5; ++line) {
        LineLog().write("me", "unread");  // one that has left out a line does not wait again
    }
    setInterval(0);
    EXPECT_EQ(0, sigaction(SIGALRM, &before, nullptr));
    EXPECT_GT(gSignals, 0);
    EXPECT_LT(gSignals, kMaxSignals) << "left out only when they ended";
    close(end);
}

TEST_F(ALineOnStandardError, FindsRoomThatIsMadeMeanwhile) {
    const int end = pipeAsStandardError();
    LineLog log;
    bool found = false;  // this thread may be late, too
    for (int attempt = 0; attempt < 100 && !found; ++attempt) {
        fillStandardError();
        std::string read;
        std::thread reader([&] { read = drained(end); });
        log.write("me", "awaited");
        reader.join();
        read += drained(end);
        found = read.find("me: awaited\n") != std::string::npos;
    }
    EXPECT_TRUE(found);
    close(end);
}

// SIGPIPE, not blocked and as usual, would end this process.
TEST_F(ALineOnStandardError, RaisesNoSignalAndLeavesOneThatWasPending) {
    close(pipeAsStandardError());
    ASSERT_NE(SIG_ERR, signal(SIGPIPE, SIG_DFL));
    logLine("undrained");
    sigset_t pending;
    sigset_t pipe;
    sigemptyset(&pipe);
    sigaddset(&pipe, SIGPIPE);
    ASSERT_EQ(0, pthread_sigmask(SIG_BLOCK, &pipe, nullptr));
    logLine("undrained");
    ASSERT_EQ(0, sigpending(&pending));
    EXPECT_EQ(0, sigismember(&pending, SIGPIPE));
    ASSERT_EQ(0, raise(SIGPIPE));
    logLine("undrained");
    ASSERT_EQ(0, sigpending(&pending));
    EXPECT_EQ(1, sigismember(&pending, SIGPIPE));
    const timespec none = {};
    EXPECT_EQ(SIGPIPE, sigtimedwait(&pipe, nullptr, &none));
    EXPECT_EQ(0, pthread_sigmask(SIG_UNBLOCK, &pipe, nullptr));
}

}  // namespace
