// SPDX-License-Identifier: Apache-2.0
// The command line with services that are not voxtreld: the example, and one that answers 0 to
// everything and sends no event.
#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <set>

#include "ipc/Callback.h"
#include "ipc/ITextToSpeechFestival.h"
#include "tests/support/Eventually.h"
#include "tests/voxtrelctl/Device.h"
#include "tools/Arguments.h"
#include "vocabulary/Status.h"

using namespace voxtrel_test;
using voxtrelctl::Command;

namespace {

/// A command, and what it must end with.
struct Row {
    ChildProcess::Words words;
    int status;
    std::string out;
    std::string err;  ///< without "voxtrelctl: " and the line end
};
using Table = std::vector<Row>;

std::string lineOf(const ChildProcess::Words& words) {
    std::string line;
    for (const std::string& word : words) {
        line += word + " ";
    }
    return line;
}

/// Without the line with which a command says that it has waited, which a busy machine makes it do.
std::string withoutWaiting(const std::string& err) {
    const std::string waiting =
        "voxtrelctl: the service is there and loads its voices (up to 10 s)\n";
    return err.rfind(waiting, 0) == 0 ? err.substr(waiting.size()) : err;
}

void expectRow(const Row& row, const Outcome& outcome) {
    EXPECT_EQ(outcome.status, row.status) << lineOf(row.words);
    EXPECT_EQ(outcome.out, row.out) << lineOf(row.words);
    EXPECT_EQ(withoutWaiting(outcome.err), row.err.empty() ? "" : "voxtrelctl: " + row.err + "\n")
        << lineOf(row.words);
}

Command commandOf(const ChildProcess::Words& words) {
    std::vector<const char*> arguments = {"voxtrelctl"};
    for (const std::string& word : words) {
        arguments.push_back(word.c_str());
    }
    return voxtrelctl::parseArguments(static_cast<int>(arguments.size()), arguments.data()).command;
}

/// `monitor` without an end has tests of its own.
void expectEveryCommand(const Table& table) {
    std::set<Command> seen = {Command::Help};
    for (const Row& row : table) {
        seen.insert(commandOf(row.words));
    }
    EXPECT_EQ(seen.size(), static_cast<size_t>(Command::Doctor) + 1);
}

constexpr const char* kNotSupported =
    "-9 not supported, switched off, or refused by the language filter: ";
constexpr const char* kSeeDoctor = ": voxtrelctl doctor lists what is switched off or filtered";

std::string notSupported(const std::string& detail) {
    return kNotSupported + detail + kSeeDoctor;
}

constexpr const char* kExampleSettings =
    "speed       100    disabled\n"
    "pitch       100    disabled\n"
    "voice       100    disabled\n"
    "volume      100    disabled\n"
    "bg-volume   100    disabled  0 to 100\n"
    "tts-volume  100    disabled  0 to 100\n"
    "language    en_US\n"
    "rate        100\n"
    "verbosity   0                0 to 1\n";
constexpr const char* kExampleLanguages =
    "en_US  1 voice   the service's language\n"
    "fr_FR  0 voices  not spoken by the service\n"
    "es_ES  0 voices  not spoken by the service\n"
    "ko_KR  0 voices  not spoken by the service\n"
    "pt_PT  0 voices  not spoken by the service\n";

Table withTheExample(const std::string& profile) {
    const std::string copy = profile + ".copy.ini";
    const std::string heading = "\nSettings of the service (value, switch, range):\n";
    return {
        {{"say", "Hello."}, 0, "", ""},
        {{"say", "--wait", "Bye."}, 0, "started 1\nfinished 1\n", ""},
        {{"say", "--speed", "200", "x"},
         1,
         "",
         "-3 bad parameter: speed 200 (the service does not support it): see voxtrelctl --help for "
         "the values a command takes"},
        {{"say", "--lang", "fr_FR", "x"}, 1, "", notSupported("language fr_FR")},
        {{"silence", "20"}, 0, "", ""},
        {{"silence", "--wait", "20"}, 0, "", ""},
        {{"silence", "60001"},
         1,
         "",
         "-3 bad parameter: see voxtrelctl --help for the values a command takes"},
        {{"stop"}, 0, "", ""},
        {{"lock", "--", "echo", "mine"}, 0, "mine\n", ""},
        {{"break-lock"}, 0, "nobody held the lock\n", ""},
        {{"status"},
         0,
         "service  ready\nspeech   enabled\nlock     free\nvoices   1\n" + heading +
             kExampleSettings + "\nLanguages:\n" + kExampleLanguages,
         ""},
        {{"languages"}, 0, kExampleLanguages, ""},
        {{"voices"}, 0, "en_US  1  printer\n", ""},
        {{"get"}, 0, kExampleSettings, ""},
        {{"set", "verbosity", "1"}, 1, "", notSupported("verbosity 1 (it takes 0 to 1)")},
        {{"set", "language", "en_US"}, 1, "", notSupported("language en_US")},
        {{"enable"}, 0, "", ""},
        {{"disable"}, 1, "", notSupported("speech")},
        {{"enable", "speed"}, 1, "", notSupported("speed")},
        {{"profile", "save", profile}, 0, "", ""},
        {{"profile", "copy", profile, copy}, 0, "", ""},
        {{"profile", "load", copy}, 1, "", notSupported("language en_US")},
        {{"profile", "remove", copy}, 0, "", ""},
    };
}

TEST(TheExampleService, IsWhatEveryCommandExpects) {
    Device device;
    device.startOther({VOXTREL_EXAMPLE_SERVICE});
    Table table = withTheExample(device.path("profile.ini"));
    for (const Row& row : table) {
        expectRow(row, device.ctl(row.words));
    }
    const Outcome shown = device.ctl({"profile", "show", device.path("profile.ini")});
    EXPECT_EQ(shown.status, 0) << shown.err;
    EXPECT_NE(shown.out.find("\nlang=en_US\nverbosity=0\nenable=1\n"), std::string::npos)
        << shown.out;
    const Outcome doctor = device.ctl({"doctor"});
    EXPECT_EQ(doctor.status, 0) << doctor.out << doctor.err;
    EXPECT_NE(doctor.out.find("ok  events           the service sends them\n"), std::string::npos)
        << doctor.out;
    const auto monitor = device.start({"monitor", "--count", "1"});
    ASSERT_TRUE(monitor->awaitOutput("service connected\n"));
    EXPECT_EQ(device.ctl({"lock", "--", "true"}).status, 0);
    EXPECT_EQ(monitor->finish().status, 0);
    EXPECT_EQ(monitor->output().rfind("service connected\nlock: held by process ", 0), 0U)
        << monitor->output();

    table.insert(
        table.end(),
        {{{"profile", "show", "x"}, 0, "", ""}, {{"doctor"}, 0, "", ""}, {{"monitor"}, 0, "", ""}});
    expectEveryCommand(table);
    EXPECT_TRUE(
        device.service().awaitOutput("service: clients find it now\nHello.\nBye.\n(pause)\n"
                                     "(pause)\n"))
        << device.service().output();
}

TEST(TheExampleService, RefusesOthersWhileOneHasTheLock) {
    Device device;
    device.startOther({VOXTREL_EXAMPLE_SERVICE});
    const auto holder =
        device.start({"lock", "--", "sh", "-c",
                      "echo held; exec >&- 2>&-; while kill -0 $PPID; do sleep 0.1; done"});
    ASSERT_TRUE(holder->awaitOutput("held\n"));
    const std::string refused = "voxtrelctl: -7 the service is locked by another client: ";
    for (const ChildProcess::Words& words : {ChildProcess::Words{"say", "x"},
                                             {"say", "--wait", "x"},
                                             {"silence", "1"},
                                             {"enable"},
                                             {"lock", "--", "true"}}) {
        const Outcome outcome = device.ctl(words);
        EXPECT_EQ(outcome.status, 1) << lineOf(words);
        EXPECT_EQ(outcome.err.rfind(refused, 0), 0U) << lineOf(words) << outcome.err;
    }
    EXPECT_NE(device.ctl({"status"}).out.find("lock     held by another client\n"),
              std::string::npos);
    holder->kill(SIGKILL);  // it leaves nothing behind
    EXPECT_EQ(holder->finish().status, 128 + SIGKILL);
    const auto isFree = [&] { return device.ctl({"say", "free"}).status == 0; };
    EXPECT_TRUE(eventually(isFree));
}

TEST(TheExampleService, DeniesARegistrationForAnotherProcess) {
    Device device;
    device.startOther({VOXTREL_EXAMPLE_SERVICE});
    const auto service = TTS::ITextToSpeechFestival::asInterface(
        android::defaultServiceManager()->getService(TTS::ITextToSpeechFestival::descriptor));
    ASSERT_TRUE(service != nullptr);
    const auto self = static_cast<unsigned>(getpid());
    const android::sp<TTS::Callback> callback =
        new TTS::Callback([](unsigned, unsigned, unsigned) {});
    EXPECT_EQ(service->registerCallback(self + 1, callback), TTS::STATUS_PERMISSION_DENIED);
    EXPECT_EQ(service->registerCallback(self, nullptr), TTS::STATUS_BAD_PARAMETER);
    EXPECT_EQ(service->registerCallback(self, callback), TTS::STATUS_OK);
}

std::string unanswered(const std::string& unknown) {
    return "0 sent, not answered: the service sends no event about it, so it is not known " +
           unknown + ": see its own log; docs/writing-a-service.md says what it must send";
}

std::string notKept(const std::string& detail) {
    return kNotSupported + detail + ": the service took it and did not keep it; see its own log";
}

constexpr const char* kLost =
    "-102 lost on its way, or the service does not tell of it: try again; see the service's own "
    "log, and docs/writing-a-service.md for what it must tell";

constexpr const char* kMuteSettings =
    "speed       0         disabled\n"
    "pitch       0         disabled\n"
    "voice       0         disabled\n"
    "volume      0         disabled\n"
    "bg-volume   0         disabled  0 to 100\n"
    "tts-volume  0         disabled  0 to 100\n"
    "language    not told\n"
    "rate        0\n"
    "verbosity   0                   0 to 1\n";
constexpr const char* kMuteLanguages =
    "en_US  0 voices  not spoken by the service\n"
    "fr_FR  0 voices  not spoken by the service\n"
    "es_ES  0 voices  not spoken by the service\n"
    "ko_KR  0 voices  not spoken by the service\n"
    "pt_PT  0 voices  not spoken by the service\n";

Table withTheMuteService(const std::string& profile) {
    const std::string dropped = "and it was asked to drop what is left of it";
    return {
        {{"say", "x"}, 1, "", unanswered("whether it has taken the text, " + dropped)},
        {{"say", "--wait", "x"}, 1, "", kLost},
        {{"say", "--json", "x"}, 1, "", kLost},
        {{"say", "--voice", "Anna", "x"},
         1,
         "",
         "-11 the client has no language of its own: and the service does not tell its own: name "
         "one with --lang"},
        {{"silence", "20"}, 1, "", unanswered("whether it has taken the pause, " + dropped)},
        {{"silence", "--wait", "20"}, 1, "", kLost},
        {{"stop"}, 1, "", unanswered("whether it has stopped")},
        {{"lock", "--", "echo", "mine"},
         1,
         "",
         unanswered("whether it has given the lock, and the command was not run")},
        {{"break-lock"}, 1, "", unanswered("who holds the lock")},
        {{"status"},
         0,
         std::string("service  ready\nspeech   enabled\nlock     not told\nvoices   0\n"
                     "\nSettings of the service (value, switch, range):\n") +
             kMuteSettings + "\nLanguages:\n" + kMuteLanguages,
         ""},
        {{"languages"}, 0, kMuteLanguages, ""},
        {{"voices"}, 0, "", ""},
        {{"get"}, 0, kMuteSettings, ""},
        {{"set", "verbosity", "1"}, 1, "", notKept("verbosity is 0 after it was set to 1")},
        {{"set", "verbosity", "0"}, 0, "", ""},
        {{"enable"}, 0, "", ""},
        {{"disable"}, 1, "", notKept("speech is on after it was set to off")},
        {{"enable", "speed"}, 1, "", notKept("the switch of speed is off after it was set to on")},
        {{"disable", "speed"}, 0, "", ""},
        {{"profile", "save", profile},
         1,
         "",
         std::string(kNotSupported) +
             "the service does not tell its language: nothing was saved; see the service's own "
             "log"},
        {{"profile", "load", "/dev/null/none.ini"},
         1,
         "",
         "-6 profile could not be read or written: the profile '/dev/null/none.ini' cannot be "
         "read: "
         "Not a directory: check that the file exists and that its folder is yours to write"},
    };
}

/// All at once: some wait for half a minute until they give up.
void expectTogether(Device& device, const Table& table) {
    std::vector<std::unique_ptr<ChildProcess>> running;
    for (const Row& row : table) {
        running.push_back(device.start(row.words));
    }
    for (size_t n = 0; n < table.size(); ++n) {
        expectRow(table[n], running[n]->finish());
    }
}

TEST(AServiceThatSendsNoEvent, LetsNoCommandHangOrClaimWhatItWasNotTold) {
    Device device;
    device.startOther({VOXTREL_MUTE_SERVICE, "ready", "enabled"});
    const auto doctor = device.start({"doctor"});
    const auto monitor = device.start({"monitor"});
    expectTogether(device, withTheMuteService(device.path("profile.ini")));
    const Outcome found = doctor->finish();
    EXPECT_NE(found.out.find("??  lock             not told; "), std::string::npos) << found.out;
    EXPECT_NE(found.out.find("??  events           none came of "), std::string::npos) << found.out;
    EXPECT_NE(found.out.find("??  language         the service does not tell its own; name one "
                             "with --lang\n"),
              std::string::npos)
        << found.out;
    EXPECT_TRUE(monitor->awaitError(
        "voxtrelctl: the service does not answer with an event when it is asked for one; "));
    monitor->kill(SIGINT);
    const Outcome watched = monitor->finish();
    EXPECT_EQ(watched.status, 0);
    EXPECT_EQ(watched.out, "service connected\n");
}

TEST(AServiceThatAnswersZeroToEverything, IsTakenForOneThatIsSwitchedOff) {
    const std::string disabled =
        "-1 speech is disabled: switch it on with: voxtrelctl enable speech";
    Device device;
    device.startOther({VOXTREL_MUTE_SERVICE, "ready"});
    expectTogether(device, {{{"say", "x"}, 1, "", disabled},
                            {{"say", "--wait", "x"}, 1, "", disabled},
                            {{"silence", "20"}, 1, "", disabled},
                            {{"stop"}, 1, "", disabled},
                            {{"enable"}, 1, "", notKept("speech is off after it was set to on")}});
}

TEST(AServiceThatNeverBecomesReady, IsNotSaidToRefuseTheUser) {
    Device device;
    device.startOther({VOXTREL_MUTE_SERVICE});
    const auto status = device.start({"status"});
    const Outcome doctor = device.ctl({"doctor"});
    EXPECT_EQ(doctor.status, 1);
    EXPECT_NE(doctor.out.find("!!  voices           it is registered and still loads its voices; "),
              std::string::npos)
        << doctor.out;
    const Outcome outcome = status->finish();
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.out, "");
    EXPECT_NE(outcome.err.find("\nvoxtrelctl: -5 no connection to the service: it is registered "
                               "and still loads its voices: wait a little, or see what it logs "
                               "about its voices\n"),
              std::string::npos)
        << outcome.err;
}

TEST(AServiceThatDiesWhileItIsAsked, IsNotSaidToDenyPermission) {
    Device device;
    device.startOther({VOXTREL_MUTE_SERVICE, "dies"});
    const Outcome outcome = device.ctl({"say", "--timeout", "1", "x"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.err.find("voxtrelctl: -8 service not found: "), std::string::npos)
        << outcome.err;
    EXPECT_EQ(device.service().finish().status, 1) << "it was asked";
}

TEST(ASlowService, DoesNotMakeACommandOfManyRequestsWaitForLongerThanItsTimeout) {
    Device device;
    device.startOther({VOXTREL_MUTE_SERVICE, "ready", "enabled", "slow"});
    const Outcome outcome = device.ctl({"status", "--timeout", "4"});
    EXPECT_EQ(outcome.status, 1) << "none of its requests takes so long, but all of them do";
    EXPECT_EQ(outcome.out, "");
}

}  // namespace
