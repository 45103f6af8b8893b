// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <regex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "tests/house/files.h"

namespace {

namespace fs = std::filesystem;

const fs::path& root() {
    static const fs::path path = VOXTREL_SOURCE_DIR;
    return path;
}

std::vector<fs::path> documents() {
    std::vector<fs::path> found;
    for (const fs::path& folder : {root(), root() / "docs", root() / "platform"}) {
        for (const auto& entry : fs::directory_iterator(folder)) {
            if (entry.path().extension() == ".md") {
                found.push_back(entry.path());
            }
        }
    }
    return found;
}

/// A document without what stands between its fences.
std::string withoutPrograms(const std::string& text) {
    static const std::string fence = "```";
    std::string prose;
    std::size_t from = 0;
    bool isProse = true;
    while (from < text.size()) {
        const std::size_t to = std::min(text.find(fence, from), text.size());
        prose += isProse ? text.substr(from, to - from) : "";
        isProse = !isProse;
        from = to + fence.size();
    }
    return prose;
}

/// Targets of a document's links that name files here.
std::vector<std::string> linksOf(const std::string& text) {
    static const std::regex link(R"re(\]\(([^)#]+)[^)]*\))re");
    const std::string prose = withoutPrograms(text);
    std::vector<std::string> targets;
    for (std::sregex_iterator it(prose.begin(), prose.end(), link), end; it != end; ++it) {
        const std::string target = (*it)[1];
        if (target.find("://") == std::string::npos) {
            targets.push_back(target);
        }
    }
    return targets;
}

/// A document that shows all of a program but its first line, the licence.
void expectShown(const std::string& document, const fs::path& source) {
    const std::string example = house::read(root() / source);
    const std::string program = example.substr(example.find('\n') + 1);
    const std::string language = source.extension().string().substr(1);
    ASSERT_GT(program.size(), 200U) << source;
    EXPECT_NE(std::string::npos,
              house::read(root() / document).find("```" + language + "\n" + program + "```"))
        << source;
}

TEST(TheReadme, ShowsTheExampleAsItIsBuilt) {
    expectShown("README.md", "examples/hello/hello.cpp");
}

TEST(TheGuideToServices, ShowsTheExampleAsItIsBuilt) {
    expectShown("docs/writing-a-service.md", "examples/service/service.cpp");
}

TEST(TheGuideToTheInterface, ShowsTheExamplesAsTheyAreBuilt) {
    for (const char* source : {"speak.cpp", "speak.c", "survive.cpp", "loop.cpp", "loop.c"}) {
        expectShown("docs/interface.md", fs::path("examples/application") / source);
    }
    expectShown("README.md", "examples/application/speak.cpp");
}

TEST(TheGuideToPython, ShowsTheExamplesAsTheyAreRun) {
    for (const char* source : {"speak.py", "loop.py", "survive.py"}) {
        expectShown("docs/python.md", fs::path("examples/python") / source);
    }
}

/// Lines of a program that are neither empty nor a comment of their own.
std::size_t linesOfCode(const fs::path& file) {
    static const std::regex other(R"(\s*((//|/\*).*)?)");
    std::istringstream text(house::read(file));
    std::size_t count = 0;
    for (std::string line; std::getline(text, line);) {
        count += std::regex_match(line, other) ? 0 : 1;
    }
    return count;
}

TEST(TheExamplesOfApplications, HaveTwentyLinesAtMost) {
    std::size_t seen = 0;
    for (const auto& entry : fs::directory_iterator(root() / "examples/application")) {
        if (entry.path().extension() != ".txt") {
            ++seen;
            EXPECT_LE(linesOfCode(entry.path()), 20U) << entry.path();
        }
    }
    EXPECT_GE(seen, 6U);
}

TEST(EveryDocument, LinksToWhatIsThere) {
    size_t seen = 0;
    for (const fs::path& document : documents()) {
        for (const std::string& target : linksOf(house::read(document))) {
            ++seen;
            EXPECT_TRUE(fs::exists(document.parent_path() / target))
                << document << " links to " << target;
        }
    }
    EXPECT_GT(seen, 5U);
}

/// The names of classes, and of headers, under a folder.
std::set<std::string> namesUnder(const fs::path& folder) {
    static const std::regex declaration(R"re(\b(?:class|struct) (?:\[\[\w+\]\] )?(\w+))re");
    std::set<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        const std::string text = house::read(entry.path());
        names.insert(entry.path().stem().string());
        for (std::sregex_iterator it(text.begin(), text.end(), declaration), end; it != end; ++it) {
            names.insert((*it)[1]);
        }
    }
    return names;
}

