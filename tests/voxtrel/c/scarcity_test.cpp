// SPDX-License-Identifier: Apache-2.0
// Memory that runs out is a status, not an end of the program.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <functional>
#include <new>

#include "tests/support/Eventually.h"
#include "tests/support/TempFolder.h"
#include "tests/voxtrel/c/program.h"

namespace {

/// How many allocations this thread has left; negative: all that it wants.
thread_local int allocationsLeft = -1;

/// The one after these fails alone.
thread_local bool failsOnce = false;

void* allocate(std::size_t size) {
    if (allocationsLeft == 0) {
        allocationsLeft = failsOnce ? -1 : 0;
        throw std::bad_alloc();
    }
    if (allocationsLeft > 0) {
        --allocationsLeft;
    }
    void* const memory = malloc(size != 0 ? size : 1);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

}  // namespace

void* operator new(std::size_t size) {
    return allocate(size);
}

void operator delete(void* memory) noexcept {
    free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    free(memory);
}

namespace {

std::ptrdiff_t threads() {
    const std::filesystem::directory_iterator tasks("/proc/self/task");
    return std::distance(begin(tasks), end(tasks));
}

/// Makes a client where no service can be found.
class WhereMemoryRunsOut : public ::testing::Test {
protected:
    WhereMemoryRunsOut() {
        setenv("VOXTREL_BINDER_SOCKET", mFolder.path("binder").c_str(), 1);
        mClient = client_of(nullptr, VX_THREAD_OF_APPLICATION);
    }
    ~WhereMemoryRunsOut() override {
        vx_client_free(mClient);
        unsetenv("VOXTREL_BINDER_SOCKET");
    }

    /// Fails the first allocation of `call`, then the second and so on, until it does without.
    /// @return how often it failed.
    static int failEach(const std::function<vx_status()>& call) {
        for (int allocations = 0;; ++allocations) {
            allocationsLeft = allocations;
            const vx_status status = call();
            allocationsLeft = -1;
            if (status == VX_OK) {
                return allocations;
            }
            EXPECT_EQ(VX_NO_MEMORY, status) << "with " << allocations << " allocations";
            if (status != VX_NO_MEMORY || allocations > 1000) {
                return -1;
            }
        }
    }

    /// As `failEach`, where there is memory again for what follows.
    static int failEachAlone(const std::function<vx_status()>& call) {
        failsOnce = true;
        const int failed = failEach(call);
        failsOnce = false;
        return failed;
    }

