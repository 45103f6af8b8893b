// SPDX-License-Identifier: Apache-2.0
#include "tests/soak/ToolLife.h"

#include <algorithm>
#include <csignal>
#include <fstream>

#include "tests/soak/Orders.h"
#include "tests/soak/ToolOutput.h"
#include "tests/soak/ToolRun.h"

namespace soak {
namespace {

using std::chrono::duration_cast;
using std::chrono::milliseconds;

/// What a busy machine may add: of a command's own threads the heartbeat here sees nothing.
constexpr milliseconds kBusy(10000);

/// To find the service, to be answered, and to leave it.
constexpr const char* kTimeout = "2";
constexpr milliseconds kToEndByItself = 3 * milliseconds(2000) + kBusy;
constexpr milliseconds kToEndBySignal = milliseconds(100) + kBusy;

/// What a deadline has to do with is found in the ledger; who takes longer than this hangs.
constexpr milliseconds kToHang(60000);

/// A status that tells of an end by a signal.
constexpr int kBySignal = 128;

/// Until then a command may not handle signals yet.
constexpr milliseconds kToBegin(3000);

constexpr const char* kLock = "lock";
constexpr const char* kDisable = "disable-speech";
constexpr const char* kEnable = "enable-speech";

/// @param profiles begins the paths of what is saved.
std::vector<ToolLife::Command> commandsWith(const std::string& profiles) {
    using Words = std::vector<std::string>;
    const std::string saved = profiles + "saved.ini";
    const std::string copied = profiles + "copied.ini";
    const auto soon = [](const char* command, const Words& rest = {}) {
        Words words = {command, "--timeout", kTimeout};
        words.insert(words.end(), rest.begin(), rest.end());
        return words;
    };
    return {
        {"say", soon("say", {"Hello from a tool."})},
        {"say-json", soon("say", {"--json", "Hello from a tool that listens."}), true, true},
        {"say-slowly", soon("say", {"--json", "--speed", "80", "One, two, three."}), true, true},
        {"silence", soon("silence", {"30"})},
        {"stop", soon("stop")},
        {kLock, soon(kLock, {"--", "true"}), true},
        {"break-lock", soon("break-lock")},
        {"status", soon("status", {"--json"})},
        {"languages", soon("languages")},
        {"voices", soon("voices", {"--json"})},
        {"doctor", soon("doctor")},
        {"monitor", soon("monitor", {"--json"}), true},
        {"get", soon("get", {"--json"})},
        {"set", soon("set", {"speed", "250"})},
        {"set", soon("set", {"pitch", "210"})},
        {"set", soon("set", {"language", "fr_FR"})},
        {"disable", soon("disable", {"pitch"})},
        {"enable", soon("enable", {"pitch"})},
        {kDisable, soon("disable")},
        {kEnable, soon("enable")},
        {"profile-save", {"profile", "save", "--timeout", kTimeout, saved}},
        {"profile-load", {"profile", "load", "--timeout", kTimeout, saved}},
        {"profile-copy", {"profile", "copy", saved, copied}},
        {"profile-show", {"profile", "show", "--json", copied}},
        {"profile-remove", {"profile", "remove", copied}},
    };
}

std::vector<std::string> wordsOf(const ToolLife::Command& command) {
    std::vector<std::string> words = {VOXTREL_CONTROL};
    words.insert(words.end(), command.words.begin(), command.words.end());
    return words;
}

}  // namespace

ToolLife::ToolLife(const std::string& ledger, unsigned seed, const std::string& files)
    : mOutput(files + "output"), mLedger(ledger), mRandom(seed), mCommands(commandsWith(files)) {}

int ToolLife::live() {
    obeyOrders([this] { return milliseconds(upTo(200)); }, [this] { act(); });
    mLedger.left();
    confirmEnd();
    return 0;
}

/// Speech that it has switched off is on again behind the next command.
void ToolLife::act() {
    const auto last = static_cast<unsigned>(mCommands.size()) - 1;
    const Command* next = &mCommands[upTo(last)];
    if (mIsOff) {
        next = &*std::find_if(mCommands.begin(), mCommands.end(),
                              [](const Command& each) { return each.name == kEnable; });
    }
    const int status = run(*next);
    if (status == 0 && next->name == kDisable) {
        mIsOff = true;
    } else if (status == 0 && next->name == kEnable) {
        mIsOff = false;
    }
}

int ToolLife::run(const Command& command) {
    ToolRun tool(wordsOf(command), mOutput);
    const int signal = await(tool, command);
    if (signal != 0 && tool.status() == kBySignal + signal) {
        mLedger.interrupted(command.name.c_str());
    } else {
        mLedger.exited(command.name.c_str(), tool.status());
    }
    if (command.speaks) {
        noteSpeech();
    }
    return tool.status();
}

int ToolLife::await(ToolRun& tool, const Command& command) {
    milliseconds deadline = kToEndByItself;
    int signal = 0;  // ends a command that does not handle it yet, or what `lock` runs
    if (command.stays) {
        const milliseconds before(upTo(6000));
        if (tool.waitFor(before)) {
            return 0;
        }
        constexpr int kSignals[] = {SIGINT, SIGTERM, SIGHUP};
        const int sent = kSignals[upTo(2)];
        tool.signal(sent);
        signal = before < kToBegin || command.name == kLock ? sent : 0;
        deadline = kToEndBySignal;
    }
    const auto begun = Heartbeat::Clock::now();
    const auto missed = mHeartbeat.missed();
    if (!tool.waitFor(kToHang)) {
        tool.signal(SIGKILL);  // which is no status of its own
        (void)tool.waitFor(kToHang);
    }
    const auto taken = Heartbeat::Clock::now() - begun - (mHeartbeat.missed() - missed);
    const auto beyond = duration_cast<milliseconds>(taken) - deadline;
    mLedger.called(command.name.c_str(), static_cast<long>(beyond.count()));
    return signal;
}

void ToolLife::noteSpeech() {
    std::ifstream output(mOutput);
    noteEvents(output, ++mRuns, mLedger);
}

unsigned ToolLife::upTo(unsigned most) {
    return std::uniform_int_distribution<unsigned>(0, most)(mRandom);
}

}  // namespace soak
