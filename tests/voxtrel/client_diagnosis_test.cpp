// SPDX-License-Identifier: Apache-2.0
// What a client says of its way to the service.
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "tests/voxtrel/ClientTest.h"
#include "voxtrel/session/Surroundings.h"

namespace {

using namespace voxtrel;
using namespace voxtrel_test;

using ADiagnosis = ClientTest;

TEST_F(ADiagnosis, SaysThatThereIsAConnection) {
    Client client("test", options());
    ASSERT_TRUE(client.waitUntilConnected(kLong));
    const Diagnosis seen = client.diagnose();
    EXPECT_EQ(Reach::Connected, seen.reach);
    EXPECT_EQ(Status::Ok, seen.whyNot().status);
}

TEST_F(ADiagnosis, SaysThatThereIsNoServiceWithoutWaitingForOne) {
    service.die();
    Client client("test", options());
    const Diagnosis seen = client.diagnose(kLong);
    EXPECT_EQ(Reach::NoService, seen.reach);
    EXPECT_EQ(Status::ServiceNotFound, seen.whyNot().status);
}

TEST_F(ADiagnosis, SaysThatTheServiceDoesNotAnswer) {
    service.freeze();
    Client client("test", options());
    EXPECT_EQ(Reach::ServiceSilent, client.diagnose(kLong).reach);
    service.thaw();
    ASSERT_TRUE(client.waitUntilConnected(kLong));
    EXPECT_EQ(Reach::Connected, client.diagnose().reach);
}

TEST_F(ADiagnosis, SaysThatTheServiceHasCeasedToAnswer) {
    Client client("test", options());
    ASSERT_TRUE(client.waitUntilConnected(kLong));
    service.freeze();
    // The request may time out before it is sent.
    EXPECT_TRUE(eventually([&] {
        EXPECT_EQ(Status::TimedOut, client.settings(20ms).status());
        return client.diagnose().reach == Reach::ServiceSilent;
    }));
    service.thaw();
    EXPECT_TRUE(eventually([&] { return client.diagnose().reach == Reach::Connected; }));
}

Diagnosis diagnosis(Reach reach) {
    Diagnosis seen;
    seen.reach = reach;
    return seen;
}

TEST(WhyThereIsNoConnection, NamesThePathAndItsError) {
    Diagnosis seen = diagnosis(Reach::NoManager);
    seen.path = "/run/voxtrel/binder";
    seen.error = ENOENT;
    EXPECT_EQ(
        "there is no service manager (/run/voxtrel/binder: No such file or directory): start it",
        seen.whyNot().message);
    seen.reach = Reach::ManagerNotPermitted;
    seen.error = EACCES;
    EXPECT_EQ(Status::PermissionDenied, seen.whyNot().status);
    EXPECT_EQ(
        "this user may not talk to the service manager (/run/voxtrel/binder: Permission denied): "
        "ask whoever runs it",
        seen.whyNot().message);
}

TEST(WhyThereIsNoConnection, NamesTheProcessThatIsStopped) {
    Diagnosis seen = diagnosis(Reach::ServiceSilent);
    EXPECT_EQ("the service does not answer: it may be stopped", seen.whyNot().message);
    seen.service.process = 123;
    EXPECT_EQ("the service does not answer (process 123): it may be stopped",
              seen.whyNot().message);
    seen.service.isStopped = true;
    EXPECT_EQ(
        "the service does not answer (process 123 is stopped): continue it, or end it and start "
        "it again",
        seen.whyNot().message);
}

TEST(WhyThereIsNoConnection, NamesTheUserThatIsNotTrusted) {
    Diagnosis seen = diagnosis(Reach::NotTrusted);
    seen.service.user = 1001;
    EXPECT_EQ(Status::PermissionDenied, seen.whyNot().status);
    EXPECT_NE(std::string::npos, seen.whyNot().message.find("of user 1001, who could read"));
}

TEST(AProcess, IsSeenToBeStopped) {
    const pid_t child = fork();
    if (child == 0) {
        for (;;) {
            pause();
        }
    }
    const auto process = static_cast<std::uint32_t>(child);
    EXPECT_FALSE(isStopped(process));
    kill(child, SIGSTOP);
    ASSERT_EQ(child, waitpid(child, nullptr, WUNTRACED));
    EXPECT_TRUE(isStopped(process));
    kill(child, SIGKILL);
    ASSERT_EQ(child, waitpid(child, nullptr, 0));
    EXPECT_FALSE(isStopped(process));
}

TEST(ALookAtTheDriver, TellsWhetherItIsThereAndAsksNobody) {
    Diagnosis seen = lookAtDriver("/dev/null");
    EXPECT_EQ(Reach::Connected, seen.reach);
    EXPECT_EQ("driver", seen.transport);
    EXPECT_EQ("/dev/null", seen.path);
    seen = lookAtDriver("/nonexistent/binder");
    EXPECT_EQ(Reach::NoManager, seen.reach);
    EXPECT_EQ(ENOENT, seen.error);
    EXPECT_EQ("there is no binder driver (/nonexistent/binder: No such file or directory): load it",
              seen.whyNot().message);
}

}  // namespace
