// SPDX-License-Identifier: Apache-2.0
// The service manager's names, as the processes of several services and users see them, and what it
// says of them.
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "binder/ServiceOwner.h"
#include "tests/platform/ProbeTest.h"

namespace {

using android::OK;
using android::sp;
using android::String16;
using probe::Call;
using voxtrel_test::ChildProcess;
using voxtrel_test::eventually;

std::string names() {
    std::string all;
    for (const String16& name : android::defaultServiceManager()->listServices()) {
        for (size_t i = 0; i < name.size(); ++i) {
            all += static_cast<char>(static_cast<const char16_t*>(name)[i]);
        }
        all += ' ';
    }
    return all;
}

// Says the names that there are, each time it is asked.
const voxtrel_test::Role kLister("lister", [](const voxtrel_test::Arguments&) {
    while (voxtrel_test::hear() == "list") {
        voxtrel_test::tell(names());
    }
    return 0;
});

using TheNamesOfServices = probe::ProbeTest;

TEST_F(TheNamesOfServices, AreTheSameToEveryProcessThroughDeathAndReplacement) {
    ChildProcess lister = ChildProcess::asRole("lister");
    const auto becomes = [&lister](const std::string& expected) {
        return eventually([&] { return names() == expected && lister.ask("list") == expected; });
    };
    ChildProcess a = ChildProcess::asRole("server", {"a"});
    ChildProcess c = ChildProcess::asRole("server", {"c"});
    ASSERT_EQ("ready", c.readLine());
    ASSERT_EQ("ready", a.readLine());
    EXPECT_EQ("a c probe ", lister.ask("list"));
    ChildProcess next = ChildProcess::asRole("server", {"a"});
    ASSERT_EQ("ready", next.readLine());
    EXPECT_EQ("a c probe ", lister.ask("list"));
    c.killNow();
    EXPECT_TRUE(becomes("a probe "));
    a.killNow();  // whose name is another's meanwhile
    ChildProcess d = ChildProcess::asRole("server", {"d"});
    ASSERT_EQ("ready", d.readLine());
    EXPECT_EQ("a d probe ", lister.ask("list"));
    next.killNow();
    EXPECT_TRUE(becomes("d probe "));
}

std::string addedBy(const char* what, const ChildProcess& process) {
    return std::string("voxtrel-servicemanager: ") + what + " (process " +
           std::to_string(process.pid()) + ", user " + std::to_string(getuid()) + ")";
}

TEST_F(TheNamesOfServices, AreReportedInOneLineForEachChange) {
    mRuntime.killManager();
    // In place of the one that is gone, with its lines as its output.
    ChildProcess manager({"sh", "-c", "exec " VOXTREL_SERVICEMANAGER " 2>&1"});
    EXPECT_EQ("voxtrel-servicemanager: ready", manager.readLine());
    ChildProcess first = ChildProcess::asRole("server", {"one"});
    EXPECT_EQ("ready", first.readLine());
    EXPECT_EQ(addedBy("added one", first), manager.readLine());
    ChildProcess second = ChildProcess::asRole("server", {"one"});
    EXPECT_EQ("ready", second.readLine());
    EXPECT_EQ(addedBy("replaced one", second), manager.readLine());
    first.killNow();  // changes nothing
    const std::string died = std::to_string(second.pid());
    second.killNow();
    EXPECT_EQ("voxtrel-servicemanager: removed one: process " + died + " has died",
              manager.readLine());
    ChildProcess third = ChildProcess::asRole("server", {"one"});
    EXPECT_EQ("ready", third.readLine());
    EXPECT_EQ(addedBy("added one", third), manager.readLine());
}

// Takes a name as another user, each time it is told to, and says with what status.
const voxtrel_test::Role kOtherUser("other-user", [](const voxtrel_test::Arguments& arguments) {
    if (setuid(static_cast<uid_t>(std::stoul(arguments[0]))) != 0) {
        return 1;
    }
    while (voxtrel_test::hear() == "take") {
        voxtrel_test::tell(std::to_string(
            android::defaultServiceManager()->addService(String16("taken"), probe::makeNode())));
    }
    return 0;
});

// Registers a name, and becomes another user.
const voxtrel_test::Role kTurncoat("turncoat", [](const voxtrel_test::Arguments& arguments) {
    const android::status_t status =
        android::defaultServiceManager()->addService(String16("turned"), probe::makeNode());
    const bool turned = setuid(static_cast<uid_t>(std::stoul(arguments[0]))) == 0;
    voxtrel_test::tell(status == OK && turned ? "ready" : "failed");
    (void)voxtrel_test::hear();
    return 0;
});

TEST_F(TheNamesOfServices, AreOfTheUserWhoRegisteredThemWhateverBecameOfIt) {
    const uid_t user = geteuid() == 0 ? 54321 : geteuid();
    ChildProcess server = ChildProcess::asRole("turncoat", {std::to_string(user)});
    ASSERT_EQ("ready", server.readLine());
    android::OwnedService found;
    ASSERT_EQ(OK, android::findOwnedService(String16("turned"), found));
    EXPECT_EQ(getuid(), found.owner);
    EXPECT_EQ(server.pid(), found.process);
    EXPECT_TRUE(found.service == probe::find("turned")) << "and the reference is the same";
    server.killNow();
    EXPECT_TRUE(eventually([&] {
        return android::findOwnedService(String16("turned"), found) == OK &&
               found.service == nullptr;
    }));
}

TEST_F(TheNamesOfServices, AreTakenFromTheLivingByTheirOwnUserOnly) {
    // Only root can play another user; anybody else plays the same one, who may.
    const bool root = geteuid() == 0;
    const uid_t user = root ? 54321 : geteuid();
    ASSERT_TRUE(mRuntime.admitOthers());
    ChildProcess other = ChildProcess::asRole("other-user", {std::to_string(user)});
    ChildProcess owner = ChildProcess::asRole("server", {"taken"});
    ASSERT_EQ("ready", owner.readLine());
    const auto found = probe::find("taken");
    EXPECT_EQ(std::to_string(root ? android::PERMISSION_DENIED : OK), other.ask("take"));
    EXPECT_EQ(root, probe::find("taken") == found);
    owner.killNow();
    EXPECT_EQ("0", other.ask("take")) << "the dead leave their names to anybody";
    EXPECT_TRUE(probe::find("taken") != found);
}

}  // namespace
