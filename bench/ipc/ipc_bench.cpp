// SPDX-License-Identifier: Apache-2.0
// What the service interface costs over the least that the same work could: the same call of the
// same service, with its fields carried through a plain byte buffer in place of proxy, parcel and
// stub. Both in one process and in one run, so that the ratio does not depend on the machine.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "bench/ipc/Allocations.h"
#include "bench/ipc/PlainCoding.h"
#include "ipc/BpTextToSpeechFestival.h"
#include "tests/support/RecordingService.h"

namespace {

using android::sp;

/// Does nothing with an utterance, and answers forty voices.
class BenchService : public support::RecordingService {
public:
    BenchService() {
        capabilities.ready = true;
        capabilities.permitted = true;
        capabilities.languages.assign(5, true);
        capabilities.voicesNum.assign(5, 8);
        capabilities.voices.resize(40);
    }

    int say(unsigned, unsigned, const std::string& words, unsigned, float, unsigned, unsigned,
            unsigned, float, EN_VOXTREL_LANGUAGE) override {
        benchmark::DoNotOptimize(words.data());
        return 0;
    }
    int getCapabilities(TTS::Capabilities& caps) override {
        caps = capabilities;
        return 0;
    }
};

const Utterance kUtterance = {
    1000,  7,         "In two hundred metres, turn left into Station Road.", 180, 0.5F, 2, 30, 90,
    1.25F, LANG_EN_US};

int say(TTS::ITextToSpeechFestival& service, const Utterance& said) {
    return service.say(said.pid, said.id, said.text, said.speed, said.volume, said.voice,
                       said.bgVolume, said.ttsVolume, said.pitch, said.language);
}

/// A proxy and a stub that share a process but not a table: what goes through is what goes out.
struct Wire {
    sp<TTS::ITextToSpeechFestival> service = new BenchService;
    sp<TTS::ITextToSpeechFestival> proxy =
        new TTS::BpTextToSpeechFestival(android::IInterface::asBinder(service));
};

/// Runs `work` and reports how often each round of it goes to the heap.
template <typename Work>
void measure(benchmark::State& state, Work work) {
    work();  // vectors reach the size that they keep
    const uint64_t before = allocations();
    for (auto round : state) {
        (void)round;
        work();
    }
    state.counters["allocations"] = benchmark::Counter(static_cast<double>(allocations() - before),
                                                       benchmark::Counter::kAvgIterations);
}

void sayThroughStub(benchmark::State& state) {
    Wire wire;
    measure(state, [&] { benchmark::DoNotOptimize(say(*wire.proxy, kUtterance)); });
}

void sayThroughPlainBuffer(benchmark::State& state) {
    Wire wire;
    PlainBuffer buffer;
    measure(state, [&] {
        benchmark::DoNotOptimize(encode(kUtterance, buffer));
        benchmark::ClobberMemory();
        Utterance received;
        decode(buffer, received);
        benchmark::DoNotOptimize(say(*wire.service, received));
    });
}

void capabilitiesThroughStub(benchmark::State& state) {
    Wire wire;
    TTS::Capabilities caps;
    measure(state, [&] {
        benchmark::DoNotOptimize(wire.proxy->getCapabilities(caps));
        benchmark::ClobberMemory();
    });
}

void capabilitiesThroughPlainBuffer(benchmark::State& state) {
    Wire wire;
    PlainBuffer buffer;
    TTS::Capabilities caps;
    measure(state, [&] {
        TTS::Capabilities own;
        benchmark::DoNotOptimize(wire.service->getCapabilities(own));
        benchmark::DoNotOptimize(encode(own, buffer));
        benchmark::ClobberMemory();
        decode(buffer, caps);
        benchmark::ClobberMemory();
    });
}

/// Prints as usual and keeps what the figures are made of.
class KeepingReporter : public benchmark::ConsoleReporter {
public:
    KeepingReporter() : ConsoleReporter(OO_None) {}  // no colours: the output is kept in files

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) {
            if (run.run_type == Run::RT_Iteration) {
                mTimes[run.run_name.function_name].push_back(run.GetAdjustedCPUTime());
                mAllocations[run.run_name.function_name] = run.counters.at("allocations");
            }
        }
        ConsoleReporter::ReportRuns(runs);
    }

    double median(const std::string& name) {
        std::vector<double>& times = mTimes.at(name);
        std::sort(times.begin(), times.end());
        return times[times.size() / 2];
    }
    double allocationsOf(const std::string& name) const { return mAllocations.at(name); }

private:
    std::map<std::string, std::vector<double>> mTimes;
    std::map<std::string, double> mAllocations;
};

void add(const char* name, void (*function)(benchmark::State&)) {
    benchmark::RegisterBenchmark(name, function)->Repetitions(15)->MinTime(0.05);
}

/// The two costs and their ratio.
double compared(KeepingReporter& reporter, const char* subject) {
    const std::string name = subject;
    const double stub = reporter.median(name + "_stub");
    const double plain = reporter.median(name + "_plain");
    std::printf(
        "%s: %.1f ns through proxy, parcel and stub, %.1f ns through a plain buffer; "
        "%.0f and %.0f allocations a call\n",
        subject, stub, plain, reporter.allocationsOf(name + "_stub"),
        reporter.allocationsOf(name + "_plain"));
    return stub / plain;
}

/// A counter that does not count would make every figure look good.
bool countsAllocations() {
    const uint64_t before = allocations();
    benchmark::DoNotOptimize(std::string(100, 'x').data());
    return allocations() == before + 1;
}

}  // namespace

int main(int argc, char** argv) {
    if (!countsAllocations()) {
        std::fputs("ipc_bench: allocations are not counted here\n", stderr);
        return 1;
    }
    benchmark::Initialize(&argc, argv);
    add("say_stub", sayThroughStub);
    add("say_plain", sayThroughPlainBuffer);
    add("capabilities_stub", capabilitiesThroughStub);
    add("capabilities_plain", capabilitiesThroughPlainBuffer);
    KeepingReporter reporter;
    if (benchmark::RunSpecifiedBenchmarks(&reporter) != 4) {
        return 0;  // a filter left some out: no figures from half a run
    }
    const double sayRatio = compared(reporter, "say");
    const double capabilitiesRatio = compared(reporter, "capabilities");
    std::printf("figure say_over_plain %.2f\n", sayRatio);
    std::printf("figure capabilities_over_plain %.2f\n", capabilitiesRatio);
    std::printf("figure say_allocations %.0f\n", reporter.allocationsOf("say_stub"));
    return 0;
}