    voxtrel_test::TempFolder mFolder;
    vx_client* mClient = nullptr;
};

TEST_F(WhereMemoryRunsOut, AnOptionIsNotSet) {
    vx_options* options = nullptr;
    EXPECT_GT(failEach([&] { return vx_options_new(&options); }), 0);
    EXPECT_GT(failEach([&] {
                  return vx_options_set_voice(options,
                                              "a voice whose name is long enough to need memory");
              }),
              0);
    EXPECT_GT(failEach([&] { return vx_set_defaults(mClient, options); }), 0);
    vx_options* defaults = nullptr;
    EXPECT_GT(failEach([&] { return vx_get_defaults(mClient, &defaults); }), 0);
    EXPECT_EQ(VX_OK, vx_options_free(defaults));
    EXPECT_EQ(VX_OK, vx_options_free(options));
}

TEST_F(WhereMemoryRunsOut, AProfileIsNotChanged) {
    vx_profile* profile = nullptr;
    vx_settings* settings = nullptr;
    char path[64] = "";
    EXPECT_GT(failEach([&] { return vx_profile_new(&profile); }), 0);
    EXPECT_EQ(VX_OK, vx_settings_new(&settings));
    EXPECT_EQ(VX_OK, vx_settings_set_language(settings, "a tag that is too long to be none"));
    EXPECT_GT(failEach([&] { return vx_profile_set_settings(profile, settings); }), 0);
    EXPECT_EQ(VX_OK, vx_settings_free(settings));
    EXPECT_GT(failEach([&] { return vx_profile_get_settings(profile, &settings); }), 0);
    EXPECT_GT(failEach([&] { return vx_profile_turn(profile, VX_SWITCH_PITCH, 0); }), 0);
    EXPECT_GT(failEach([&] { return vx_profile_path_of("a radio", path, sizeof path); }), 0);
    EXPECT_EQ(VX_OK, vx_settings_free(settings));
    EXPECT_EQ(VX_OK, vx_profile_free(profile));
}

TEST_F(WhereMemoryRunsOut, AProfileIsReadAndWrittenWholeOrNotAtAll) {
    const std::string path = mFolder.path("p.ini");
    voxtrel_test::writeFile(path, "\nmedia_volume_enable=0\nspeed=200\n");
    vx_profile* profile = nullptr;
    EXPECT_GT(failEachAlone([&] {
                  const vx_status status = vx_profile_read(path.c_str(), &profile);
                  allocationsLeft = -1;
                  vx_settings* settings = nullptr;
                  unsigned int speed = 0;
                  EXPECT_EQ(status, vx_profile_get_settings(profile, &settings) == VX_OK
                                        ? vx_settings_get_speed(settings, &speed)
                                        : VX_NO_MEMORY);
                  vx_settings_free(settings);
                  return status;
              }),
              0);
    const std::string before = "as it was before";
    voxtrel_test::writeFile(path, before);
    EXPECT_GT(failEachAlone([&] {
                  const vx_status status = vx_profile_write(profile, path.c_str());
                  allocationsLeft = -1;
                  const std::string now = voxtrel_test::readFile(path);
                  EXPECT_TRUE(status == VX_OK ? now.size() > 200 : now == before) << now;
                  return status;
              }),
              0);
    EXPECT_EQ(VX_OK, vx_profile_free(profile));
}

TEST_F(WhereMemoryRunsOut, NothingIsDiagnosed) {
    vx_diagnosis* seen = nullptr;
    EXPECT_GT(failEach([&] { return vx_diagnose(mClient, 0, &seen); }), 0);
    EXPECT_EQ(VX_OK, vx_diagnosis_free(seen));
}

TEST_F(WhereMemoryRunsOut, NoClientIsMade) {
    vx_client* client = nullptr;
    EXPECT_GT(failEach([&] { return vx_client_new("another", nullptr, &client); }), 0);
    ASSERT_NE(nullptr, client);
    EXPECT_EQ(VX_OK, vx_client_free(client));
}

TEST_F(WhereMemoryRunsOut, NoFirstClientIsMade) {
    EXPECT_EQ(VX_OK, vx_client_free(mClient));
    EXPECT_GT(failEach([&] { return vx_client_new("first", nullptr, &mClient); }), 0);
}

TEST_F(WhereMemoryRunsOut, EndsTheThreadOfAFirstClientWhoseOtherThreadCannotBegin) {
    EXPECT_EQ(VX_OK, vx_client_free(mClient));
    const std::ptrdiff_t before = threads();
    EXPECT_GT(failEach([&] {
                  const vx_status status = vx_client_new("first", nullptr, &mClient);
                  allocationsLeft = -1;
                  EXPECT_TRUE(status == VX_OK ||
                              voxtrel_test::eventually([&] { return threads() <= before; }));
                  return status;
              }),
              0);
}

TEST_F(WhereMemoryRunsOut, NothingIsSaid) {
    vx_utterance* utterance = nullptr;
    EXPECT_GT(failEach([&] {
                  return vx_say(mClient, "A text that is long enough to need memory of its own.",
                                nullptr, &utterance);
              }),
              0);
    EXPECT_EQ(VX_OK, vx_utterance_free(utterance));
}

TEST_F(WhereMemoryRunsOut, NoPauseIsMadeAndNothingIsStopped) {
    vx_utterance* pause = nullptr;
    EXPECT_GT(failEach([&] { return vx_pause(mClient, 10, &pause); }), 0);
    EXPECT_GE(failEach([&] { return vx_stop(mClient); }), 0);
    vx_outcome outcome;
    EXPECT_EQ(VX_OK, vx_utterance_wait(pause, 60000, &outcome));
    EXPECT_EQ(VX_OUTCOME_STOPPED, outcome.kind);
    EXPECT_EQ(VX_OK, vx_wait_for_all(mClient, 60000));
    EXPECT_EQ(VX_OK, vx_utterance_free(pause));
}

/// A client of a fake service that is connected.
class WhereNoMemoryIsLeft : public WhereMemoryRunsOut {
protected:
    WhereNoMemoryIsLeft() {
        EXPECT_EQ(VX_OK, vx_client_free(mClient));
        EXPECT_EQ(VX_OK, vx_fake_new(&mFake));
        mClient = client_of(mFake, VX_THREAD_OF_LIBRARY);
        EXPECT_EQ(VX_OK, vx_wait_until_connected(mClient, 60000));
    }
    ~WhereNoMemoryIsLeft() override {
        vx_client_free(mClient);
        mClient = nullptr;
        vx_fake_free(mFake);
    }

