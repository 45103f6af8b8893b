// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/house/files.h"

namespace {

namespace fs = std::filesystem;

TEST(EveryTestFile, IsBuilt) {
    const std::string compiled = house::read(VOXTREL_COMPILE_COMMANDS);
    ASSERT_FALSE(compiled.empty());
    size_t seen = 0;
    for (const auto& entry :
         fs::recursive_directory_iterator(fs::path(VOXTREL_SOURCE_DIR) / "tests")) {
        const fs::path& file = entry.path();
        if (file.extension() == ".cpp" || file.extension() == ".c") {
            ++seen;
            EXPECT_NE(std::string::npos, compiled.find(file.string() + "\"")) << file;
        }
    }
    EXPECT_GT(seen, 200U);
}

}  // namespace
