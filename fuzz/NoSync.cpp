// SPDX-License-Identifier: Apache-2.0
// Thousands of profiles a second are no reason to sync the disks.
#include <dlfcn.h>
#include <unistd.h>

#include <cstring>

extern "C" int system(const char* command) {
    using System = int (*)(const char*);
    static const auto next = reinterpret_cast<System>(dlsym(RTLD_NEXT, "system"));
    return std::strcmp(command, "/bin/sync") == 0 ? 0 : next(command);
}

extern "C" int fsync(int) {
    return 0;
}
