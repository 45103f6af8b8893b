// SPDX-License-Identifier: Apache-2.0
// Some platforms have no service manager to give while their context manager is not up yet.
#include <dlfcn.h>

#include "tests/client/ClientTest.h"

namespace {

bool gManagerIsThere = true;

}  // namespace

namespace android {

// The platform's own never gives null. Stands before it, and asks it while the manager is there.
sp<IServiceManager> defaultServiceManager() {
    using Function = sp<IServiceManager> (*)();
    static const auto platforms =
        reinterpret_cast<Function>(dlsym(RTLD_NEXT, "_ZN7android21defaultServiceManagerEv"));
    return gManagerIsThere ? platforms() : nullptr;
}

}  // namespace android

namespace {

class WithoutAServiceManager : public support::ClientTest {
protected:
    void SetUp() override { gManagerIsThere = false; }
    void TearDown() override { gManagerIsThere = true; }
};

TEST_F(WithoutAServiceManager, TheSearchPausesAsOftenAndGivesUp) {
    EXPECT_EQ(-8, client.connect());
    int pauses = 0;
    for (const std::string& line : support::takeNotes()) {
        pauses += line == "pause 500000" ? 1 : 0;
        EXPECT_EQ(std::string::npos, line.find("find ")) << line;
    }
    EXPECT_EQ(30, pauses);
}

}  // namespace
