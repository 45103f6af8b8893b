// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_ADMISSION_H
#define VOXTREL_SERVICE_ADMISSION_H

#include <cstdint>
#include <set>

namespace voxtreld {

/// Who sent a request, in the kernel's own words.
struct Caller {
    uint32_t pid;
    uint32_t uid;
};

/// Which users the service admits.
struct Admission {
    std::set<uint32_t> denied;
    std::set<uint32_t> allowed;  ///< empty: everyone who is not denied

    /// A user on both lists is denied.
    bool permits(uint32_t uid) const {
        return denied.count(uid) == 0 && (allowed.empty() || allowed.count(uid) != 0);
    }
};

}  // namespace voxtreld

#endif
