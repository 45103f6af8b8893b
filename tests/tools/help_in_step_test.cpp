// SPDX-License-Identifier: Apache-2.0
// The help, the man page and the completion name the same commands and options.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <regex>
#include <set>

#include "tests/support/TempFolder.h"
#include "tools/Arguments.h"
#include "tools/CommandTable.h"

using namespace voxtrelctl;

namespace {

using Words = std::vector<const char*>;

/// {"profile", "show"}, and so on.
std::vector<Words> allCommands() {
    std::vector<Words> all;
    for (const CommandEntry& entry : commandTable()) {
        all.push_back(entry.parent == nullptr ? Words{entry.name}
                                              : Words{entry.parent->name, entry.name});
    }
    return all;
}

std::string helpOf(Words words) {
    words.insert(words.begin(), "voxtrelctl");
    words.push_back("--help");
    return parseArguments(static_cast<int>(words.size()), words.data()).helpText;
}

/// All that `pattern`'s first group finds.
std::set<std::string> matches(const std::string& text, const std::string& pattern) {
    const std::regex form(pattern);
    std::set<std::string> found;
    for (std::sregex_iterator at(text.begin(), text.end(), form), end; at != end; ++at) {
        found.insert((*at)[1]);
    }
    return found;
}

std::set<std::string> optionsOf(const std::string& text) {
    return matches(text, "(--[a-z-]+[a-z])");
}

std::string manPage() {
    const std::string page = voxtrel_test::readFile(VOXTREL_TOOLS_FOLDER "/voxtrelctl.1");
    return std::regex_replace(page, std::regex(R"(\\-)"), "-");
}

/// What bash would offer after these words.
std::set<std::string> offered(const std::string& words) {
    const std::string script = "source " VOXTREL_TOOLS_FOLDER "/voxtrelctl.bash; COMP_WORDS=(" +
                               words +
                               " ''); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _voxtrelctl; "
                               "printf '%s\\n' \"${COMPREPLY[@]}\"";
    FILE* shell = popen(
        ("bash -c '" + std::regex_replace(script, std::regex("'"), "'\\''") + "'").c_str(), "r");
    std::string answer;
    std::array<char, 4096> buffer{};
    while (std::fgets(buffer.data(), static_cast<int>(buffer.size()), shell) != nullptr) {
        answer += buffer.data();
    }
    EXPECT_EQ(pclose(shell), 0);
    return matches(answer, "([^\n]+)\n");
}

TEST(TheTable, HasARowForEachCommand) {
    std::set<Command> rows;
    for (const CommandEntry& entry : commandTable()) {
        rows.insert(entry.command);
    }
    EXPECT_EQ(rows.size(), commandTable().size());
    EXPECT_EQ(rows.size(), static_cast<size_t>(Command::Doctor));
    EXPECT_EQ(rows.count(Command::Help), 0U);
}

TEST(TheManPage, NamesEveryCommandAndOption) {
    const std::string page = manPage();
    for (const Words& command : allCommands()) {
        EXPECT_NE(page.find(command.back()), std::string::npos) << command.back();
        for (const std::string& option : optionsOf(helpOf(command))) {
            EXPECT_NE(page.find(option), std::string::npos) << command.back() << " " << option;
        }
    }
}

TEST(TheManPage, NamesNoOptionThatThereIsNot) {
    std::set<std::string> real = optionsOf(helpOf({}));
    for (const Words& command : allCommands()) {
        const std::set<std::string> more = optionsOf(helpOf(command));
        real.insert(more.begin(), more.end());
    }
    for (const std::string& option : optionsOf(manPage())) {
        EXPECT_EQ(real.count(option), 1U) << option;
    }
}

TEST(TheCompletion, OffersEveryCommand) {
    const std::set<std::string> all = offered("voxtrelctl");
    for (const Words& command : allCommands()) {
        EXPECT_EQ(all.count(command.front()), 1U) << command.front();
    }
    EXPECT_EQ(offered("voxtrelctl profile"),
              (std::set<std::string>{"show", "save", "load", "copy", "remove"}));
}

TEST(TheCompletion, OffersEveryOptionOfACommand) {
    for (const char* command :
         {"say", "silence", "status", "languages", "voices", "get", "monitor", "doctor"}) {
        const std::set<std::string> known = offered(std::string("voxtrelctl ") + command);
        for (const std::string& option : optionsOf(helpOf({command}))) {
            EXPECT_EQ(known.count(option), 1U) << command << " " << option;
        }
    }
}

TEST(TheCompletion, OffersTheSettingsAndLanguages) {
    EXPECT_EQ(offered("voxtrelctl set").count("tts-volume"), 1U);
    EXPECT_EQ(offered("voxtrelctl enable").count("speech"), 1U);
    EXPECT_EQ(offered("voxtrelctl say --lang").size(), 5U);
    EXPECT_EQ(offered("voxtrelctl set language").size(), 5U);
}

}  // namespace
