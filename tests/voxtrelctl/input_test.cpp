// SPDX-License-Identifier: Apache-2.0
// What may be given as a text, a language, a place for the result.
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/Eventually.h"
#include "tests/voxtrelctl/Device.h"

using namespace voxtrel_test;

namespace {

class WithAService : public ::testing::Test {
protected:
    WithAService() { device.startService({"--sink", "none"}); }
    Device device;
};

TEST_F(WithAService, Utf16IsReadByItsMark) {
    const std::string little("\xFF\xFEH\0\xE9\0", 6);
    const std::string big("\xFE\xFF\0H\0\xE9", 6);
    for (const std::string& text : {little, big}) {
        EXPECT_EQ(device.ctl({"say", "--wait"}, text).out,
                  "started 1\nword 1 at 0: H\xC3\xA9\nfinished 1\n");
    }
}

TEST(AFolder, IsNoText) {
    Device device;  // without a service: nobody is asked
    const Outcome outcome = device.ctl({"say", "--file", device.path("")});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.err.find("(Is a directory): name a text file"), std::string::npos)
        << outcome.err;
}

TEST(ABinaryFile, IsRefused) {
    Device device;
    const Outcome outcome = device.ctl({"say", "--file", VOXTREL_CONTROL_PROGRAM});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.err.find(": a byte 0, so that it is no text: "), std::string::npos)
        << outcome.err;
}

TEST(TextThatIsNotUtf8, IsRefusedWithItsLine) {
    Device device;
    const Outcome outcome = device.ctl({"say"}, "one\ntwo \xE9\n");
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.err.find("-3 bad parameter: standard input, line 2: "), std::string::npos)
        << outcome.err;
}

TEST_F(WithAService, ALanguageMayBeWrittenAsPeopleDo) {
    for (const char* language : {"fr", "FR", "fr-FR", "fr_fr", "fr_FR.UTF-8"}) {
        const Outcome outcome = device.ctl({"say", "--wait", "--lang", language, "oui"});
        EXPECT_EQ(outcome.status, 0) << language << outcome.err;
        EXPECT_EQ(outcome.err, "");
    }
    const Outcome nearest = device.ctl({"say", "--wait", "--lang", "en-GB", "tea"});
    EXPECT_EQ(nearest.status, 0);
    EXPECT_EQ(nearest.err, "voxtrelctl: there is no en-GB; taking the nearest, en_US\n");
}

TEST_F(WithAService, ASpeedThatStandsForNoneIsRefused) {
    const Outcome outcome = device.ctl({"say", "--speed", "65535", "x"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err,
              "voxtrelctl: -3 bad parameter: speed 65535 (it takes 80 to 900): see voxtrelctl "
              "--help for the values a command takes\n");
}

Outcome redirected(const std::string& arguments, const std::string& where) {
    return ChildProcess({"sh", "-c", Device::control() + " " + arguments + " " + where}, "")
        .finish();
}

TEST_F(WithAService, AResultThatCannotBeWrittenIsAFailure) {
    for (const char* arguments : {"say --wait x", "languages", "get --json", "--help"}) {
        const Outcome full = redirected(arguments, ">/dev/full");
        EXPECT_EQ(full.status, 1) << arguments;
        EXPECT_NE(full.err.find("voxtrelctl: standard output: No space left on device\n"),
                  std::string::npos)
            << full.err;
        const Outcome closed = redirected(arguments, ">&-");
        EXPECT_EQ(closed.status, 1) << arguments;
        EXPECT_EQ(closed.err, "voxtrelctl: standard output: Bad file descriptor\n");
    }
}

TEST(AClosedOutput, IsNotTakenForWhatTheProgramOpens) {
    const Device device;  // without a service, so that it is looked for
    const ChildProcess waiting(
        {"sh", "-c", "exec " + Device::control() + " status --timeout 600 <&- >&- 2>&-"}, "");
    const auto isNobodys = [&](int number) {
        const std::string path =
            "/proc/" + std::to_string(waiting.pid()) + "/fd/" + std::to_string(number);
        std::error_code gone;
        return std::filesystem::read_symlink(path, gone) == "/dev/null";
    };
    EXPECT_TRUE(eventually([&] { return isNobodys(0) && isNobodys(1) && isNobodys(2); }));
}

}  // namespace
