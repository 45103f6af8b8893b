// SPDX-License-Identifier: Apache-2.0
// The module as a process, with a service that is not as it should be.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <csignal>

#include "tests/speech_dispatcher/ModuleProcess.h"
#include "tests/support/Eventually.h"
#include "tests/voxtrelctl/Device.h"
#include "tests/voxtrelctl/Sound.h"

namespace {

using namespace voxtrel_test;
using Lines = ModuleProcess::Lines;

constexpr const char* kSpoken = "200 OK SPEAKING";
constexpr const char* kShortTimeout = "WaitForService 500\n";

constexpr const char* kLongTimeout = ModuleProcess::kWaitsLong;

const Lines kWhole = {"701", "702"};
const Lines kCut = {"701", "703"};

class AModuleInTrouble : public ::testing::Test {
protected:
    /// Events of a message from its answer on.
    static Lines eventsOf(ModuleProcess& module, const std::string& text) {
        EXPECT_EQ(kSpoken, module.send("SPEAK", text + "\n"));
        return module.eventsToEnd();
    }

    /// Returns when all its threads have stopped: until then it may answer.
    static void stop(pid_t process) {
        siginfo_t stopped = {};
        ASSERT_EQ(0, kill(process, SIGSTOP));
        ASSERT_EQ(0, waitid(P_PID, static_cast<id_t>(process), &stopped, WSTOPPED | WNOWAIT));
    }