    static vx_status without(const std::function<vx_status()>& call) {
        allocationsLeft = 0;
        const vx_status status = call();
        allocationsLeft = -1;
        return status;
    }

    void endWithoutMemory() {
        EXPECT_EQ(VX_OK, without([this] { return vx_client_free(mClient); }));
        mClient = nullptr;
    }

    vx_fake* mFake = nullptr;
};

TEST_F(WhereNoMemoryIsLeft, ALockIsGivenBack) {
    vx_lock* lock = nullptr;
    ASSERT_EQ(VX_OK, vx_take_lock(mClient, 60000, &lock));
    EXPECT_EQ(VX_OK, without([&] { return vx_lock_free(lock); }));
    ASSERT_EQ(VX_OK, vx_take_lock(mClient, 60000, &lock));
    endWithoutMemory();
    EXPECT_EQ(VX_OK, vx_lock_free(lock));
}

TEST_F(WhereNoMemoryIsLeft, ALockIsTakenAsSoonAsThereIsMemory) {
    vx_lock* lock = nullptr;
    EXPECT_GT(failEach([&] { return vx_take_lock(mClient, 60000, &lock); }), 0);
    EXPECT_EQ(VX_OK, vx_lock_free(lock));
}

TEST_F(WhereNoMemoryIsLeft, WhoCouldNotSilenceEverybodySpeaksOn) {
    EXPECT_GT(failEach([&] { return vx_stop_everybody(mClient, 60000); }), 0);
    allocationsLeft = 0;
    EXPECT_EQ(VX_NO_MEMORY, vx_stop_everybody(mClient, 60000));
    allocationsLeft = -1;
    vx_utterance* said = nullptr;
    EXPECT_EQ(VX_OK, vx_say(mClient, "Hello.", nullptr, &said));
    vx_outcome outcome;
    EXPECT_EQ(VX_OK, vx_utterance_wait(said, 60000, &outcome));
    EXPECT_EQ(VX_OUTCOME_FINISHED, outcome.kind);
    EXPECT_EQ(VX_OK, vx_utterance_free(said));
}

TEST_F(WhereNoMemoryIsLeft, AClientEndsWithAllItSaid) {
    EXPECT_EQ(VX_OK, vx_fake_hold(mFake));
    vx_utterance* said[100] = {};
    for (vx_utterance*& each : said) {
        EXPECT_EQ(VX_OK, vx_say(mClient, "Hello.", nullptr, &each));
    }
    endWithoutMemory();
    for (vx_utterance* each : said) {
        vx_outcome outcome;
        EXPECT_EQ(VX_OK, vx_utterance_outcome(each, &outcome));
        EXPECT_EQ(VX_CLOSED, outcome.status);
        EXPECT_EQ(VX_OK, vx_utterance_free(each));
    }
}

TEST_F(WhereMemoryRunsOut, NoHandlerIsSet) {
    EXPECT_GT(failEach([&] { return vx_on_event(mClient, nullptr, nullptr); }), 0);
}

TEST_F(WhereMemoryRunsOut, ItIsToldInWords) {
    vx_options* options = nullptr;
    allocationsLeft = 0;
    EXPECT_EQ(VX_NO_MEMORY, vx_options_new(&options));
    allocationsLeft = -1;
    const char* why = nullptr;
    ASSERT_EQ(VX_OK, vx_last_error(&why));
    EXPECT_STREQ("memory or threads ran out: nothing was done", why);
    EXPECT_EQ(nullptr, options);
}

}  // namespace
