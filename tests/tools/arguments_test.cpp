// SPDX-License-Identifier: Apache-2.0
#include "tools/Arguments.h"

#include <gtest/gtest.h>

#include "tools/Errors.h"

using namespace voxtrelctl;

namespace {

using Words = std::vector<std::string>;

Options parse(const Words& words) {
    std::vector<const char*> argv = {"voxtrelctl"};
    for (const std::string& word : words) {
        argv.push_back(word.c_str());
    }
    return parseArguments(static_cast<int>(argv.size()), argv.data());
}

std::string refusal(const Words& words) {
    try {
        parse(words);
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.code(), -3);
        return failure.what();
    }
    return "accepted";
}

TEST(Say, TakesItsTextAsWords) {
    const Options options = parse({"say", "Hello,", "world."});
    EXPECT_EQ(options.command, Command::Say);
    EXPECT_EQ(options.words, (Words{"Hello,", "world."}));
    EXPECT_FALSE(options.wait);
    EXPECT_FALSE(options.json);
}

TEST(Say, TakesTheNamesOfCommandsAsText) {
    EXPECT_EQ(parse({"say", "stop", "monitor"}).words, (Words{"stop", "monitor"}));
    EXPECT_EQ(parse({"say", "stop"}).command, Command::Say);
}

TEST(Say, TakesEveryProsodyOption) {
    const Options options = parse({"say", "--lang", "fr_FR", "--voice", "2", "--speed", "200",
                                   "--pitch", "1.5", "--volume", "50", "--bg-volume", "20",
                                   "--tts-volume", "80", "--profile", "x", "hi"});
    EXPECT_EQ(options.prosody.language, "fr_FR");
    EXPECT_EQ(options.prosody.voice, "2");
    EXPECT_EQ(options.prosody.profile, "x");
    EXPECT_EQ(options.prosody.values, (std::map<std::string, std::string>{{"speed", "200"},
                                                                          {"pitch", "1.5"},
                                                                          {"volume", "50"},
                                                                          {"bg-volume", "20"},
                                                                          {"tts-volume", "80"}}));
}

TEST(Say, TakesTextThatLooksLikeAnOptionAfterTwoDashes) {
    EXPECT_EQ(parse({"say", "--", "-5", "--wait"}).words, (Words{"-5", "--wait"}));
}

TEST(Say, TakesItsFlagsOnEitherSideOfTheText) {
    const Options options = parse({"say", "--json", "hi", "-w", "-v"});
    EXPECT_TRUE(options.json);
    EXPECT_TRUE(options.wait);
    EXPECT_TRUE(options.verbose);
}

TEST(Lock, KeepsEveryWordOfItsCommand) {
    EXPECT_EQ(parse({"lock", "--", "ls", "-l", "say", "--json", "--", "x"}).words,
              (Words{"ls", "-l", "say", "--json", "--", "x"}));
}

TEST(Set, TakesANegativeValue) {
    const Options options = parse({"set", "pitch", "-5"});
    EXPECT_EQ(options.command, Command::Set);
    EXPECT_EQ(options.name, "pitch");
    EXPECT_EQ(options.value, "-5");
}

struct CommandCase {
    Words words;
    Command command;
};

TEST(EveryCommand, IsRecognised) {
    const std::vector<CommandCase> cases = {
        {{"silence", "200"}, Command::Silence},
        {{"stop"}, Command::Stop},
        {{"status"}, Command::Status},
        {{"languages"}, Command::Languages},
        {{"voices", "en_US"}, Command::Voices},
        {{"get"}, Command::Get},
        {{"enable"}, Command::Enable},
        {{"disable", "pitch"}, Command::Disable},
        {{"profile", "show", "a"}, Command::ProfileShow},
        {{"profile", "save", "a"}, Command::ProfileSave},
        {{"profile", "load", "a"}, Command::ProfileLoad},
        {{"profile", "copy", "a", "b"}, Command::ProfileCopy},
        {{"profile", "remove", "a"}, Command::ProfileRemove},
        {{"monitor", "--count", "3"}, Command::Monitor},
        {{"doctor"}, Command::Doctor},
    };
    for (const CommandCase& example : cases) {
        EXPECT_EQ(parse(example.words).command, example.command) << example.words.front();
    }
}

TEST(EveryCommandThatPrintsData, TakesJson) {
    for (const char* command : {"status", "languages", "voices", "get", "monitor", "doctor"}) {
        EXPECT_TRUE(parse({command, "--json"}).json) << command;
    }
    EXPECT_TRUE(parse({"profile", "show", "a", "--json"}).json);
    EXPECT_NE(refusal({"stop", "--json"}), "accepted");
}

