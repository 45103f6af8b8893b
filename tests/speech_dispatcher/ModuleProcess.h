// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SPEECH_DISPATCHER_MODULEPROCESS_H
#define VOXTREL_TESTS_SPEECH_DISPATCHER_MODULEPROCESS_H

#include <string>
#include <vector>

#include "tests/support/ChildProcess.h"
#include "tests/support/TempFolder.h"

namespace voxtrel_test {

/// The module as the server runs it, and the server's side of the protocol.
class ModuleProcess {
public:
    using Lines = std::vector<std::string>;

    /// Waits for the service on any busy machine.
    static constexpr const char* kWaitsLong = "WaitForService 60000\n";

    /// Starts it with a configuration of these lines.
    explicit ModuleProcess(const std::string& config = kWaitsLong);

    /// Says these lines and reads up to the end of the last one's answer: the first line that
    /// has no dash behind its number. All that was read, with LFs.
    std::string ask(const std::string& lines);

    /// INIT, and what the server says behind it.
    void begin();

    /// A command with lines behind it and the dot: its second answer, in a line.
    std::string send(const std::string& command, const std::string& body);

    /// Says nothing more than the line.
    void say(const std::string& line) { mProcess.say(line); }

    /// Events up to one of 702, 703 and 704, without the words behind their numbers.
    Lines eventsToEnd();

    /// Reads events up to this one.
    void awaitEvent(const std::string& event);

    ChildProcess& process() { return mProcess; }

private:
    std::string readAnswer();
    std::string readLine();

    const TempFolder mFolder;
    ChildProcess mProcess;
};

}  // namespace voxtrel_test

#endif
