// SPDX-License-Identifier: Apache-2.0
// Any command line: it is understood, within the limits of its options, or refused with a status
// and one line that says where to look. No command is run.
#include <algorithm>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "fuzz/Input.h"
#include "tools/Arguments.h"
#include "tools/CommandTable.h"
#include "tools/Commands.h"
#include "tools/Errors.h"
#include "tools/Settings.h"

using voxtrel_fuzz::Input;
using voxtrel_fuzz::require;

namespace voxtrelctl {

// The table of commands names them; they need a service.
int runSay(const Options&, Terminal&) {
    std::abort();
}
int runSilence(const Options&, Terminal&) {
    std::abort();
}
int runStop(const Options&, Terminal&) {
    std::abort();
}
int runLock(const Options&, Terminal&) {
    std::abort();
}
int runBreakLock(const Options&, Terminal&) {
    std::abort();
}
int runStatus(const Options&, Terminal&) {
    std::abort();
}
int runLanguages(const Options&, Terminal&) {
    std::abort();
}
int runVoices(const Options&, Terminal&) {
    std::abort();
}
int runGet(const Options&, Terminal&) {
    std::abort();
}
int runSet(const Options&, Terminal&) {
    std::abort();
}
int runSwitch(const Options&, Terminal&) {
    std::abort();
}
int runProfileShow(const Options&, Terminal&) {
    std::abort();
}
int runProfileSave(const Options&, Terminal&) {
    std::abort();
}
int runProfileLoad(const Options&, Terminal&) {
    std::abort();
}
int runProfileCopy(const Options&, Terminal&) {
    std::abort();
}
int runProfileRemove(const Options&, Terminal&) {
    std::abort();
}
int runMonitor(const Options&, Terminal&) {
    std::abort();
}
int runDoctor(const Options&, Terminal&) {
    std::abort();
}

}  // namespace voxtrelctl

namespace {

using namespace voxtrelctl;

/// Words that mean something, so that inputs come past the first.
const std::vector<std::string>& knownWords() {
    static const std::vector<std::string> all = [] {
        std::istringstream text(
            "say silence stop lock break-lock status languages voices get set enable "
            "disable profile show save load copy remove monitor doctor --json --verbose -v "
            "--help -h --version --timeout --timeout= --spawn --lang --trust-owner --voice "
            "--speed --pitch --volume --bg-volume --tts-volume --profile -f --file -w "
            "--wait --ssml --process --count -- - speed pitch language 1 -1 1e300 nan "
            "4294967296 0.5 fr_FR verbosity speech");
        return std::vector<std::string>(std::istream_iterator<std::string>(text), {});
    }();
    return all;
}

/// Bytes from here on put a text behind the last word, as in --timeout=5.
constexpr unsigned kJoined = 240;

/// As a process is given them: no word has a NUL in it.
std::vector<std::string> commandLine(Input& input) {
    std::vector<std::string> words = {"voxtrelctl"};
    while (!input.isAtEnd() && words.size() < 64) {
        const unsigned choice = input.byte();
        std::string word = choice < knownWords().size() ? knownWords()[choice] : input.text();
        word.resize(std::min(word.size(), word.find('\0')));
        if (choice >= kJoined && words.size() > 1) {
            words.back() += word;
        } else {
            words.push_back(word);
        }
    }
    return words;
}

void requireOneLine(const std::string& text) {
    require(!text.empty());
    for (const char character : text) {
        const auto byte = static_cast<unsigned char>(character);
        require(character == '\t' || (byte >= 0x20 && byte != 0x7F));
    }
}

bool needsName(Command command) {
    switch (command) {
        case Command::Set:
        case Command::ProfileShow:
        case Command::ProfileSave:
        case Command::ProfileLoad:
        case Command::ProfileCopy:
        case Command::ProfileRemove:
            return true;
        default:
            return false;
    }
}

void requireWithinLimits(const Options& options, bool hasEmptyWord) {
    require(options.timeout.count() >= 0 && options.timeout <= std::chrono::hours(24));
    require(!needsName(options.command) || hasEmptyWord || !options.name.empty());
    require((options.command == Command::Help) == !options.helpText.empty());
    require(options.command != Command::Lock || !options.words.empty());
    for (const auto& [name, text] : options.prosody.values) {
        const Setting& setting = settingNamed(name);
        try {
            (void)valueText(parseValue(setting, text));
        } catch (const Failure& failure) {
            requireOneLine(failure.what());
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Input input(data, size);
    const std::vector<std::string> words = commandLine(input);
    std::vector<const char*> arguments;
    bool hasEmptyWord = false;
    for (const std::string& word : words) {
        arguments.push_back(word.c_str());
        hasEmptyWord = hasEmptyWord || word.empty();
    }
    try {
        requireWithinLimits(parseArguments(static_cast<int>(arguments.size()), arguments.data()),
                            hasEmptyWord);
    } catch (const Failure& failure) {
        require(failure.code() == TTS::STATUS_BAD_PARAMETER);
        const std::string line = failure.what();
        requireOneLine(line);
        require(line.find("see voxtrelctl") != std::string::npos);
    }
    return 0;
}
