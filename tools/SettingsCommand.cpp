// SPDX-License-Identifier: Apache-2.0
#include "tools/Commands.h"
#include "tools/Errors.h"
#include "tools/ServiceSettings.h"

namespace voxtrelctl {

int runSet(const Options& options, Terminal& terminal) {
    const Setting& setting = settingNamed(options.name);
    const Value value = parseValue(setting, options.value);
    Session session(terminal);
    writeSetting(session, setting, value);
    session.confirm();
    return 0;
}

int runSwitch(const Options& options, Terminal& terminal) {
    const bool enable = options.command == Command::Enable;
    const bool isSpeech = options.name.empty() || options.name == "speech";
    const Setting* setting = isSpeech ? nullptr : &settingNamed(options.name);
    if (setting != nullptr && !hasFlag(*setting)) {
        throw Failure(TTS::STATUS_BAD_PARAMETER, options.name + " has no switch",
                      "there are speech, " + settingNames(&hasFlag));
    }
    Session session(terminal);
    if (setting == nullptr) {
        writeSpeech(session, enable);
    } else {
        writeFlag(session, *setting, enable);
    }
    session.confirm();
    return 0;
}

}  // namespace voxtrelctl
