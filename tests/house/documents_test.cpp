// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
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

/// Targets of a document's links that name files here.
std::vector<std::string> linksOf(const std::string& text) {
    static const std::regex link(R"re(\]\(([^)#]+)[^)]*\))re");
    std::vector<std::string> targets;
    for (std::sregex_iterator it(text.begin(), text.end(), link), end; it != end; ++it) {
        const std::string target = (*it)[1];
        if (target.find("://") == std::string::npos) {
            targets.push_back(target);
        }
    }
    return targets;
}

/// A document that shows all of a program but its first line, the licence.
void expectShown(const std::string& document, const std::string& source) {
    const std::string example = house::read(root() / source);
    const std::string program = example.substr(example.find('\n') + 1);
    ASSERT_GT(program.size(), 500U);
    EXPECT_NE(std::string::npos, house::read(root() / document).find("```cpp\n" + program + "```"));
}

TEST(TheReadme, ShowsTheExampleAsItIsBuilt) {
    expectShown("README.md", "examples/hello/hello.cpp");
}

TEST(TheGuideToServices, ShowsTheExampleAsItIsBuilt) {
    expectShown("docs/writing-a-service.md", "examples/service/service.cpp");
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
