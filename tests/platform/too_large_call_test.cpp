// SPDX-License-Identifier: Apache-2.0
// The proxy of a one-way operation returns 0 whatever becomes of it, so that the log alone says
// that a call was too large.
#include <string>

#include "tests/platform/ProbeTest.h"

namespace {

using android::IBinder;
using android::sp;
using probe::Call;
using voxtrel_test::ChildProcess;

// Sends calls of so many bytes, each when it is told to; says how the last one went.
const voxtrel_test::Role kLargeCaller("large-caller", [](const voxtrel_test::Arguments&) {
    const sp<IBinder> node = probe::find();
    const auto send = [&](uint32_t code, size_t size, uint32_t flags) {
        Call call;
        (void)call.data.writeInplace(size);
        return "status " + std::to_string(call.to(node, code, flags));
    };
    voxtrel_test::tell("ready");
    for (std::string what; !(what = voxtrel_test::hear()).empty();) {
        if (what == "one-way") {
            voxtrel_test::tell(send(probe::kNote, 520196, IBinder::FLAG_ONEWAY));
        } else if (what == "largest one-way") {
            voxtrel_test::tell(send(probe::kNote, 520192, IBinder::FLAG_ONEWAY));
        } else if (what == "two-way") {
            voxtrel_test::tell(send(probe::kEcho, 1040388, 0));
        } else {
            for (int i = 0; i < 1000; ++i) {
                (void)send(probe::kNote, 520196, IBinder::FLAG_ONEWAY);
            }
            voxtrel_test::tell("done");
        }
    }
    return 0;
});

class ACallThatIsTooLarge : public probe::ProbeTest {
protected:
    void SetUp() override {
        probe::ProbeTest::SetUp();
        ASSERT_EQ("ready", mCaller.readLine());
    }
    void expectLogged(const std::string& line, const char* code, const char* size) const {
        EXPECT_EQ(0U, line.find("binder[" + std::to_string(mCaller.pid()) + "]: ")) << line;
        EXPECT_NE(std::string::npos, line.find(code)) << line;
        EXPECT_NE(std::string::npos, line.find(size)) << line;
    }

    ChildProcess mCaller = ChildProcess::asRoleWithErrors("large-caller");
};

TEST_F(ACallThatIsTooLarge, IsLoggedWithItsCodeAndItsSize) {
    expectLogged(mCaller.ask("one-way"), "call 8 ", "520196 bytes is not sent: ");
    EXPECT_EQ("status -2147483646", mCaller.readLine());
    expectLogged(mCaller.ask("two-way"), "call 2 ", "1040388 bytes is not sent: ");
    EXPECT_EQ("status -2147483646", mCaller.readLine());
    EXPECT_EQ("status 0", mCaller.ask("largest one-way"));
}

TEST_F(ACallThatIsTooLarge, DoesNotFloodTheLog) {
    int lines = 0;
    for (std::string line = mCaller.ask("many"); line != "done" && !line.empty();
         line = mCaller.readLine()) {
        ++lines;
    }
    EXPECT_GT(lines, 0);
    EXPECT_LT(lines, 500);
}

}  // namespace
