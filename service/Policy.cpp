// SPDX-License-Identifier: Apache-2.0
#include "service/Policy.h"

#include <grp.h>
#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>
#include <utility>

namespace voxtreld {
namespace {

constexpr size_t kLongestEntry = 1U << 20U;
constexpr int kMaxGroups = 65536;  // the kernel's limit

/// Name and primary group. Zero, or an errno value; ENOENT when there is no such user.
int findUser(uint32_t uid, std::string& name, gid_t& group) {
    std::vector<char> memory(1024);
    for (;;) {
        passwd entry = {};
        passwd* found = nullptr;
        const int error = getpwuid_r(uid, &entry, memory.data(), memory.size(), &found);
        if (error == ERANGE && memory.size() < kLongestEntry) {
            memory.resize(2 * memory.size());
            continue;
        }
        if (found != nullptr) {
            name = found->pw_name;
            group = found->pw_gid;
            return 0;
        }
        return error == 0 ? ENOENT : error;
    }
}

bool applies(const PolicyRule& rule, uint32_t uid, const std::vector<uint32_t>& groups) {
    switch (rule.subject) {
        case PolicyRule::Subject::User:
            return rule.id == uid;
        case PolicyRule::Subject::Group:
            return std::find(groups.begin(), groups.end(), rule.id) != groups.end();
        default:
            return true;
    }
}

}  // namespace

Policy::Policy(uint32_t ownUser, std::vector<PolicyRule> rules, GroupSource groupsOf)
    : mOwnUser(ownUser), mRules(std::move(rules)), mGroupsOf(std::move(groupsOf)) {}

bool Policy::permits(uint32_t uid, Permission permission) const {
    return uid == mOwnUser || (permissionsOf(uid) & bitOf(permission)) != 0;
}

bool Policy::needsGroups() const {
    return std::any_of(mRules.begin(), mRules.end(), [](const PolicyRule& rule) {
        return rule.subject == PolicyRule::Subject::Group;
    });
}

Permissions Policy::permissionsOf(uint32_t uid) const {
    {
        const MutexLock lock(mMutex);
        const auto known = mKnown.find(uid);
        if (known != mKnown.end()) {
            return known->second;
        }
    }
    const Groups groups = needsGroups() ? mGroupsOf(uid) : Groups(std::in_place);
    unsigned granted = kNoPermissions;
    for (const PolicyRule& rule : mRules) {
        granted |= applies(rule, uid, groups.value_or(std::vector<uint32_t>())) ? rule.granted : 0U;
    }
    granted |= granted != kNoPermissions ? bitOf(Permission::Connect) : 0U;
    const auto permissions = static_cast<Permissions>(granted);
    if (groups.has_value()) {
        const MutexLock lock(mMutex);
        if (mKnown.size() >= kRemembered) {
            mKnown.clear();
        }
        mKnown[uid] = permissions;
    }
    return permissions;
}

Policy::Groups Policy::groupsOfUser(uint32_t uid) {
    std::string name;
    gid_t primary = 0;
    const int error = findUser(uid, name, primary);
    if (error != 0) {
        return error == ENOENT ? Groups(std::in_place) : std::nullopt;
    }
    std::vector<gid_t> groups(64);
    for (;;) {
        int count = static_cast<int>(groups.size());
        if (getgrouplist(name.c_str(), primary, groups.data(), &count) >= 0) {
            groups.resize(static_cast<size_t>(count));
            return std::vector<uint32_t>(groups.begin(), groups.end());
        }
        if (count <= static_cast<int>(groups.size()) || count > kMaxGroups) {
            return std::nullopt;
        }
        groups.resize(static_cast<size_t>(count));
    }
}

}  // namespace voxtreld
