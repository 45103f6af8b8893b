// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "service/UserProfile.h"
#include "tests/support/TempFolder.h"

namespace voxtreld {
namespace {

class AUsersProfile : public testing::Test {
protected:
    AUsersProfile() { setenv("XDG_STATE_HOME", folder.path("state").c_str(), 1); }
    ~AUsersProfile() override { unsetenv("XDG_STATE_HOME"); }

    voxtrel_test::TempFolder folder;
    const std::string itsFolder = folder.path("state/voxtrel");
    std::string error;
};

TEST_F(AUsersProfile, LiesInAFolderThatIsMadeOrThereAlready) {
    EXPECT_EQ(itsFolder + "/voxtrel.ini", userProfile(error));
    EXPECT_TRUE(std::filesystem::is_directory(itsFolder));
    EXPECT_EQ(itsFolder + "/voxtrel.ini", userProfile(error));
    EXPECT_EQ("", error);
}

TEST_F(AUsersProfile, LiesBehindALinkToAFolder) {
    std::filesystem::create_directories(folder.path("state"));
    std::filesystem::create_directory(folder.path("elsewhere"));
    std::filesystem::create_symlink(folder.path("elsewhere"), itsFolder);
    EXPECT_EQ(itsFolder + "/voxtrel.ini", userProfile(error));
}

TEST_F(AUsersProfile, CannotLieWhereAFileIsInTheWay) {
    std::filesystem::create_directories(folder.path("state"));
    voxtrel_test::writeFile(itsFolder, "of somebody else");
    EXPECT_EQ("", userProfile(error));
    EXPECT_EQ("cannot make " + itsFolder +
                  " for the settings: Not a directory: set XDG_STATE_HOME, or name a file with "
                  "--profile",
              error);
}

}  // namespace
}  // namespace voxtreld
