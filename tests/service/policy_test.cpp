// SPDX-License-Identifier: Apache-2.0
// Who may do what, from the text of a policy to the answer for a user.
#include "service/Policy.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <sstream>

#include "service/PolicyFile.h"
#include "tests/support/TempFolder.h"

namespace voxtreld {
namespace {

constexpr uint32_t kOwn = 1000;
constexpr uint32_t kAnna = 1001;
constexpr uint32_t kBob = 1002;
constexpr uint32_t kAudio = 29;

constexpr Permissions setOf(std::initializer_list<Permission> permissions) {
    unsigned set = kNoPermissions;
    for (const Permission permission : permissions) {
        set |= bitOf(permission);
    }
    return static_cast<Permissions>(set);
}

Permissions allOf(const Policy& policy, uint32_t user) {
    unsigned set = kNoPermissions;
    for (const PermissionWord& entry : kPermissionWords) {
        set |= policy.permits(user, entry.permission) ? bitOf(entry.permission) : 0U;
    }
    return static_cast<Permissions>(set);
}

/// Anna is in the group audio, and that is all.
Policy::Groups groupsOf(uint32_t user) {
    return user == kAnna ? std::vector<uint32_t>{kAnna, kAudio} : std::vector<uint32_t>{user};
}

/// Of a text that must be in order.
std::vector<PolicyRule> rulesIn(const std::string& text) {
    std::istringstream in(text);
    std::string error;
    const auto rules = readPolicy(in, "policy", error);
    EXPECT_TRUE(rules.has_value()) << error;
    return rules.value_or(std::vector<PolicyRule>());
}

struct Grant {
    const char* text;
    Permissions own;
    Permissions anna;
    Permissions bob;
};

TEST(APolicy, GrantsWhatItsRulesSayTogether) {
    constexpr Permissions kSpeaker = setOf({Permission::Connect, Permission::Speak});
    const Grant cases[] = {
        {"", kAllPermissions, 0, 0},
        {"# nothing\n\n   \t\n", kAllPermissions, 0, 0},
        {"user 1001 connect\n", kAllPermissions, setOf({Permission::Connect}), 0},
        {"user 1001 speak", kAllPermissions, kSpeaker, 0},
        {"any connect # to look\n", kAllPermissions, setOf({Permission::Connect}),
         setOf({Permission::Connect})},
        {"group 29 connect speak\n", kAllPermissions, kSpeaker, 0},
        {"group 1002 lock\n", kAllPermissions, 0, setOf({Permission::Connect, Permission::Lock})},
        {"\tany   connect\r\nuser 1001 settings\nuser 1001 stop-others\n", kAllPermissions,
         setOf({Permission::Connect, Permission::Settings, Permission::StopOthers}),
         setOf({Permission::Connect})},
        {"any connect speak stop-others settings lock break-lock\n", kAllPermissions,
         kAllPermissions, kAllPermissions},
        {"user 1000 connect\n", kAllPermissions, 0, 0},
        {"user 1001 break-lock break-lock\n", kAllPermissions,
         setOf({Permission::Connect, Permission::BreakLock}), 0},
    };
    for (const Grant& grant : cases) {
        const Policy policy(kOwn, rulesIn(grant.text), groupsOf);
        EXPECT_EQ(grant.own, allOf(policy, kOwn)) << grant.text;
        EXPECT_EQ(grant.anna, allOf(policy, kAnna)) << grant.text;
        EXPECT_EQ(grant.bob, allOf(policy, kBob)) << grant.text;
    }
}

TEST(APolicy, KnowsUsersAndGroupsByName) {
    const std::vector<PolicyRule> rules = rulesIn("user root speak\ngroup root lock\n");
    ASSERT_EQ(2U, rules.size());
    EXPECT_EQ(PolicyRule::Subject::User, rules[0].subject);
    EXPECT_EQ(0U, rules[0].id);
    EXPECT_EQ(PolicyRule::Subject::Group, rules[1].subject);
    EXPECT_EQ(0U, rules[1].id);
}

TEST(APolicy, OfTheDocumentsIsOne) {
    std::string text = voxtrel_test::readFile(VOXTREL_SOURCE_DIR "/docs/policy.example");
    for (const char* name : {"group speech", "user reader", "user desk"}) {
        const std::string number = std::string(name).substr(0, std::string(name).find(' ')) + " 29";
        ASSERT_NE(std::string::npos, text.find(name));
        text.replace(text.find(name), std::string(name).size(), number);
    }
    EXPECT_EQ(4U, rulesIn(text).size());
}

struct Mistake {
    const char* text;
    const char* error;
};

TEST(APolicy, WithAMistakeIsRefusedWithItsLineAndReason) {
    constexpr const char* kPermissions =
        ": connect, speak, stop-others, settings, lock and break-lock are";
    const Mistake cases[] = {
        {"users 1 speak", "policy:1: a rule begins with user, group or any, not with 'users'"},
        {"any connect\n\n# x\nUSER 1 speak",
         "policy:4: a rule begins with user, group or any, not with 'USER'"},
        {"user", "policy:1: user is followed by a name or a number"},
        {"group # audio", "policy:1: group is followed by a name or a number"},
        {"user no-such-user speak", "policy:1: there is no user 'no-such-user'"},
        {"group no-such-group speak", "policy:1: there is no group 'no-such-group'"},
        {"user 4294967295 speak", "policy:1: there is no user '4294967295'"},
        {"user 99999999999999999999 speak", "policy:1: there is no user '99999999999999999999'"},
        {"user -1 speak", "policy:1: there is no user '-1'"},
        {"any", "policy:1: the rule grants nothing: it ends without a permission"},
        {"user 1", "policy:1: the rule grants nothing: it ends without a permission"},
        {"any # speak", "policy:1: the rule grants nothing: it ends without a permission"},
        {"any speak \x1b[1msing", "policy:1: there is no permission '?[1msing'"},
        {"any speak, lock", "policy:1: there is no permission 'speak,'"},
        {"any all", "policy:1: there is no permission 'all'"},
    };
    for (const Mistake& mistake : cases) {
        std::istringstream in(mistake.text);
        std::string error;
        EXPECT_FALSE(readPolicy(in, "policy", error).has_value()) << mistake.text;
        const bool lists = std::string(mistake.error).find("permission '") != std::string::npos;
        EXPECT_EQ(std::string(mistake.error) + (lists ? kPermissions : ""), error);
    }
}

TEST(APolicy, LooksAUserUpOnce) {
    int asked = 0;
    const Policy policy(kOwn, rulesIn("group 29 speak"), [&asked](uint32_t user) {
        ++asked;
        return groupsOf(user);
    });
    for (int i = 0; i < 3; ++i) {
        EXPECT_TRUE(policy.permits(kAnna, Permission::Speak));
        EXPECT_FALSE(policy.permits(kBob, Permission::Speak));
        EXPECT_TRUE(policy.permits(kOwn, Permission::Speak));
    }
    EXPECT_EQ(2, asked) << "and its own user never";
}

TEST(APolicy, RemembersABoundedNumberOfUsers) {
    std::vector<uint32_t> asked;
    const Policy policy(kOwn, rulesIn("group 29 speak"), [&asked](uint32_t user) {
        asked.push_back(user);
        return groupsOf(user);
    });
    for (uint32_t user = 0; user <= Policy::kRemembered; ++user) {
        (void)policy.permits(10'000 + user, Permission::Speak);
    }
    const size_t before = asked.size();
    EXPECT_FALSE(policy.permits(10'000, Permission::Speak));
    EXPECT_EQ(before + 1, asked.size()) << "the first one was forgotten";
}

TEST(APolicy, AsksAgainWhereGroupsCouldNotBeHad) {
    bool works = false;
    const Policy policy(kOwn, rulesIn("group 29 speak\nany connect"),
                        [&](uint32_t user) { return works ? groupsOf(user) : std::nullopt; });
    EXPECT_FALSE(policy.permits(kAnna, Permission::Speak));
    EXPECT_TRUE(policy.permits(kAnna, Permission::Connect));
    works = true;
    EXPECT_TRUE(policy.permits(kAnna, Permission::Speak));
}

TEST(TheGroupsOfAUser, AreTheSystems) {
    const Policy::Groups root = Policy::groupsOfUser(0);
    ASSERT_TRUE(root.has_value());
    EXPECT_EQ(1, std::count(root->begin(), root->end(), 0U)) << "its primary one";
    const Policy::Groups nobody = Policy::groupsOfUser(3'999'999'999);
    ASSERT_TRUE(nobody.has_value());
    EXPECT_TRUE(nobody->empty());
}

class APolicyFile : public testing::Test {
protected:
    /// What is said of a file that cannot be loaded.
    static std::string errorOf(const std::string& path) {
        std::string error;
        EXPECT_FALSE(loadPolicy(path, error).has_value()) << path;
        EXPECT_EQ(std::string::npos, error.find('\n'));
        return error;
    }

    const voxtrel_test::TempFolder folder;
};

TEST_F(APolicyFile, IsRead) {
    voxtrel_test::writeFile(folder.path("policy"), "any connect\nuser 7 speak");
    std::string error;
    const auto rules = loadPolicy(folder.path("policy"), error);
    ASSERT_TRUE(rules.has_value()) << error;
    EXPECT_EQ(2U, rules->size());
    EXPECT_EQ("", error);
}

TEST_F(APolicyFile, WithAMistakeIsNotLoaded) {
    const std::string path = folder.path("policy");
    voxtrel_test::writeFile(path, "any connect\nany sing\n");
    EXPECT_EQ(0U, errorOf(path).find(path + ":2: there is no permission 'sing'"));
    EXPECT_NE(std::string::npos, errorOf(path).find("voxtreld-policy(5)"));
}

TEST_F(APolicyFile, ThatWasNamedMustBeThereAndAFile) {
    const std::string missing = folder.path("missing");
    EXPECT_EQ(missing +
                  ": cannot read the policy: No such file or directory: name another file "
                  "with --policy",
              errorOf(missing));
    const std::string fifo = folder.path("fifo");
    ASSERT_EQ(0, mkfifo(fifo.c_str(), 0600));
    EXPECT_NE(std::string::npos, errorOf(fifo).find("it is no file"));
    EXPECT_NE(std::string::npos, errorOf(folder.path("")).find("it is no file"));
    const std::string large = folder.path("large");
    voxtrel_test::writeFile(large, std::string((1U << 20U) + 1, '\n'));
    EXPECT_NE(std::string::npos, errorOf(large).find("larger than 1 MiB"));
}

}  // namespace
}  // namespace voxtreld
