// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "tests/house/include_graph.h"
#include "tests/support/TempFolder.h"

namespace {

using Circle = std::vector<std::string>;
using voxtrel_test::TempFolder;
using voxtrel_test::writeFile;

std::string text(const Circle& circle) {
    std::string line;
    for (const std::string& component : circle) {
        line += (line.empty() ? "" : " -> ") + component;
    }
    return line;
}

TEST(TheWholeTree, HasNoCircleOfIncludes) {
    const house::Graph graph = house::includeGraph(VOXTREL_SOURCE_DIR);
    EXPECT_GT(graph.size(), 400U) << "the sources were not found under " << VOXTREL_SOURCE_DIR;
    for (const auto& [component, circle] : house::circlesIn(graph)) {
        ADD_FAILURE() << component << ": " << text(circle);
    }
}

TEST(TheWholeTree, HasTheFilesThatItIncludes) {
    EXPECT_EQ(std::vector<std::string>(), house::lostIncludes(VOXTREL_SOURCE_DIR));
}

TEST(TheWholeTree, ShowsWhatEachFolderOfThePlatformIncludes) {
    const house::Graph graph = house::includeGraph(VOXTREL_SOURCE_DIR);
    EXPECT_EQ(1U, graph.at("platform/check/RowCheck").count("platform/check/Row"));
    EXPECT_EQ(1U, graph.at("platform/host/Runtime").count("platform/host/socket/SocketTransport"));
}

class ASampleTree : public testing::Test {
protected:
    void add(const std::string& file, const std::string& content) {
        std::filesystem::create_directories(
            std::filesystem::path(mFolder.path(file)).parent_path());
        writeFile(mFolder.path(file), content);
    }

    std::set<std::string> circles() const {
        std::set<std::string> lines;
        for (const auto& [component, circle] : house::circlesIn(house::includeGraph(root()))) {
            lines.insert(text(circle));
        }
        return lines;
    }

    std::filesystem::path root() const { return mFolder.path("."); }

private:
    TempFolder mFolder;
};

TEST_F(ASampleTree, WithAPlantedCircleAmongHeadersAndSourcesIsSeenThrough) {
    add("one/A.h", "");
    add("one/A.cpp", "#include \"one/A.h\"\n#include \"two/B.h\"\n");
    add("two/B.h", "#include <C.h>\n");
    add("platform/host/C.h", "#include \"one/A.h\"\n");
    add("two/User.cpp", "#include \"one/A.h\"\n");
    EXPECT_EQ((std::set<std::string>{"one/A -> two/B -> platform/host/C -> one/A",
                                     "two/B -> platform/host/C -> one/A -> two/B",
                                     "platform/host/C -> one/A -> two/B -> platform/host/C"}),
              circles());
}

TEST_F(ASampleTree, WithAPlantedCircleOfPythonModulesIsSeenThrough) {
    add("python/_a.py", "import os, _c\n");
    add("python/_b.py", "from ._a import name\n");
    add("python/_c.py", "def f():\n    from . import os, _b as b\n");
    add("python/user.py", "from _a import name\n");
    EXPECT_EQ(3U, circles().size());
    EXPECT_EQ(1U, circles().count("python/_b -> python/_a -> python/_c -> python/_b"));
}

TEST_F(ASampleTree, WithoutACircleIsAccepted) {
    add("A.h", "");
    add("A.cpp", "#include \"A.h\"\n#include \"B.h\"\n");
    add("B.h", "#include <vector>\n");
    add("C.cpp", "#include \"A.h\"\n#include \"B.h\"\n");
    add("build/generated/A.h", "#include \"generated/A2.h\"\n");
    EXPECT_TRUE(circles().empty());
}

TEST_F(ASampleTree, NamesTheIncludesThatLeadNowhere) {
    add("one/A.h", "#include <vector>\n#include \"two/B.h\"\n#include \"C.h\"\n");
    add("platform/two/B.h", "#include \"one/B.h\"\n");
    EXPECT_EQ((std::vector<std::string>{"one/A.h: C.h", "platform/two/B.h: one/B.h"}),
              house::lostIncludes(root()));
}

TEST_F(ASampleTree, NamesWhatAComponentIncludes) {
    add("A.h", "");
    add("A.cpp", "#include \"A.h\"\n#include \"folder/B.h\"\n");
    add("folder/B.h", "#include \"B2.h\"\n");
    add("folder/B2.h", "");
    EXPECT_EQ((house::Graph{{"A", {"folder/B"}}, {"folder/B", {"folder/B2"}}, {"folder/B2", {}}}),
              house::includeGraph(root()));
}

}  // namespace