    Device device;
};

const char* const kLong =
    "<speak>One two three four five six seven eight nine ten eleven twelve thirteen fourteen "
    "fifteen sixteen seventeen eighteen nineteen twenty.</speak>";

TEST_F(AModuleInTrouble, BeginsWithoutAServiceAndSpeaksWhenItComes) {
    ModuleProcess module(kShortTimeout);
    EXPECT_EQ(
        "299-Voxtrel: there is no speech service yet; it is found when it comes\n"
        "299 OK LOADED SUCCESSFULLY\n",
        module.ask("INIT"));
    EXPECT_EQ("304 CANT LIST VOICES\n", module.ask("LIST VOICES"));
    EXPECT_EQ(kCut, eventsOf(module, "<speak>a</speak>"));
    device.startService();
    EXPECT_NE("304 CANT LIST VOICES\n", module.ask("LIST VOICES"));
    EXPECT_EQ(kWhole, eventsOf(module, "<speak>a</speak>"));
}

TEST_F(AModuleInTrouble, EndsAMessageWhoseServiceDiesAndSpeaksTheNext) {
    device.startService({"--real-time"});
    ModuleProcess module(kLongTimeout);
    module.begin();
    module.send("SPEAK", std::string(kLong) + "\n");
    module.awaitEvent("701 BEGIN");
    device.killService();
    EXPECT_EQ("703", module.eventsToEnd().back());
    EXPECT_EQ("202 OK RECEIVING MESSAGE\n", module.ask("SPEAK"));
    EXPECT_EQ("200 OK SPEAKING\n", module.ask("<speak>a</speak>\n."));
    device.startService({"--sink", "wav:" + device.path("second.wav")});
    EXPECT_EQ(kWhole, module.eventsToEnd());
    device.stopService();
    EXPECT_FALSE(readSound(device.path("second.wav")).isSilent());
}

TEST_F(AModuleInTrouble, EndsAMessageWhoseServiceIsStoppedAndSpeaksWhenItGoesOn) {
    device.startService();
    ModuleProcess module(kShortTimeout);
    module.begin();
    EXPECT_EQ(kWhole, eventsOf(module, "<speak>a</speak>"));
    stop(device.servicePid());
    EXPECT_EQ(kCut, eventsOf(module, "<speak>b</speak>"));
    EXPECT_EQ(kCut, eventsOf(module, "<speak>c</speak>"));
    device.service().kill(SIGCONT);
    EXPECT_EQ(kWhole, eventsOf(module, "<speak>d</speak>"));
}

TEST_F(AModuleInTrouble, TellsAStopWhoseServiceIsStopped) {
    device.startService({"--real-time"});
    ModuleProcess module(kLongTimeout);
    module.begin();
    EXPECT_EQ(kSpoken, module.send("SPEAK", std::string(kLong) + "\n"));
    module.awaitEvent("701 BEGIN");
    stop(device.servicePid());
    module.say("STOP");
    EXPECT_EQ("703", module.eventsToEnd().back());
    device.service().kill(SIGCONT);
}

TEST_F(AModuleInTrouble, EndsWithAServiceThatIsStopped) {
    device.startService({"--real-time"});
    ModuleProcess module(kLongTimeout);
    module.begin();
    EXPECT_EQ("203 OK SETTINGS RECEIVED", module.send("SET", "rate=10\n"));
    EXPECT_EQ(kSpoken, module.send("SPEAK", std::string(kLong) + "\n"));
    module.awaitEvent("701 BEGIN");
    stop(device.servicePid());
    module.say("STOP");
    EXPECT_EQ("703", module.eventsToEnd().back());
    EXPECT_EQ(kSpoken, module.send("SPEAK", "b\n"));
    module.say("QUIT");
    module.awaitEvent("210 OK QUIT");
    EXPECT_EQ(0, module.process().wait());
    device.service().kill(SIGCONT);
}

TEST_F(AModuleInTrouble, AnswersThoughTheServiceManagerIsStopped) {
    device.startService();
    stop(device.managerPid());
    ModuleProcess module(kShortTimeout);
    module.begin();
    EXPECT_EQ("304 CANT LIST VOICES\n", module.ask("LIST VOICES"));
    EXPECT_EQ(kCut, eventsOf(module, "<speak>a</speak>"));
    EXPECT_EQ(kSpoken, module.send("SPEAK", "b\n"));
    module.say("STOP");
    EXPECT_EQ(kCut, module.eventsToEnd());
    ASSERT_EQ(0, kill(device.managerPid(), SIGCONT));
    EXPECT_TRUE(eventually([&] { return eventsOf(module, "<speak>c</speak>") == kWhole; }));
}

TEST_F(AModuleInTrouble, EndsThoughTheServiceManagerIsStopped) {
    stop(device.managerPid());
    ModuleProcess module(kShortTimeout);
    module.begin();
    EXPECT_EQ("210 OK QUIT\n", module.ask("QUIT"));
    EXPECT_EQ(0, module.process().wait());
    ASSERT_EQ(0, kill(device.managerPid(), SIGCONT));
}

TEST_F(AModuleInTrouble, LosesItsServiceManagerAndGoesOn) {
    device.startService();
    ModuleProcess module(kShortTimeout);
    module.begin();
    device.killServiceManager();
    EXPECT_EQ(kWhole, eventsOf(module, "<speak>a</speak>")) << "the service is still there";
    device.killService();
    EXPECT_EQ(kCut, eventsOf(module, "<speak>b</speak>"));
    EXPECT_EQ("210 OK QUIT\n", module.ask("QUIT"));
    EXPECT_EQ(0, module.process().wait());
}

TEST_F(AModuleInTrouble, LeavesOutMarkupForAServiceThatDoesNotKnowIt) {
    device.startOther({VOXTREL_EXAMPLE_SERVICE});
    ModuleProcess module;
    module.begin();
    EXPECT_EQ(kWhole, eventsOf(module, "<speak>first <mark name='a'/>message</speak>"));
    EXPECT_EQ(kWhole, eventsOf(module, "<speak>second <mark name='a'/>message</speak>"));
    EXPECT_TRUE(device.service().awaitOutput("second message"));
    EXPECT_NE(std::string::npos, device.service().output().find("first message"))
        << device.service().output();
}

TEST_F(AModuleInTrouble, EndsWhatIsRefused) {
    device.startService();
    ModuleProcess module;
    module.begin();
    EXPECT_EQ(0, device.ctl({"disable", "speech"}).status);
    EXPECT_EQ(kCut, eventsOf(module, "<speak>a</speak>"));
    EXPECT_EQ(0, device.ctl({"enable", "speech"}).status);
    EXPECT_EQ(kWhole, eventsOf(module, "<speak>a</speak>"));
}

}  // namespace
