// SPDX-License-Identifier: Apache-2.0
// The folder under /tmp where the service manager listens unless it is told otherwise: anybody may
// have put one there of that name, so only the user's own is used.
#include <binder/ProcessState.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <map>
#include <string>

#include "socket/SocketPath.h"
#include "tests/platform/ProbeTest.h"
#include "tests/socket/RawWire.h"
#include "tests/support/TempFolder.h"

// The thread sanitizer keeps a thread of its own, with which no user namespace can be entered;
// this call, meant for sandboxes, ends it.
extern "C" __attribute__((weak)) void __sanitizer_sandbox_on_notify(void* arguments);

namespace {

using android::transport::isPrivateTo;
using voxtrel_test::ChildProcess;
using voxtrel_test::eventually;

TEST(APrivateFolder, BelongsToTheUserAndAdmitsNobodyElse) {
    const voxtrel_test::TempFolder temp;
    const std::string folder = temp.path("folder");
    EXPECT_FALSE(isPrivateTo(geteuid(), folder)) << "there is none";
    ASSERT_EQ(0, mkdir(folder.c_str(), 0700));
    EXPECT_TRUE(isPrivateTo(geteuid(), folder));
    EXPECT_FALSE(isPrivateTo(geteuid() + 1, folder)) << "it is somebody else's";
    for (const mode_t mode : {0777U, 0755U, 0750U, 0710U, 0701U, 0702U, 0720U}) {
        ASSERT_EQ(0, chmod(folder.c_str(), mode));
        EXPECT_FALSE(isPrivateTo(geteuid(), folder)) << std::oct << mode;
    }
}

TEST(APrivateFolder, IsNeitherALinkToOneNorAFile) {
    const voxtrel_test::TempFolder temp;
    const std::string folder = temp.path("folder");
    ASSERT_EQ(0, mkdir(folder.c_str(), 0700));
    ASSERT_EQ(0, symlink(folder.c_str(), temp.path("link").c_str()));
    EXPECT_FALSE(isPrivateTo(geteuid(), temp.path("link")));
    voxtrel_test::writeFile(temp.path("file"), "text");
    ASSERT_EQ(0, chmod(temp.path("file").c_str(), 0700));
    EXPECT_FALSE(isPrivateTo(geteuid(), temp.path("file")));
}

void writeProcFile(const char* name, const std::string& text) {
    std::ofstream file(name);
    file << text << std::flush;
}

// This build may stand under /tmp itself: its own folder there, or nothing.
std::string ownFolderUnderTmp() {
    const std::string program = VOXTREL_SERVICEMANAGER;
    return program.rfind("/tmp/", 0) == 0 ? program.substr(0, program.find('/', 5)) : "";
}

// Puts what a descriptor still shows where it was.
bool showAgain(const raw::Fd& old, const std::string& folder) {
    const std::string handler = "/proc/self/fd/" + std::to_string(old.get());
    return mkdir(folder.c_str(), 0755) == 0 &&
           mount(handler.c_str(), folder.c_str(), nullptr, MS_BIND | MS_REC, nullptr) == 0;
}

bool coverTmp() {
    const std::string own = ownFolderUnderTmp();
    const raw::Fd old(own.empty() ? -1 : open(own.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    return mount("tmpfs", "/tmp", "tmpfs", 0, "mode=1777") == 0 &&
           (own.empty() || showAgain(old, own));
}

// From here on this process, and those that it starts, have a /tmp of their own, empty but for this
// build.
bool enterPrivateTmp() {
    const std::string uid = std::to_string(geteuid());
    const std::string gid = std::to_string(getegid());
    if (unshare(CLONE_NEWNS) != 0) {
        if (__sanitizer_sandbox_on_notify != nullptr) {
            __sanitizer_sandbox_on_notify(nullptr);
        }
        if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) {
            return false;
        }
        writeProcFile("/proc/self/setgroups", "deny");
        writeProcFile("/proc/self/uid_map", uid + " " + uid + " 1");
        writeProcFile("/proc/self/gid_map", gid + " " + gid + " 1");
    }
    return mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 && coverTmp();
}

const std::string& sharedFolder() {
    static const std::string folder = "/tmp/voxtrel-" + std::to_string(geteuid());
    return folder;
}

bool managerIsSeen() {
    return android::ProcessState::self()->getContextObject(nullptr) != nullptr;
}

bool linkedFolder() {
    return mkdir("/tmp/elsewhere", 0700) == 0 &&
           symlink("/tmp/elsewhere", sharedFolder().c_str()) == 0;
}

// Only root can give a folder away; to anybody else, root's are foreign.
bool foreignFolder() {
    const char* folder = sharedFolder().c_str();
    return mkdir(folder, 0700) == 0 &&
           (geteuid() == 0 ? chown(folder, 54321, 54321) == 0
                           : mount("/etc", folder, nullptr, MS_BIND | MS_REC, nullptr) == 0);
}

bool openFolder() {
    return mkdir(sharedFolder().c_str(), 0700) == 0 && chmod(sharedFolder().c_str(), 0755) == 0;
}

bool hasEnded(const ChildProcess& process) {
    siginfo_t end = {};
    return waitid(P_PID, static_cast<id_t>(process.pid()), &end, WEXITED | WNOHANG | WNOWAIT) ==
               0 &&
           end.si_pid != 0;
}

// Neither a service manager nor a client uses the folder.
std::string isRefused() {
    const std::string socket = sharedFolder() + "/binder";
    ChildProcess manager({VOXTREL_SERVICEMANAGER});
    const auto accepts = [&] { return access((socket + ".lock").c_str(), F_OK) == 0; };
    (void)eventually([&] { return accepts() || hasEnded(manager); });
    if (accepts() || manager.wait() != 1) {
        return "the service manager accepts it";
    }
    if (access(sharedFolder().c_str(), W_OK) != 0) {
        return managerIsSeen() ? "the client sees what is not there" : "refused";
    }
    // One that is told to use the very folder, by another name, does listen there.
    const ChildProcess trap(
        {"env", "VOXTREL_BINDER_SOCKET=/tmp/." + socket.substr(4), VOXTREL_SERVICEMANAGER});
    if (!eventually([&] { return raw::connectTo(socket).get() >= 0; })) {
        return "nobody listens there";
    }
    return managerIsSeen() ? "the client accepts it" : "refused";
}

// Both make and use it, whatever the umask.
std::string isMade() {
    (void)umask(0);
    const ChildProcess manager({VOXTREL_SERVICEMANAGER});
    if (!eventually(&managerIsSeen)) {
        return "not found";
    }
    struct stat status {};
    (void)lstat(sharedFolder().c_str(), &status);
    return S_ISDIR(status.st_mode) && (status.st_mode & 07777) == 0700 ? "made" : "made open";
}

const voxtrel_test::Role kInOwnTmp("in-own-tmp", [](const voxtrel_test::Arguments& arguments) {
    unsetenv("VOXTREL_BINDER_SOCKET");
    unsetenv("XDG_RUNTIME_DIR");
    if (!enterPrivateTmp()) {
        voxtrel_test::tell("no private /tmp: run as root or where user namespaces are allowed");
        return 1;
    }
    static const std::map<std::string, bool (*)()> kBadFolders = {
        {"linked", &linkedFolder}, {"foreign", &foreignFolder}, {"open", &openFolder}};
    const auto bad = kBadFolders.find(arguments[0]);
    if (bad == kBadFolders.end()) {
        voxtrel_test::tell(isMade());
    } else {
        voxtrel_test::tell(bad->second() ? isRefused() : "the folder cannot be made");
    }
    return 0;
});

TEST(TheFolderUnderTmp, IsMadeForTheUserAlone) {
    EXPECT_EQ("made", ChildProcess::asRole("in-own-tmp", {"none"}).readLine());
}

TEST(TheFolderUnderTmp, IsRefusedWhenItIsALink) {
    EXPECT_EQ("refused", ChildProcess::asRole("in-own-tmp", {"linked"}).readLine());
}

TEST(TheFolderUnderTmp, IsRefusedWhenItIsSomebodyElses) {
    EXPECT_EQ("refused", ChildProcess::asRole("in-own-tmp", {"foreign"}).readLine());
}

TEST(TheFolderUnderTmp, IsRefusedWhenOthersMayEnter) {
    EXPECT_EQ("refused", ChildProcess::asRole("in-own-tmp", {"open"}).readLine());
}

}  // namespace
