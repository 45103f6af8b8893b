// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_COMMANDTABLE_H
#define VOXTREL_TOOLS_COMMANDTABLE_H

#include <vector>

#include "tools/Options.h"
#include "tools/Terminal.h"

namespace voxtrelctl {

/// A command that is nothing but those that belong to it.
struct ParentCommand {
    const char* name;
    const char* help;
    const char* group;  ///< heading in the help
};

/// A subcommand: all that there is to say of it but its arguments.
struct CommandEntry {
    enum class Output { Text, TextOrJson };  ///< with the latter it takes --json
    enum class Needs { Service, Files };     ///< with the former it takes --timeout

    Command command;
    const ParentCommand* parent;  ///< that it belongs to; null: none
    const char* name;
    const char* help;
    const char* group;  ///< heading in the help
    Output output;
    Needs needs;
    int (*run)(const Options& options, Terminal& terminal);  ///< see Commands.h
};

/// All subcommands, in the order of the help.
const std::vector<CommandEntry>& commandTable();

}  // namespace voxtrelctl

#endif