TEST(TheGuideToTransports, NamesClassesThatThereAre) {
    static const std::regex name(R"re(\b[A-Z][a-z]{2,}[A-Z]\w*\b)re");
    const std::set<std::string> known = namesUnder(root() / "platform/host");
    const std::string text = house::read(root() / "docs/transport.md");
    std::size_t seen = 0;
    for (std::sregex_iterator it(text.begin(), text.end(), name), end; it != end; ++it) {
        ++seen;
        EXPECT_TRUE(known.count(it->str()) == 1 || it->str() == "PassCredentials") << it->str();
    }
    EXPECT_GT(seen, 50U);
}

/// "Suite.Name" of every test under `folder`.
std::set<std::string> testsUnder(const fs::path& folder) {
    static const std::regex test(R"re(\bTEST(?:_[FP])?\(\s*(\w+),\s*(\w+)\))re");
    std::set<std::string> tests;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        const std::string text =
            entry.path().extension() == ".cpp" ? house::read(entry.path()) : "";
        for (std::sregex_iterator it(text.begin(), text.end(), test), end; it != end; ++it) {
            tests.insert((*it)[1].str() + "." + (*it)[2].str());
        }
    }
    return tests;
}

TEST(TheGuideToReliability, NamesTestsThatThereAre) {
    static const std::regex name(R"re(`([A-Z]\w+\.[A-Z]\w+)`)re");
    const std::set<std::string> known = testsUnder(root() / "tests");
    const std::string text = house::read(root() / "docs/reliability.md");
    std::size_t seen = 0;
    for (std::sregex_iterator it(text.begin(), text.end(), name), end; it != end; ++it) {
        ++seen;
        EXPECT_EQ(1U, known.count((*it)[1])) << (*it)[1];
    }
    EXPECT_GT(seen, 50U);
}

/// Every row of its tables ends with a test, or says that there is none.
TEST(TheGuideToReliability, HasATestForEachFault) {
    std::istringstream text(house::read(root() / "docs/reliability.md"));
    std::size_t rows = 0;
    for (std::string line; std::getline(text, line);) {
        if (std::count(line.begin(), line.end(), '|') == 6 && line.rfind("| Fault", 0) != 0 &&
            line.rfind("|--", 0) != 0) {
            ++rows;
            const std::size_t end = line.rfind('|');
            const std::size_t last = line.rfind('|', end - 1);
            const std::string shown = line.substr(last, end - last);
            EXPECT_TRUE(shown.find('`') != std::string::npos ||
                        shown.find("not tested: ") != std::string::npos)
                << line;
        }
    }
    EXPECT_GT(rows, 40U);
}

TEST(TheSources, GoByNoClockThatCanJump) {
    static const std::regex clock(
        R"re(system_clock|high_resolution_clock|CLOCK_REALTIME|gettimeofday|\btime\((nullptr|NULL|0)\))re"
        R"re(|\btime\.(time|localtime|gmtime)|\bdatetime\b)re");  // those of Python
    std::size_t seen = 0;
    for (const char* folder : {"vocabulary", "ipc", "profile", "client", "platform", "service",
                               "voxtrel", "tools", "bridges", "python"}) {
        for (const auto& entry : fs::recursive_directory_iterator(root() / folder)) {
            const fs::path kind = entry.path().extension();
            if (kind == ".cpp" || kind == ".h" || kind == ".py") {
                ++seen;
                EXPECT_FALSE(std::regex_search(house::read(entry.path()), clock)) << entry.path();
            }
        }
    }
    EXPECT_GT(seen, 200U);
}

/// What the first group of `pattern` finds in a file.
std::string firstIn(const fs::path& file, const std::string& pattern) {
    const std::string text = house::read(root() / file);
    std::smatch found;
    return std::regex_search(text, found, std::regex(pattern)) ? found[1].str() : "";
}

TEST(ThePackages, HaveTheVersionOfTheProject) {
    const std::string version = firstIn("CMakeLists.txt", R"(project\(\S+ VERSION (\S+))");
    ASSERT_NE("", version);
    EXPECT_EQ(version, firstIn("debian/changelog", R"(^voxtrel \(([^-]+)-)"));
}

}  // namespace
