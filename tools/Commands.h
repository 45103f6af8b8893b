// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TOOLS_COMMANDS_H
#define VOXTREL_TOOLS_COMMANDS_H

#include "tools/Options.h"
#include "tools/Terminal.h"

namespace voxtrelctl {

// One function a command. Each prints its result on `terminal` and returns the exit status; what
// goes wrong is thrown as Failure (or Interrupted), before anything of the result is printed unless
// the function says otherwise. Called on: the main thread.

int runSay(const Options& options, Terminal& terminal);
int runSilence(const Options& options, Terminal& terminal);
int runStop(const Options& options, Terminal& terminal);

/// Holds the service lock while the command runs, and returns its exit status: 128 and the signal's
/// number when a signal ended it, 126 or 127 when it could not be started.
int runLock(const Options& options, Terminal& terminal);

/// Frees the service lock, whoever holds it.
int runBreakLock(const Options& options, Terminal& terminal);

int runStatus(const Options& options, Terminal& terminal);
int runLanguages(const Options& options, Terminal& terminal);
int runVoices(const Options& options, Terminal& terminal);

int runGet(const Options& options, Terminal& terminal);
int runSet(const Options& options, Terminal& terminal);
int runSwitch(const Options& options, Terminal& terminal);  ///< enable and disable

int runProfileShow(const Options& options, Terminal& terminal);
int runProfileSave(const Options& options, Terminal& terminal);
int runProfileLoad(const Options& options, Terminal& terminal);
int runProfileCopy(const Options& options, Terminal& terminal);
int runProfileRemove(const Options& options, Terminal& terminal);

/// Prints events until Ctrl-C, or until as many came as asked for; joins again when the service
/// comes back after its death.
int runMonitor(const Options& options, Terminal& terminal);

/// Prints every cause of silence that it can find; returns 1 when there is one.
int runDoctor(const Options& options, Terminal& terminal);

}  // namespace voxtrelctl

#endif
