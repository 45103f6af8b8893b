// SPDX-License-Identifier: Apache-2.0
// What the interface for applications costs beside the class that it stands on: each speaks to the
// same service from a process of its own, in turn.
#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "bench/support/Timing.h"
#include "ipc/BinderHeaders.h"
#include "ipc/ITextToSpeechFestival.h"

namespace bench {
namespace {

constexpr int kRounds = 15;
constexpr int kRestarts = 7;
constexpr const char* kSays = "say 40";
constexpr int kProcesses = 7;
constexpr const char* kEvents = "event 20";

using Words = std::vector<std::string>;

pid_t start(const Words& words, int in, int out) {
    const pid_t child = fork();
    if (child != 0) {
        return child;
    }
    std::vector<char*> arguments;
    for (const std::string& word : words) {
        arguments.push_back(const_cast<char*>(word.c_str()));
    }
    arguments.push_back(nullptr);
    dup2(in, STDIN_FILENO);
    dup2(out, STDOUT_FILENO);
    execv(arguments[0], arguments.data());
    _exit(127);
}

void end(pid_t process) {
    kill(process, SIGKILL);
    waitpid(process, nullptr, 0);
}

/// A process that speaks when it is told to.
class Peer {
public:
    explicit Peer(const char* program) {
        int in[2];
        int out[2];
        if (pipe2(in, O_CLOEXEC) != 0 || pipe2(out, O_CLOEXEC) != 0) {
            std::perror("pipe2");
            std::exit(1);
        }
        mProcess = start({program}, in[0], out[1]);
        close(in[0]);
        close(out[1]);
        mIn = fdopen(in[1], "w");
        mOut = fdopen(out[0], "r");
    }
    ~Peer() {
        std::fclose(mIn);
        std::fclose(mOut);
        end(mProcess);
    }
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;

    std::string ask(const std::string& line) {
        std::fprintf(mIn, "%s\n", line.c_str());
        std::fflush(mIn);
        return hear();
    }

    std::string hear() {
        char line[128] = {};
        if (std::fgets(line, sizeof line, mOut) == nullptr) {
            std::fprintf(stderr, "a peer has ended\n");
            std::exit(1);
        }
        return line;
    }

    double number(const std::string& line) { return std::stod(ask(line)); }

private:
    pid_t mProcess = -1;
    std::FILE* mIn = nullptr;
    std::FILE* mOut = nullptr;
};

pid_t startService(const std::string& folder) {
    const Words words = {VOXTREL_SERVICE,         "--sink",      "none", "--profile",
                         folder + "/voxtrel.ini", "--log-level", "error"};
    return start(words, STDIN_FILENO, STDERR_FILENO);
}

std::int64_t nowNs() {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

/// When somebody who looks all the time finds a service with its voices.
std::int64_t awaitServiceNs() {
    for (;;) {
        const android::sp<android::IBinder> binder =
            android::defaultServiceManager()->checkService(TTS::ITextToSpeechFestival::descriptor);
        TTS::Capabilities capabilities;
        if (binder != nullptr) {
            (void)TTS::ITextToSpeechFestival::asInterface(binder)->getCapabilities(capabilities);
        }
        if (capabilities.ready) {
            return nowNs();
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

/// From the moment when the service is back until the sentence that waited for it begins.
double restart(Peer& facade, pid_t& service, const std::string& folder) {
    end(service);
    std::this_thread::sleep_for(std::chrono::milliseconds(500));
    facade.ask("next");
    service = startService(folder);
    const std::int64_t back = awaitServiceNs();
    const std::int64_t begun = std::stoll(facade.hear());
    return static_cast<double>(std::max<std::int64_t>(begun - back, 0)) / 1e6;
}

/// What a process of `program` holds that has spoken.
double residentKib(const char* program) {
    Peer peer(program);
    (void)peer.ask(kSays);
    return peer.number("rss");
}

/// From say to the started event: the interface against the class, in a process each.
double eventRatio() {
    Peer facade(FACADE_PEER);
    Peer bare(CLASS_PEER);
    const Contest event = contest(
        kRounds, [&] { return facade.number(kEvents); }, [&] { return bare.number(kEvents); });
    report("from say to the started event", event);
    return event.ratio;
}

void run(const std::string& folder) {
    setenv("VOXTREL_BINDER_SOCKET", (folder + "/binder").c_str(), 1);
    const pid_t manager = start({VOXTREL_SERVICE_MANAGER}, STDIN_FILENO, STDERR_FILENO);
    pid_t service = startService(folder);
    (void)awaitServiceNs();
    {
        // What the runtime's pool of threads takes differs from one process to the next.
        std::vector<double> more;
        for (int n = 0; n < kProcesses; ++n) {
            more.push_back(residentKib(FACADE_PEER) - residentKib(CLASS_PEER));
        }
        figure("facade_rss_kib", median(more));
    }
    {
        Peer facade(FACADE_PEER);
        Peer bare(CLASS_PEER);
        const Contest say = contest(
            kRounds, [&] { return facade.number(kSays); }, [&] { return bare.number(kSays); });
        report("say, the caller's time", say);
        figure("facade_say_over_class", say.ratio);
    }
    {
        // So does where the system places the threads of two processes that wake each other.
        std::vector<double> ratios;
        for (int n = 0; n < kProcesses; ++n) {
            ratios.push_back(eventRatio());
        }
        figure("facade_say_to_event_over_class", median(ratios));
    }
    {
        Peer facade(FACADE_PEER);
        (void)facade.ask("say 1");  // it is connected
        std::vector<double> times;
        for (int n = 0; n < kRestarts; ++n) {
            times.push_back(restart(facade, service, folder));
        }
        figure("reconnect_ms_after_return", median(times));
    }
    end(service);
    end(manager);
}

}  // namespace
}  // namespace bench

int main() {
    std::string folder = (std::filesystem::temp_directory_path() / "voxtrel_bench-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) {
        std::perror("mkdtemp");
        return 1;
    }
    bench::run(folder);
    std::filesystem::remove_all(folder);
    bench::printFigures();
    return 0;
}
