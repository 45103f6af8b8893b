// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_POLICY_H
#define VOXTREL_SERVICE_POLICY_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <unordered_map>
#include <vector>

#include "service/Locking.h"
#include "service/Permission.h"

namespace voxtreld {

/// One line of a policy: these may do that.
struct PolicyRule {
    enum class Subject { User, Group, Any };

    Subject subject;
    uint32_t id;  ///< of the user or group
    Permissions granted;
};

/// The permissions of users. Those of several matching rules add up, and any permission includes
/// that to connect. The service's own user has all permissions; without a rule, no other user has
/// any.
///
/// A user's permissions are cached: a change of groups takes effect after a restart.
///
/// Called on: any thread. Locks: its own, not while it asks for groups.
class Policy {
public:
    /// The groups of a user; empty optional when they cannot be read at the moment.
    using Groups = std::optional<std::vector<uint32_t>>;
    using GroupSource = std::function<Groups(uint32_t uid)>;

    /// Maximum number of cached users.
    static constexpr size_t kRemembered = 1024;

    explicit Policy(uint32_t ownUser, std::vector<PolicyRule> rules = {},
                    GroupSource groupsOf = &groupsOfUser);

    bool permits(uint32_t uid, Permission permission) const;

    uint32_t ownUser() const { return mOwnUser; }

    /// The groups that the system's database has for the user, its primary one included. A user
    /// that the database does not know has none.
    static Groups groupsOfUser(uint32_t uid);

private:
    Permissions permissionsOf(uint32_t uid) const;
    bool needsGroups() const;

    const uint32_t mOwnUser;
    const std::vector<PolicyRule> mRules;
    const GroupSource mGroupsOf;
    mutable Mutex mMutex;
    mutable std::unordered_map<uint32_t, Permissions> mKnown VOXTRELD_GUARDED_BY(mMutex);
};

}  // namespace voxtreld

#endif
