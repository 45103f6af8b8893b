// SPDX-License-Identifier: Apache-2.0
#include "service/Options.h"

#include <gtest/gtest.h>

#include <vector>

namespace voxtreld {
namespace {

struct Parsed {
    bool goesOn;
    int exitStatus;
    Options options;
    std::string out;
    std::string err;
};

Parsed parse(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "voxtreld");
    std::vector<char*> argv;
    for (std::string& argument : arguments) {
        argv.push_back(argument.data());
    }
    Parsed parsed = {false, -1, {}, "", ""};
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    parsed.goesOn =
        parseOptions(static_cast<int>(argv.size()), argv.data(), parsed.options, parsed.exitStatus);
    parsed.out = testing::internal::GetCapturedStdout();
    parsed.err = testing::internal::GetCapturedStderr();
    return parsed;
}

TEST(TheCommandLine, HasDefaultsForADevice) {
    const Parsed parsed = parse({});
    EXPECT_TRUE(parsed.goesOn);
    EXPECT_EQ("/Customer/voxtrel.ini", parsed.options.profile);
    EXPECT_EQ("alsa", parsed.options.sink);
    EXPECT_FALSE(parsed.options.realTime);
    EXPECT_TRUE(parsed.options.background.empty());
    EXPECT_EQ(2048U, parsed.options.limits.utterancesPerClient);
    EXPECT_EQ(128U, parsed.options.maxClients);
    EXPECT_FALSE(parsed.options.policy.has_value());
}

TEST(TheCommandLine, IsTakenAtItsWord) {
    const Options options =
        parse({"--profile", "/tmp/p.ini", "--sink=wav:/tmp/x.wav", "--real-time", "--queue", "5",
               "--clients", "1000", "--policy", "who", "--background", "b.wav"})
            .options;
    EXPECT_EQ("/tmp/p.ini", options.profile);
    EXPECT_EQ("wav:/tmp/x.wav", options.sink);
    EXPECT_TRUE(options.realTime);
    EXPECT_EQ("b.wav", options.background);
    EXPECT_EQ(5U, options.limits.utterancesPerClient);
    EXPECT_EQ(1000U, options.maxClients);
    EXPECT_EQ("who", options.policy);
}

TEST(TheCommandLine, SaysHowLongTheServiceLivesAndWhatItLogs) {
    EXPECT_EQ(0, parse({}).options.idleLimit.count());
    EXPECT_FALSE(parse({}).options.logLevel.has_value());
    EXPECT_FALSE(parse({}).options.userProfile);
    const Options options =
        parse({"--exit-when-idle", "60", "--log-level", "debug", "--user-profile"}).options;
    EXPECT_EQ(60, options.idleLimit.count());
    EXPECT_EQ(2, options.logLevel);
    EXPECT_TRUE(options.userProfile);
    EXPECT_EQ(-1, parse({"--log-level=error"}).options.logLevel);
}

TEST(TheCommandLine, ExplainsItselfAndLeavesWithZero) {
    for (const char* flag : {"-h", "--help"}) {
        const Parsed parsed = parse({flag});
        EXPECT_FALSE(parsed.goesOn);
        EXPECT_EQ(0, parsed.exitStatus);
        EXPECT_NE(std::string::npos, parsed.out.find("wavdir:FOLDER"));
    }
    const Parsed version = parse({"--version"});
    EXPECT_EQ(0, version.exitStatus);
    EXPECT_EQ(0U, version.out.find("voxtreld ")) << version.out;
}

TEST(TheCommandLine, WithAMistakeLeavesWithAnErrorAndSaysWhich) {
    for (const std::vector<std::string>& wrong : {std::vector<std::string>{"--queue", "0"},
                                                  {"--queue", "many"},
                                                  {"--clients", "1"},
                                                  {"--policy"},
                                                  {"--exit-when-idle", "0"},
                                                  {"--exit-when-idle", "soon"},
                                                  {"--log-level", "loud"},
                                                  {"--user-profile", "--profile", "x.ini"},
                                                  {"--loud"},
                                                  {"extra"}}) {
        const Parsed parsed = parse(wrong);
        EXPECT_FALSE(parsed.goesOn) << wrong.front();
        EXPECT_NE(0, parsed.exitStatus);
        EXPECT_NE(std::string::npos, parsed.err.find(wrong.front())) << parsed.err;
    }
}

}  // namespace
}  // namespace voxtreld
