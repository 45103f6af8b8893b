// SPDX-License-Identifier: Apache-2.0
// What the service has acknowledged is there after kill -9, at whatever moment that comes.
#include <binder/IServiceManager.h>
#include <binder/ProcessState.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "ipc/ITextToSpeechFestival.h"
#include "tests/service/Processes.h"
#include "tests/support/PrivateRuntime.h"

namespace voxtreld {
namespace {

using Festival = android::sp<TTS::ITextToSpeechFestival>;

constexpr VOXTRELAPI_GCONF kIntegers[] = {GCONF_SPEED, GCONF_BG_VOLUME, GCONF_TTS_VOLUME};
constexpr VOXTRELAPI_GCONF kFloats[] = {GCONF_PITCH, GCONF_VOLUME};

/// Everything that the service keeps, but for language and voice, which need the voices.
struct Settings {
    std::array<uint32_t, 3> integers{300, 50, 100};
    std::array<float, 2> floats{200.0F, 100.0F};
    bool voiceFlag = true;
    bool enabled = true;
    int verbosity = 0;

    bool operator==(const Settings& other) const {
        return integers == other.integers && floats == other.floats &&
               voiceFlag == other.voiceFlag && enabled == other.enabled &&
               verbosity == other.verbosity;
    }
};

Settings readFrom(const Festival& service, unsigned pid) {
    Settings read;
    for (size_t i = 0; i < read.integers.size(); ++i) {
        EXPECT_EQ(0, service->globalConfig(pid, kIntegers[i], &read.integers[i]));
    }
    for (size_t i = 0; i < read.floats.size(); ++i) {
        EXPECT_EQ(0, service->globalConfig(pid, kFloats[i], &read.floats[i]));
    }
    EXPECT_EQ(0, service->enabled2(pid, GCONF_VOICE_ENABLE, &read.voiceFlag));
    read.enabled = service->enabled();
    read.verbosity = service->verbosity();
    return read;
}

/// Asks for another change each time, and notes in `expected` what it must have done.
int change(const Festival& service, unsigned pid, unsigned number, Settings& expected) {
    const uint32_t percent = number % 101;
    switch (number % 10) {
        case 0:
        case 1: {
            uint32_t value = expected.integers[0] = 100 + number % 600;
            return number % 2 == 0 ? service->setGlobalRate(pid, value)
                                   : service->setGlobalConfig(pid, GCONF_SPEED, &value);
        }
        case 2: {
            float value = expected.floats[0] = static_cast<float>(number % 200) + 0.5F;
            return service->setGlobalConfig(pid, GCONF_PITCH, &value);
        }
        case 3: {
            float value = expected.floats[1] = static_cast<float>(number % 99) + 0.25F;
            return service->setGlobalConfig(pid, GCONF_VOLUME, &value);
        }
        case 4: {
            uint32_t value = expected.integers[1] = percent;
            return service->setGlobalConfig(pid, GCONF_BG_VOLUME, &value);
        }
        case 5: {
            uint32_t value = expected.integers[2] = percent;
            return service->setGlobalConfig(pid, GCONF_TTS_VOLUME, &value);
        }
        case 6:
            expected.voiceFlag = !expected.voiceFlag;
            return service->setEnable2(pid, GCONF_VOICE_ENABLE, expected.voiceFlag);
        case 7:
            expected.enabled = !expected.enabled;
            return service->setEnable(pid, expected.enabled);
        case 8:
            expected.verbosity = 1 - expected.verbosity;
            return service->setVerbosity(pid, expected.verbosity);
        default:
            expected = Settings();
            return service->factoryReset(pid);
    }
}

/// Keeps the processors busy while it lives.
class Load {
public:
    Load() {
        for (int i = 0; i < 3; ++i) {
            mThreads.emplace_back([this] {
                while (!mEnded) {
                }
            });
        }
    }
    ~Load() {
        mEnded = true;
        for (std::thread& thread : mThreads) {
            thread.join();
        }
    }
    Load(const Load&) = delete;
    Load& operator=(const Load&) = delete;

private:
    std::atomic<bool> mEnded{false};
    std::vector<std::thread> mThreads;
};

unsigned roundsWanted() {
    const char* wanted = std::getenv("VOXTREL_KILL_ROUNDS");
    return wanted == nullptr ? 50 : static_cast<unsigned>(std::strtoul(wanted, nullptr, 10));
}

class AnAcknowledgedChange : public testing::Test {
protected:
    AnAcknowledgedChange() { android::ProcessState::self()->startThreadPool(); }

    void start() {
        process = startProcess({VOXTREL_SERVICE, "--sink", "none", "--profile", profile});
    }
    /// The service that was started last.
    Festival connect() {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (std::chrono::steady_clock::now() < deadline) {
            const android::sp<android::IBinder> found =
                android::defaultServiceManager()->getService(
                    TTS::ITextToSpeechFestival::descriptor);
            if (found != nullptr && found->pingBinder() == android::OK) {
                return TTS::ITextToSpeechFestival::asInterface(found);
            }
            std::this_thread::yield();
        }
        ADD_FAILURE() << "the service does not come";
        return nullptr;
    }

    void endByKill() {
        process->kill(SIGKILL);
        ASSERT_EQ(128 + SIGKILL, process->wait());
    }

    voxtrel_test::PrivateRuntime runtime{VOXTREL_SERVICE_MANAGER};
    const std::string profile = runtime.folder() + "/voxtrel.ini";
    const unsigned pid = static_cast<unsigned>(getpid());
    Process process;
};

TEST_F(AnAcknowledgedChange, SurvivesAKillAtOnce) {
    const unsigned rounds = roundsWanted();
    ASSERT_GT(rounds, 0U);
    const Load load;
    Settings expected;
    unsigned lost = 0;
    unsigned number = 0;
    for (unsigned round = 0; round < rounds && !HasFailure(); ++round) {
        start();
        const Festival service = connect();
        ASSERT_NE(nullptr, service.get());
        const Settings found = readFrom(service, pid);
        lost += found == expected ? 0 : 1;
        expected = found;
        // One change, or some, so that the profile is being written at different points.
        for (unsigned i = 0; i <= round % 3; ++i) {
            ASSERT_EQ(0, change(service, pid, number++, expected)) << number;
        }
        endByKill();
    }
    EXPECT_EQ(0U, lost) << "of " << rounds;
}

}  // namespace
}  // namespace voxtreld
