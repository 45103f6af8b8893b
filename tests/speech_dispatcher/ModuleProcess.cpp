// SPDX-License-Identifier: Apache-2.0
#include "tests/speech_dispatcher/ModuleProcess.h"

#include <stdexcept>

namespace voxtrel_test {
namespace {

std::string written(const std::string& path, const std::string& content) {
    writeFile(path, content);
    return path;
}

}  // namespace

ModuleProcess::ModuleProcess(const std::string& config)
    : mProcess({VOXTREL_DESKTOP_MODULE, written(mFolder.path("voxtrel.conf"), config)}) {}

std::string ModuleProcess::readLine() {
    std::string line = mProcess.readLine();
    if (line.size() < 4) {
        throw std::runtime_error("the module said '" + line + "'");
    }
    return line;
}

std::string ModuleProcess::readAnswer() {
    std::string answer;
    std::string line;
    do {
        line = readLine();
        answer += line + "\n";
    } while (line[3] == '-');
    return answer;
}

std::string ModuleProcess::ask(const std::string& lines) {
    mProcess.say(lines);
    return readAnswer();
}

void ModuleProcess::begin() {
    ask("INIT");
    send("AUDIO", "audio_output_method=pulse\n");
    send("LOGLEVEL", "log_level=0\n");
}

std::string ModuleProcess::send(const std::string& command, const std::string& body) {
    mProcess.say(command);
    readAnswer();
    std::string answer = ask(body + ".");
    answer.pop_back();
    return answer;
}

ModuleProcess::Lines ModuleProcess::eventsToEnd() {
    Lines events;
    while (true) {
        const std::string line = readLine();
        const std::string number = line.substr(0, 3);
        events.push_back(line[3] == '-' ? line : number);
        if (number == "702" || number == "703" || number == "704") {
            return events;
        }
    }
}

void ModuleProcess::awaitEvent(const std::string& event) {
    while (readLine() != event) {
    }
}

}  // namespace voxtrel_test