TEST(Help, ComesBackAsText) {
    const Options options = parse({"--help"});
    EXPECT_EQ(options.command, Command::Help);
    for (const char* expected : {"Speaking:", "say", "lock", "doctor", "Exit status"}) {
        EXPECT_NE(options.helpText.find(expected), std::string::npos) << expected;
    }
    EXPECT_NE(parse({"say", "--help"}).helpText.find("--speed"), std::string::npos);
}

TEST(TheVersion, ComesBackAsText) {
    EXPECT_EQ(parse({"--version"}).helpText.rfind("voxtrelctl 1.", 0), 0U);
}

TEST(ARefusal, SaysWhyAndWhichPageToRead) {
    EXPECT_EQ(refusal({"frob"}),
              "-3 bad parameter: there is no command \"frob\": see voxtrelctl --help");
    const std::string unknown = refusal({"say", "--bogus"});
    EXPECT_NE(unknown.find("--bogus"), std::string::npos);
    EXPECT_NE(unknown.find("see voxtrelctl say --help"), std::string::npos);
    EXPECT_NE(refusal({"profile", "copy", "a"}).find("DESTINATION"), std::string::npos);
}

TEST(ARefusal, IsInWordsOfOurOwn) {
    const std::string front = "-3 bad parameter: ";
    const std::pair<Words, const char*> lines[] = {
        {{}, "a command is missing: see voxtrelctl --help"},
        {{"profile"}, "a command is missing: see voxtrelctl profile --help"},
        {{"profile", "frob"}, "there is no command \"frob\": see voxtrelctl profile --help"},
        {{"-v", "frob"}, "there is no command \"frob\": see voxtrelctl --help"},
        {{"--frob"}, "\"--frob\" does not belong there: see voxtrelctl --help"},
        {{"say", "--json=maybe", "x"}, "--json takes no value: see voxtrelctl say --help"},
        {{"say", "--file"}, "--file takes one value: see voxtrelctl say --help"},
        {{"lock"}, "COMMAND is missing: see voxtrelctl lock --help"},
        {{"set", "speed"}, "VALUE is missing: see voxtrelctl set --help"},
        {{"profile", "copy", "a", "b", "c"},
         "\"c\" does not belong there: see voxtrelctl profile copy --help"},
        {{"stop", "--process", "0"},
         "--process takes a process id, not \"0\": see voxtrelctl stop --help"},
        {{"silence", "-3"},
         "MILLISECONDS takes a whole number, not \"-3\": see voxtrelctl silence --help"},
        {{"silence"}, "MILLISECONDS is missing: see voxtrelctl silence --help"},
        {{"silence", "soon"},
         "MILLISECONDS takes a whole number, not \"soon\": see voxtrelctl silence --help"},
        {{"say", "--bogus", "x"}, "\"--bogus\" does not belong there: see voxtrelctl say --help"},
        {{"stop", "now"}, "\"now\" does not belong there: see voxtrelctl stop --help"},
        {{"say", "--speed"}, "--speed takes one value: see voxtrelctl say --help"},
        {{"say", "--speed", "1", "--speed", "2", "x"},
         "--speed takes one value: see voxtrelctl say --help"},
        {{"monitor", "--count", "0"},
         "--count takes a whole number from 1, not \"0\": see voxtrelctl monitor --help"},
        {{"get", "--timeout", "-1"},
         "--timeout takes a number of seconds, up to 86400, not \"-1\": see voxtrelctl get --help"},
    };
    for (const auto& [words, line] : lines) {
        EXPECT_EQ(refusal(words), front + line);
    }
}

TEST(EveryCommandThatNeedsTheService, TakesATimeout) {
    for (const Words& words : {Words{"say"},
                               {"silence", "1"},
                               {"stop"},
                               {"break-lock"},
                               {"status"},
                               {"languages"},
                               {"voices"},
                               {"get"},
                               {"set", "speed", "1"},
                               {"enable"},
                               {"disable"},
                               {"monitor"},
                               {"doctor"},
                               {"profile", "save", "a"},
                               {"profile", "load", "a"}}) {
        Words line = words;
        line.insert(line.end(), {"--timeout", "1.5"});
        EXPECT_EQ(parse(line).timeout, std::chrono::milliseconds(1500)) << words.front();
        EXPECT_EQ(parse(words).timeout, std::chrono::seconds(10));
    }
    EXPECT_NE(refusal({"profile", "show", "a", "--timeout", "1"}), "accepted");
}

TEST(ARefusal, IsGivenForWhatIsMissingOrMalformed) {
    const std::vector<Words> lines = {{},
                                      {"silence"},
                                      {"silence", "soon"},
                                      {"silence", "-3"},
                                      {"set", "speed"},
                                      {"profile"},
                                      {"profile", "show"},
                                      {"lock"},
                                      {"say", "--speed"},
                                      {"say", "--speed", "1", "--speed", "2", "x"},
                                      {"stop", "now"}};
    for (const Words& line : lines) {
        EXPECT_NE(refusal(line), "accepted") << ::testing::PrintToString(line);
    }
}

}  // namespace
