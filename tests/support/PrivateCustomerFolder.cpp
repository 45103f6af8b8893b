// SPDX-License-Identifier: Apache-2.0
#include "tests/support/PrivateCustomerFolder.h"

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <system_error>

// The thread sanitizer keeps a thread of its own, with which no user namespace can be entered;
// this call, meant for sandboxes, ends it.
extern "C" __attribute__((weak)) void __sanitizer_sandbox_on_notify(void* arguments);

namespace voxtrel_test {
namespace {

namespace fs = std::filesystem;

const fs::path kFolder = "/Customer";
// Two folders that every system has. In the private namespace the first comes to show the whole old
// root, its own old content included; on the second, whose original is then out of the way, the new
// root is built.
const fs::path kOldRoot = "/tmp";
const fs::path kNewRoot = "/proc";

void require(bool done, const std::string& what) {
    if (!done) {
        throw std::runtime_error("no private /Customer folder: " + what + ": " +
                                 std::system_category().message(errno) +
                                 "; run as root or where user namespaces are allowed");
    }
}

void writeProcFile(const char* name, const std::string& text) {
    std::ofstream file(name);
    file << text << std::flush;
    require(file.good(), name);
}

void enterNamespace() {
    if (unshare(CLONE_NEWNS) == 0) {
        return;
    }
    const std::string uid = std::to_string(geteuid());
    const std::string gid = std::to_string(getegid());
    if (__sanitizer_sandbox_on_notify != nullptr) {
        __sanitizer_sandbox_on_notify(nullptr);
    }
    require(unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0, "unshare");
    writeProcFile("/proc/self/setgroups", "deny");
    writeProcFile("/proc/self/uid_map", uid + " " + uid + " 1");
    writeProcFile("/proc/self/gid_map", gid + " " + gid + " 1");
}

void bindMount(const std::string& from, const std::string& to) {
    require(mount(from.c_str(), to.c_str(), nullptr, MS_BIND | MS_REC, nullptr) == 0, to);
}

void showEntry(const fs::directory_entry& entry) {
    const std::string shown = kNewRoot / entry.path().filename();
    if (entry.is_symlink()) {
        fs::create_symlink(fs::read_symlink(entry.path()), shown);
    } else if (entry.is_directory()) {
        fs::create_directory(shown);
        bindMount(entry.path(), shown);
    } else {
        std::ofstream(shown).close();
        bindMount(entry.path(), shown);
    }
}

void enterPrivateRoot() {
    const std::string here = fs::current_path();
    enterNamespace();
    require(mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0, "mount private /");
    bindMount("/", kOldRoot);
    require(mount("tmpfs", kNewRoot.c_str(), "tmpfs", 0, "mode=0755") == 0, "mount tmpfs");
    for (const fs::directory_entry& entry : fs::directory_iterator(kOldRoot)) {
        if (entry.path().filename() != kFolder.filename()) {
            showEntry(entry);
        }
    }
    require(chroot(kNewRoot.c_str()) == 0, "chroot");
    require(chdir(here.c_str()) == 0, here);
}

}  // namespace

PrivateCustomerFolder::PrivateCustomerFolder() {
    static const bool entered = (enterPrivateRoot(), true);
    (void)entered;
    fs::remove_all(kFolder);
    fs::create_directory(kFolder);
}

PrivateCustomerFolder::~PrivateCustomerFolder() {
    std::error_code ignored;  // a test may have removed it
    fs::remove_all(kFolder, ignored);
}

}  // namespace voxtrel_test
