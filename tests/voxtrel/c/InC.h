// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_VOXTREL_C_INC_H
#define VOXTREL_TESTS_VOXTREL_C_INC_H

#include <gtest/gtest.h>
#include <stdlib.h>

#include "tests/support/TempFolder.h"
#include "tests/voxtrel/c/program.h"

namespace voxtrel_test {

/// Where no service can be found.
class InC : public ::testing::Test {
protected:
    InC() { setenv("VOXTREL_BINDER_SOCKET", mFolder.path("binder").c_str(), 1); }
    ~InC() override { unsetenv("VOXTREL_BINDER_SOCKET"); }

    TempFolder mFolder;
};

class AClientInC : public InC {
protected:
    AClientInC() : mClient(client_of(nullptr, VX_THREAD_OF_APPLICATION)) {
        vx_say(mClient, "Hello.", nullptr, &mUtterance);
    }
    ~AClientInC() override {
        vx_utterance_free(mUtterance);
        vx_client_free(mClient);
    }

    vx_client* const mClient;
    vx_utterance* mUtterance = nullptr;
};

}  // namespace voxtrel_test

#endif
