// SPDX-License-Identifier: Apache-2.0
#include "tools/Commands.h"
#include "tools/Languages.h"
#include "tools/ServiceSettings.h"

namespace voxtrelctl {
namespace {

bool isName(const std::string& text) {
    return text.find_first_not_of("0123456789") != std::string::npos;
}

}  // namespace

int runSet(const Options& options, Terminal& terminal) {
    const Setting& setting = settingNamed(options.name);
    const bool isVoiceName = setting.which == voxtrel::Switch::Voice && isName(options.value);
    const bool isLanguage = options.name == "language";
    Value value;
    if (!isVoiceName) {
        value = isLanguage ? requireLanguage(options.value) : parseValue(setting, options.value);
    }
    Connection connection(options, terminal);
    connection.connect();
    if (isVoiceName) {
        const auto can = connection.require(connection.client().features(connection.left()));
        value = voiceNumber(can, serviceLanguage(connection), options.value);
    }
    writeSetting(connection, setting, value);
    return 0;
}

int runSwitch(const Options& options, Terminal& terminal) {
    const std::string name = options.name.empty() ? "speech" : options.name;
    const voxtrel::Switch which = switchNamed(name);
    Connection connection(options, terminal);
    connection.connect();
    writeSwitch(connection, which, name, options.command == Command::Enable);
    return 0;
}

}  // namespace voxtrelctl
