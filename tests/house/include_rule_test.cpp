// SPDX-License-Identifier: Apache-2.0
#include "tests/house/include_rule.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <set>
#include <sstream>

#include "tests/house/files.h"

namespace {

namespace fs = std::filesystem;

using house::read;

bool isSource(const fs::path& file) {
    return file.extension() == ".h" || file.extension() == ".cpp" || file.extension() == ".c";
}

std::vector<fs::path> sourcesOf(const fs::path& folder) {
    std::vector<fs::path> files;
    if (fs::exists(folder)) {
        for (const auto& entry : fs::recursive_directory_iterator(folder)) {
            if (entry.is_regular_file() && isSource(entry.path())) {
                files.push_back(entry.path());
            }
        }
    }
    return files;
}

const house::Room& roomNamed(const std::string& name) {
    for (const house::Room& room : house::rooms()) {
        if (room.folder == name) {
            return room;
        }
    }
    throw std::invalid_argument(name);
}

TEST(EveryRoom, IncludesOnlyThroughItsDoors) {
    const fs::path root = VOXTREL_SOURCE_DIR;
    size_t seen = 0;
    for (const house::Room& room : house::rooms()) {
        for (const fs::path& file : sourcesOf(root / room.folder)) {
            const std::string path = fs::relative(file, root).string();
            for (const std::string& target : house::includesOf(read(file))) {
                ++seen;
                EXPECT_TRUE(house::mayInclude(room, path, target))
                    << path << " must not include " << target;
            }
        }
    }
    EXPECT_GT(seen, 20U) << "the sources were not found under " << root;
}

/// The headers that are installed for applications, as their room's CMakeLists.txt names them.
std::set<std::string> interfaceHeaders() {
    const std::string text = read(fs::path(VOXTREL_SOURCE_DIR) / "voxtrel/CMakeLists.txt");
    std::smatch list;
    if (!std::regex_search(text, list, std::regex(R"(VOXTREL_PUBLIC_HEADERS([^)]*)\))"))) {
        return {};
    }
    std::istringstream names(list[1]);
    std::set<std::string> headers;
    for (std::string name; names >> name;) {
        headers.insert("voxtrel/" + name);
    }
    return headers;
}

TEST(EveryHeaderForApplications, IncludesNothingButItsLikeAndTheStandardLibrary) {
    const std::set<std::string> headers = interfaceHeaders();
    EXPECT_GT(headers.size(), 5U);
    for (const std::string& header : headers) {
        for (const std::string& target :
             house::includesOf(read(fs::path(VOXTREL_SOURCE_DIR) / header))) {
            const bool isStandard = target.find('/') == std::string::npos;
            EXPECT_TRUE(isStandard || headers.count(target) == 1) << header << ": " << target;
        }
    }
}

TEST(EverySource, OpensWithItsLicence) {
    const fs::path root = VOXTREL_SOURCE_DIR;
    for (const char* folder :
         {"vocabulary", "ipc", "profile", "client", "platform", "voxtrel", "service", "tools",
          "bridges", "examples", "tests", "bench", "fuzz"}) {
        for (const fs::path& file : sourcesOf(root / folder)) {
            const std::string text = read(file);
            // What is looked for is no licence of this file: REUSE-IgnoreStart
            EXPECT_TRUE(text.find("// SPDX-License-Identifier: Apache-2.0\n") == 0 ||
                        text.find("/* SPDX-License-Identifier: Apache-2.0 */\n") == 0)
                << file;
            // REUSE-IgnoreEnd
        }
    }
}

TEST(TheIncludeRule, SeesBothSpellingsOfADirective) {
    const std::string source =
        "#include \"ipc/ICallback.h\"\n  #  include <binder/Parcel.h>\nint x;\n";
    EXPECT_EQ((std::vector<std::string>{"ipc/ICallback.h", "binder/Parcel.h"}),
              house::includesOf(source));
}

TEST(TheIncludeRule, RefusesAnArrowThatRunsBack) {
    EXPECT_FALSE(house::mayInclude(roomNamed("vocabulary"), "vocabulary/a.h", "ipc/ICallback.h"));
    EXPECT_FALSE(house::mayInclude(roomNamed("profile"), "profile/a.h", "ipc/ICallback.h"));
    EXPECT_FALSE(house::mayInclude(roomNamed("ipc"), "ipc/a.h", "client/Mutex.h"));
    EXPECT_FALSE(house::mayInclude(roomNamed("client"), "client/a.h", "service/Engine.h"));
    EXPECT_FALSE(house::mayInclude(roomNamed("client"), "client/a.h", "voxtrel/Client.h"));
    EXPECT_FALSE(house::mayInclude(roomNamed("service"), "service/a.h", "voxtrel/Client.h"));
    EXPECT_FALSE(house::mayInclude(roomNamed("voxtrel"), "voxtrel/a.h", "service/Engine.h"));
    EXPECT_FALSE(house::mayInclude(roomNamed("tools"), "tools/a.h", "profile/TtsSetting.h"));
    EXPECT_FALSE(
        house::mayInclude(roomNamed("platform/host"), "platform/host/a.h", "ipc/ICallback.h"));
    EXPECT_FALSE(house::mayInclude(roomNamed("ipc"), "ipc/a.h", "../client/Mutex.h"));
}

TEST(TheIncludeRule, OpensTheCHeaderAloneToBridges) {
    const house::Room& bridges = roomNamed("bridges");
    EXPECT_TRUE(house::mayInclude(bridges, "bridges/a/b.h", "voxtrel/voxtrel.h"));
    EXPECT_FALSE(house::mayInclude(bridges, "bridges/a/b.h", "voxtrel/Client.h"));
    EXPECT_FALSE(house::mayInclude(bridges, "bridges/a/b.h", "vocabulary/Events.h"));
    EXPECT_FALSE(house::mayInclude(roomNamed("client"), "client/a.h", "bridges/a/b.h"));
}

TEST(TheIncludeRule, KeepsPrivateHeadersWithinTheirRoom) {
    const std::string header = "ipc/internal/ConfigValue.h";
    EXPECT_TRUE(house::mayInclude(roomNamed("ipc"), "ipc/a.cpp", header));
    EXPECT_FALSE(house::mayInclude(roomNamed("client"), "client/a.cpp", header));
    EXPECT_FALSE(house::mayInclude(roomNamed("service"), "service/a.cpp", header));
    EXPECT_FALSE(house::mayInclude(roomNamed("examples"), "examples/a.cpp", header));
    EXPECT_FALSE(house::mayInclude(roomNamed("voxtrel"), "voxtrel/a.cpp", header));
    EXPECT_TRUE(house::mayInclude(roomNamed("voxtrel"), "voxtrel/ProfileFile.cpp",
                                  "profile/internal/ProfileReader.h"));
}

TEST(TheIncludeRule, KeepsWhatIsBehindThePlatformsHeadersToThePlatform) {
    for (const char* header : {"socket/Wire.h", "kernel/Device.h", "support/Log.h",
                               "servicemanager/Registry.h", "check/Row.h"}) {
        for (const char* room : {"ipc", "client", "voxtrel", "service", "tools", "examples"}) {
            EXPECT_FALSE(house::mayInclude(roomNamed(room), std::string(room) + "/a.cpp", header))
                << room << " " << header;
        }
    }
    const house::Room& check = roomNamed("platform/check");
    EXPECT_TRUE(house::mayInclude(check, "platform/check/a.cpp", "check/Row.h"));
    EXPECT_FALSE(house::mayInclude(check, "platform/check/a.cpp", "support/Log.h"));
    EXPECT_FALSE(house::mayInclude(check, "platform/check/a.cpp", "binder/internal/LocalNode.h"));
    EXPECT_FALSE(
        house::mayInclude(roomNamed("platform/host"), "platform/host/socket/a.cpp", "check/Row.h"));
}

TEST(TheIncludeRule, KeepsTransportsApartAndBehindTheirSeam) {
    const house::Room& platform = roomNamed("platform/host");
    EXPECT_TRUE(house::mayInclude(platform, "platform/host/Runtime.cpp", "kernel/Device.h"));
    EXPECT_TRUE(house::mayInclude(platform, "platform/host/socket/a.cpp", "socket/Wire.h"));
    EXPECT_TRUE(
        house::mayInclude(platform, "platform/host/socket/a.cpp", "binder/internal/LocalNode.h"));
    EXPECT_FALSE(house::mayInclude(platform, "platform/host/binder/a.cpp", "socket/Wire.h"));
    EXPECT_FALSE(house::mayInclude(platform, "platform/host/binder/a.cpp", "kernel/Device.h"));
    EXPECT_FALSE(house::mayInclude(platform, "platform/host/socket/a.cpp", "kernel/Device.h"));
    EXPECT_FALSE(house::mayInclude(platform, "platform/host/kernel/a.cpp", "socket/Wire.h"));
    EXPECT_FALSE(
        house::mayInclude(roomNamed("service"), "service/a.cpp", "binder/internal/LocalNode.h"));
}

TEST(TheIncludeRule, OpensThePlatformToOneHeaderOfTheLibrary) {
    const house::Room& ipc = roomNamed("ipc");
    EXPECT_TRUE(house::mayInclude(ipc, "ipc/BinderHeaders.h", "binder/Parcel.h"));
    EXPECT_FALSE(house::mayInclude(ipc, "ipc/ICallback.h", "binder/Parcel.h"));
    EXPECT_FALSE(
        house::mayInclude(roomNamed("client"), "client/DeathNotifier.h", "utils/RefBase.h"));
    EXPECT_TRUE(
        house::mayInclude(roomNamed("client"), "client/Speech.cpp", "ttscommon/ttscommon.h"));
}

}  // namespace
