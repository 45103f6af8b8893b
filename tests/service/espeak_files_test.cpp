// SPDX-License-Identifier: Apache-2.0
// The engine's library says that it has changed to a voice whose files it could not open, as in a
// process without descriptors.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <string>

#include "service/EspeakEngine.h"

namespace {

/// Files whose name has this in it cannot be opened; empty: all can.
std::string gHeld;

using Open = FILE*(const char*, const char*);

FILE* openUnlessHeld(Open* open, const char* path, const char* mode) {
    if (!gHeld.empty() && std::string(path).find(gHeld) != std::string::npos) {
        errno = EMFILE;
        return nullptr;
    }
    return open(path, mode);
}

}  // namespace

// The library's calls come by here.
extern "C" {

FILE* fopen(const char* path, const char* mode) {
    static auto* const real = reinterpret_cast<Open*>(dlsym(RTLD_NEXT, "fopen"));
    return openUnlessHeld(real, path, mode);
}

FILE* fopen64(const char* path, const char* mode) {
    static auto* const real = reinterpret_cast<Open*>(dlsym(RTLD_NEXT, "fopen64"));
    return openUnlessHeld(real, path, mode);
}

}  // extern "C"

namespace voxtreld {
namespace {

class Counter : public SpeechReceiver {
public:
    void word(size_t /*offset*/) override {}
    bool samples(const int16_t* /*samples*/, size_t count) override {
        heard += count;
        return true;
    }
    size_t heard = 0;
};

class AVoiceWhose : public testing::Test {
protected:
    void SetUp() override {
        std::string error;
        ASSERT_TRUE(mEngine.load(error)) << error;
        mProsody.language = LANG_FR_FR;
        mProsody.voice = 1;
    }

    void expectToBeRefusedUntilItCanBeOpened(const char* held) {
        Counter counter;
        gHeld = held;
        for (int i = 0; i < 2; ++i) {
            EXPECT_FALSE(mEngine.speak("Bonjour.", mProsody, counter));
        }
        gHeld.clear();
        EXPECT_TRUE(mEngine.speak("Bonjour.", mProsody, counter));
        EXPECT_GT(counter.heard, mEngine.sampleRate() / 4);
    }

private:
    EspeakEngine mEngine;
    Prosody mProsody;
};

TEST_F(AVoiceWhose, OwnFileCannotBeOpenedIsRefused) {
    expectToBeRefusedUntilItCanBeOpened("/lang/");
}

TEST_F(AVoiceWhose, DictionaryCannotBeOpenedIsRefused) {
    expectToBeRefusedUntilItCanBeOpened("_dict");
}

}  // namespace
}  // namespace voxtreld
