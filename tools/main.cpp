// SPDX-License-Identifier: Apache-2.0
#include <cstdlib>
#include <exception>
#include <iostream>

#include "tools/Arguments.h"
#include "tools/Commands.h"
#include "tools/Owner.h"
#include "tools/Platform.h"
#ifdef VOXTREL_CAN_SPAWN
#include "tools/Spawn.h"
#endif

namespace {

using namespace voxtrelctl;

using Run = int (*)(const Options&, Terminal&);

struct Entry {
    Command command;
    Run run;
};

constexpr Entry kCommands[] = {
    {Command::Say, &runSay},
    {Command::Silence, &runSilence},
    {Command::Stop, &runStop},
    {Command::Lock, &runLock},
    {Command::BreakLock, &runBreakLock},
    {Command::Status, &runStatus},
    {Command::Languages, &runLanguages},
    {Command::Voices, &runVoices},
    {Command::Get, &runGet},
    {Command::Set, &runSet},
    {Command::Enable, &runSwitch},
    {Command::Disable, &runSwitch},
    {Command::ProfileShow, &runProfileShow},
    {Command::ProfileSave, &runProfileSave},
    {Command::ProfileLoad, &runProfileLoad},
    {Command::ProfileCopy, &runProfileCopy},
    {Command::ProfileRemove, &runProfileRemove},
    {Command::Monitor, &runMonitor},
    {Command::Doctor, &runDoctor},
};

int run(const Options& options) {
    if (options.command == Command::Help) {
        std::cout << options.helpText;
        return EXIT_SUCCESS;
    }
    quietLog(options.verbose);
    if (options.trustedOwner.has_value()) {
        trustOwner(*options.trustedOwner);
    }
    Terminal terminal(options.verbose);
#ifdef VOXTREL_CAN_SPAWN
    if (options.spawn) {
        ensureRunning(terminal);
    }
#endif
    for (const Entry& entry : kCommands) {
        if (entry.command == options.command) {
            return entry.run(options, terminal);
        }
    }
    return EXIT_FAILURE;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return leave(run(parseArguments(argc, argv)));
    } catch (const std::exception& error) {
        std::cerr << "voxtrelctl: " << error.what() << "\n";
        return leave(EXIT_FAILURE);
    }
}
