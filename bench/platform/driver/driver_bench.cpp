// SPDX-License-Identifier: Apache-2.0
// What a call over the kernel's driver costs over the least that it could: two processes and ioctl
// with nothing in between, on a device of their own. All in one run, so that the ratios do not
// depend on the machine. To be run with VOXTREL_BINDER_DRIVER set.
#include <binder/BinderService.h>

#include <cstdio>
#include <cstdlib>

#include "bench/ipc/Allocations.h"
#include "bench/platform/BenchNode.h"
#include "bench/platform/QuietService.h"
#include "bench/platform/driver/RawBinder.h"
#include "bench/support/Timing.h"
#include "client/TTSClientPrivate.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/PrivateRuntime.h"
#include "tests/support/Roles.h"

namespace {

using voxtrel_test::ChildProcess;

constexpr int kRounds = 51;
constexpr int kCalls = 200;
// So few that the receiver's room for one-way calls takes all of them.
constexpr int kBurst = 100;
constexpr size_t kSmall = 64;
// Of a request to say the sentence below.
constexpr size_t kSayBytes = 72;
constexpr const char* kSentence = "In two hundred metres, turn left.";
const char kBytes[kSmall] = {};

void ignore(unsigned /*a*/, unsigned /*b*/, unsigned /*c*/) {}

const voxtrel_test::Role kService("bench-service", [](const voxtrel_test::Arguments&) {
    android::ProcessState::self()->startThreadPool();
    const android::status_t status = android::defaultServiceManager()->addService(
        TTS::ITextToSpeechFestival::descriptor, new bench::QuietService());
    voxtrel_test::tell(status == android::OK ? "ready" : "failed");
    while (!voxtrel_test::hear().empty()) {
    }
    return 0;
});

void measureTwoWay(bench::RawBinder& raw, bench::IBench& node) {
    const bench::Contest result = bench::contest(
        kRounds, [&] { return bench::wallTime(kCalls, [&] { node.echo(kBytes, kSmall); }); },
        [&] { return bench::wallTime(kCalls, [&] { raw.call(kSmall); }); });
    bench::report("two-way call of 64 bytes, against bare ioctl", result);
    bench::figure("driver_two_way_over_raw", result.ratio);
}

template <typename Send, typename Drain>
double senderTime(Send send, Drain drain) {
    const double taken = bench::threadTime(kBurst, send);
    drain();
    return taken;
}

void measureOneWay(bench::RawBinder& raw, bench::IBench& node) {
    int32_t sent = node.noted();
    const auto note = [&] {
        node.note(kBytes, kSmall);
        ++sent;
    };
    const auto drain = [&] {
        while (node.noted() != sent) {
        }
    };
    const bench::Contest result = bench::contest(
        kRounds, [&] { return senderTime(note, drain); },
        [&] { return senderTime([&] { raw.sendOneWay(kSmall); }, [&] { raw.drain(); }); });
    bench::report("one-way call of 64 bytes, sender, against bare ioctl", result);
    bench::figure("driver_one_way_over_raw", result.ratio);
}

// A full `say` of the client, against the same three calls bare: a two-way one (is it enabled?) and
// two one-way ones (is it locked? say this). False: it could not be.
bool measureSay(bench::RawBinder& raw) {
    auto service = ChildProcess::asRole("bench-service");
    TTS::TTSClientPrivate client("bench", ignore);
    if (service.readLine() != "ready" || client.connect() != 0) {
        std::fprintf(stderr, "the bench service did not start\n");
        return false;
    }
    unsigned id = 0;
    const auto say = [&] { (void)client.say(++id, kSentence); };
    const auto sayBare = [&] {
        raw.call(0);
        raw.sendOneWay(0);
        raw.sendOneWay(kSayBytes);
    };
    const bench::Contest result = bench::contest(
        kRounds, [&] { return bench::wallTime(kCalls, say); },
        [&] { return bench::wallTime(kCalls, sayBare); });
    bench::report("a full say of the client, against its calls bare", result);
    bench::figure("driver_say_over_raw", result.ratio);
    const bench::Contest overOne = bench::contest(
        kRounds, [&] { return bench::wallTime(kCalls, say); },
        [&] { return bench::wallTime(kCalls, [&] { raw.call(kSmall); }); });
    bench::report("a full say of the client, against one bare two-way call", overOne);
    bench::figure("driver_say_over_one_raw_call", overOne.ratio);
    return true;
}

void countAllocations(bench::IBench& node) {
    constexpr uint64_t kSample = 1000;
    node.echo(kBytes, kSmall);
    const uint64_t before = allocations();
    const uint64_t beforeThere = node.allocated();
    for (uint64_t i = 0; i < kSample; ++i) {
        node.echo(kBytes, kSmall);
    }
    const auto there = static_cast<double>(node.allocated() - beforeThere) / kSample;
    const auto here = static_cast<double>(allocations() - before) / kSample;
    std::printf("heap allocations of a small two-way call: caller %.3f, service %.3f\n", here,
                there);
    bench::figure("driver_allocations_per_two_way", here > there ? here : there);
}

int run(int argc, char** argv) {
    if (std::getenv("VOXTREL_BINDER_DRIVER") == nullptr) {  // NOLINT(concurrency-mt-unsafe)
        std::fprintf(stderr, "set VOXTREL_BINDER_DRIVER to the driver's device\n");
        return 1;
    }
    bench::RawBinder raw(argc > 1 ? argv[1] : "/dev/rawbinder");
    voxtrel_test::PrivateRuntime runtime(VOXTREL_SERVICEMANAGER);
    auto server = ChildProcess::asRole("bench-server");
    if (server.readLine() != "ready") {
        std::fprintf(stderr, "the bench server did not start\n");
        return 1;
    }
    android::ProcessState::self()->startThreadPool();
    const android::sp<bench::IBench> node = bench::findBench();
    measureTwoWay(raw, *node);
    measureOneWay(raw, *node);
    countAllocations(*node);
    const bool isComplete = measureSay(raw);
    bench::printFigures();
    return isComplete ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    return voxtrel_test::runRoleOr(argc, argv, run);
}
