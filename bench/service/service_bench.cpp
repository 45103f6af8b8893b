// SPDX-License-Identifier: Apache-2.0
// How fast the service speaks and stops, measured by a client in another process, beside the engine
// alone in this one. Times also come over L, a raw round trip of 64 bytes in the same run, so that
// they can be compared between machines.
#include <binder/ProcessState.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "bench/service/Figures.h"
#include "bench/service/MeasuredService.h"
#include "bench/support/RawPeer.h"
#include "bench/support/Timing.h"
#include "client/TTSClientPrivate.h"
#include "service/EspeakEngine.h"
#include "vocabulary/Events.h"

namespace voxtreld {

using namespace TTS;

namespace {

constexpr const char* kText = "Hello, world.";
constexpr int kRounds = 300;

// Written by the notification function.
std::atomic<int64_t> gStartedNs{0};
std::atomic<int64_t> gStoppedNs{0};
std::atomic<int64_t> gUnlockedNs{0};
std::atomic<int> gTerminals{0};
std::atomic<unsigned> gLockHolder{0};

void onEvent(unsigned event, unsigned second, unsigned third) {
    if (event == EVENT_STARTED) {
        gStartedNs = nowNs();
    } else if (event == EVENT_STOPPED || event == EVENT_FINISHED) {
        gStoppedNs = nowNs();
        ++gTerminals;
    } else if (event == EVENT_STATE && second == STATE_LOCK) {
        gUnlockedNs = nowNs();
        gLockHolder = third;
    }
}

template <typename Condition>
void waitUntil(Condition condition) {
    while (!condition()) {
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
}

double microseconds(int64_t from, int64_t to) {
    return static_cast<double>(std::max<int64_t>(to - from, 0)) / 1000.0;
}

pid_t startProgram(const std::vector<const char*>& command) {
    const pid_t child = fork();
    if (child == 0) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        std::vector<char*> arguments;
        for (const char* each : command) {
            arguments.push_back(const_cast<char*>(each));
        }
        arguments.push_back(nullptr);
        execv(arguments[0], arguments.data());
        _exit(127);
    }
    return child;
}

void end(pid_t child) {
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
}

/// The times of a series of utterances.
struct Series {
    // From the call and not from its return: the service may sound before `say` has returned.
    std::vector<double> firstSound;    ///< first sample at the sink
    std::vector<double> startedEvent;  ///< the client's notification, after `say` was called
    std::vector<double> silence;       ///< the stopped event, after `stopAndFlush` was called
};

/// Says the text, waits for its first sound, stops it.
void measureOne(TTS::TTSClientPrivate& client, SoundClock& clock, Series& series) {
    clock.firstSampleNs = 0;
    gStartedNs = 0;
    const int before = gTerminals;
    const int64_t called = nowNs();
    client.say(1, kText);
    waitUntil([&] { return clock.firstSampleNs != 0 && gStartedNs != 0; });
    series.firstSound.push_back(microseconds(called, clock.firstSampleNs));
    series.startedEvent.push_back(microseconds(called, gStartedNs));
    const int64_t stopped = nowNs();
    client.stopAndFlush(0);
    waitUntil([&] { return gTerminals > before; });
    series.silence.push_back(microseconds(stopped, gStoppedNs));
}

Series measureWarm(TTS::TTSClientPrivate& client, SoundClock& clock) {
    Series series;
    for (int i = 0; i < kRounds + 5; ++i) {
        measureOne(client, clock, series);
    }
    for (auto* each : {&series.firstSound, &series.startedEvent, &series.silence}) {
        each->erase(each->begin(), each->begin() + 5);  // until everything is in place
    }
    return series;
}

/// Every voice of every language, each for the first time.
Series measureCold(TTS::TTSClientPrivate& client, SoundClock& clock) {
    Series series;
    for (const TTS::VoiceInfo& voice : client.mCapabilities.voices) {
        if (voice.langId == LANG_EN_US && voice.id == 1) {
            continue;  // the one that all others have used
        }
        std::string language = TTS::langId2Str(voice.langId);
        uint32_t number = voice.id;
        client.setLanguage(language.data());
        client.setVoice(&number);
        measureOne(client, clock, series);
    }
    return series;
}

/// Takes the time at which the engine gives its first sample, then wants no more.
class FirstSample : public SpeechReceiver {
public:
    void word(size_t /*offset*/) override {}
    bool samples(const int16_t* /*samples*/, size_t /*count*/) override {
        at = nowNs();
        return false;
    }
    int64_t at = 0;
};

double firstSampleOf(EspeakEngine& engine, EN_VOXTREL_LANGUAGE language, uint32_t voice) {
    Prosody prosody;
    prosody.language = language;
    prosody.voice = voice;
    FirstSample first;
    const int64_t begin = nowNs();
    engine.speak(kText, prosody, first);
    return microseconds(begin, first.at);
}

std::vector<double> measureEngineWarm(EspeakEngine& engine) {
    std::vector<double> times;
    for (int i = 0; i < kRounds + 5; ++i) {
        times.push_back(firstSampleOf(engine, LANG_EN_US, 1));
    }
    times.erase(times.begin(), times.begin() + 5);
    return times;
}

std::vector<double> measureEngineCold(EspeakEngine& engine) {
    std::vector<double> times;
    uint32_t numbers[LANG_NA] = {};
    for (const EngineVoice& voice : engine.voices()) {
        const uint32_t number = ++numbers[voice.language];
        if (voice.language != LANG_EN_US || number != 1) {
            times.push_back(firstSampleOf(engine, voice.language, number));
        }
    }
    return times;
}

/// From the stop to the last of a thousand terminal events, as the client gets them.
std::vector<double> measureStopOfAThousand(TTS::TTSClientPrivate& client, SoundClock& clock) {
    std::vector<double> times;
    for (int round = 0; round < 20; ++round) {
        clock.firstSampleNs = 0;
        const int before = gTerminals;
        for (unsigned id = 1; id <= 1000; ++id) {
            client.say(id, kText);
        }
        waitUntil([&] { return clock.firstSampleNs != 0; });
        std::this_thread::sleep_for(std::chrono::milliseconds(50));  // the service takes them in
        const int64_t called = nowNs();
        client.stopAndFlush(0);
        waitUntil([&] { return gTerminals == before + 1000; });
        times.push_back(microseconds(called, gStoppedNs));
    }
    return times;
}

/// A client that speaks and holds the lock, until it is killed.
[[noreturn]] void beVictim() {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    android::ProcessState::self()->startThreadPool();
    TTS::TTSClientPrivate client("victim", [](unsigned, unsigned, unsigned) {});
    client.connect();
    client.lock();
    for (unsigned id = 1; id <= 100; ++id) {
        client.say(id, kText);
    }
    pause();
    _exit(0);
}

/// From `kill -9` to the other client being told that the lock is free.
std::vector<double> measureDeath(const char* program) {
    std::vector<double> times;
    for (int round = 0; round < 20; ++round) {
        const pid_t victim = startProgram({program, "--victim"});
        waitUntil([&] { return gLockHolder == static_cast<unsigned>(victim); });
        std::this_thread::sleep_for(std::chrono::milliseconds(20));  // let it speak
        const int64_t killed = nowNs();
        end(victim);
        waitUntil([&] { return gLockHolder == 0; });
        times.push_back(microseconds(killed, gUnlockedNs));
    }
    return times;
}

/// From the call that changes a setting to its answer; the service still writes earlier changes.
std::vector<double> measureAcknowledgement(TTS::TTSClientPrivate& client) {
    std::vector<double> times;
    for (uint32_t round = 0; round < 5 + 1000; ++round) {
        uint32_t speed = 200 + round % 200;
        const int64_t called = nowNs();
        const int status = client.setGlobalConfig(GCONF_SPEED, &speed);
        times.push_back(microseconds(called, nowNs()));
        if (status != 0) {
            std::fprintf(stderr, "setGlobalConfig answers %d\n", status);
            std::exit(1);
        }
    }
    times.erase(times.begin(), times.begin() + 5);
    return times;
}

double residentMebibytes(pid_t pid) {
    std::ifstream status("/proc/" + std::to_string(pid) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("VmRSS:", 0) == 0) {
            return std::strtod(line.c_str() + 6, nullptr) / 1024.0;
        }
    }
    return 0;
}

/// The real program, once it is ready and nobody wants anything from it.
double measureIdle(const std::string& folder) {
    setenv("VOXTREL_BINDER_SOCKET", (folder + "/idle-binder").c_str(), 1);
    const pid_t manager = startProgram({VOXTREL_SERVICE_MANAGER});
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    const std::string profile = folder + "/idle-voxtrel.ini";
    const pid_t service =
        startProgram({VOXTREL_SERVICE, "--sink", "none", "--profile", profile.c_str()});
    std::this_thread::sleep_for(std::chrono::seconds(1));
    const double resident = residentMebibytes(service);
    end(service);
    end(manager);
    return resident;
}

/// A series of times and the figure that comes of it.
struct Latency {
    const char* what;
    const char* name;
    const char* unit;
    std::vector<double> times;  ///< microseconds
    double roundTrip;           ///< L, before and after the series
};

void report(const std::vector<Latency>& latencies) {
    for (const Latency& each : latencies) {
        describe(each.what, each.times);
    }
    for (const Latency& each : latencies) {
        bench::distribution(each.name, each.times);
    }
    bench::printFigures();
    for (const Latency& each : latencies) {
        const double time = quantile(each.times, 0.5);
        const std::string name = each.name;
        figure(name + "_" + each.unit, each.unit == std::string("ms") ? time / 1000.0 : time);
        figure(name + "_over_L", time / each.roundTrip);
    }
}

/// Runs `measure`, and gives L as it is just before and after.
template <typename Measure>
double besideRoundTrips(bench::RawPeer& echo, Measure measure) {
    std::vector<double> roundTrips;
    const auto sample = [&] {
        for (int i = 0; i < 20; ++i) {
            roundTrips.push_back(echo.roundTrip());
        }
    };
    sample();
    measure();
    sample();
    const double roundTrip = quantile(roundTrips, 0.5);
    std::printf("raw round trip of 64 bytes, L: best %.1f, median %.1f us\n",
                quantile(roundTrips, 0.0), roundTrip);
    return roundTrip;
}

std::vector<Latency> measureService(const char* program, TTS::TTSClientPrivate& client,
                                    SoundClock& clock, bench::RawPeer& echo) {
    Series warm;
    const double roundTrip = besideRoundTrips(echo, [&] { warm = measureWarm(client, clock); });
    std::vector<Latency> latencies = {
        {"first sound after say was called", "first_sound_warm", "us", warm.firstSound, roundTrip},
        {"started event after say was called", "say_to_started_event", "us", warm.startedEvent,
         roundTrip},
        {"stopped event after stopAndFlush was called", "stop_to_silence", "ms", warm.silence,
         roundTrip}};
    const auto add = [&](Latency latency, const std::function<std::vector<double>()>& measure) {
        latency.roundTrip = besideRoundTrips(echo, [&] { latency.times = measure(); });
        latencies.push_back(std::move(latency));
    };
    add({"first sound, voice not yet used", "first_sound_cold", "us", {}, 0},
        [&] { return measureCold(client, clock).firstSound; });
    add({"last of 1000 stopped events after the stop", "stop_1000", "ms", {}, 0},
        [&] { return measureStopOfAThousand(client, clock); });
    add({"lock free again after kill -9 of its holder", "client_death", "ms", {}, 0},
        [&] { return measureDeath(program); });
    add({"answer after setGlobalConfig was called", "set_acknowledged", "us", {}, 0},
        [&] { return measureAcknowledgement(client); });
    return latencies;
}

void run(const char* program) {
    bench::RawPeer echo(bench::RawPeer::Kind::Echo);  // forked first: it has nothing of ours
    std::string folder = (std::filesystem::temp_directory_path() / "service_bench-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) {
        std::perror("mkdtemp");
        std::exit(1);
    }
    const double idle = measureIdle(folder);
    setenv("VOXTREL_BINDER_SOCKET", (folder + "/binder").c_str(), 1);
    const pid_t manager = startProgram({VOXTREL_SERVICE_MANAGER});
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    SoundClock* clock = makeSoundClock();
    const pid_t service = forkService(clock, folder + "/voxtrel.ini");

    EspeakEngine engine;
    std::string error;
    engine.load(error);
    const std::vector<double> engineWarm = measureEngineWarm(engine);
    const std::vector<double> engineCold = measureEngineCold(engine);

    android::ProcessState::self()->startThreadPool();
    TTS::TTSClientPrivate client("service_bench", onEvent);
    if (client.connect() != 0) {
        std::fprintf(stderr, "the service does not answer\n");
        std::exit(1);
    }
    const std::vector<Latency> latencies = measureService(program, client, *clock, echo);
    client.disconnect();
    end(service);
    end(manager);
    std::filesystem::remove_all(folder);

    describe("engine alone, first sample", engineWarm);
    describe("engine alone, voice not yet used", engineCold);
    report(latencies);
    figure("engine_alone_us", quantile(engineWarm, 0.5));
    figure("engine_alone_cold_us", quantile(engineCold, 0.5));
    figure("service_rss_mib", idle);
}

}  // namespace
}  // namespace voxtreld

int main(int argc, char** argv) {
    if (argc == 2 && std::string(argv[1]) == "--victim") {
        voxtreld::beVictim();
    }
    voxtreld::run("/proc/self/exe");
    return 0;
}
