// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SOCKET_SOCKETPATH_H
#define VOXTREL_SOCKET_SOCKETPATH_H

#include <sys/types.h>

#include <optional>
#include <string>

namespace android::transport {

/// Who may connect to the service manager's socket: whoever the mode of its file lets write.
struct SocketAccess {
    static constexpr mode_t kOwnerOnly = 0600;

    mode_t mode = kOwnerOnly;
    std::optional<gid_t> group;  ///< of the file; else the one that the kernel gives it
};

/// The folder in which the file of that path is.
std::string folderOf(const std::string& path);

/// Makes the folder of `path`, with mode 0700, unless it is there.
void makeFolderOf(const std::string& path);

/// False for the fallback under /tmp, where everybody may make folders, unless it is private.
bool folderIsTrusted(const std::string& path);

/// Is there a folder, not a link to one, that belongs to `user` and that nobody else may enter?
bool isPrivateTo(uid_t user, const std::string& folder);

}  // namespace android::transport

#endif
