// SPDX-License-Identifier: Apache-2.0
// The output module of speech-dispatcher: sd_voxtrel [CONFIGFILE]
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <exception>
#include <fstream>
#include <sstream>
#include <system_error>

#include "bridges/speech-dispatcher/Lines.h"
#include "bridges/speech-dispatcher/Module.h"
#include "bridges/speech-dispatcher/Protocol.h"

namespace {

using namespace sd_voxtrel;

/// @return false when nobody reads any more.
bool writeAll(const std::string& text) {
    std::size_t written = 0;
    while (written < text.size()) {
        const ssize_t size = write(STDOUT_FILENO, text.data() + written, text.size() - written);
        if (size < 0 && errno != EINTR) {
            return false;
        }
        written += static_cast<std::size_t>(std::max<ssize_t>(size, 0));
    }
    return true;
}

Config configFrom(const char* path, Log& log) {
    if (path == nullptr) {
        return {};
    }
    std::ifstream file(path);
    std::ostringstream text;
    text << file.rdbuf();
    const auto complain = [&](const std::string& what) {
        log.write(Log::kTrouble, std::string(path) + ": " + what);
    };
    if (!file.is_open()) {
        complain("cannot be read; all is as without it");
    }
    return readConfig(text.str(), complain);
}

int timeoutOf(const Module& module) {
    const auto moment = module.nextMoment();
    if (!moment) {
        return -1;
    }
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(*moment - Speaker::Clock::now()).count();
    return static_cast<int>(std::max<decltype(left)>(left, 0));
}

/// @return false at the end of the input.
bool readInput(Lines& lines) {
    char buffer[65536];
    const ssize_t size = read(STDIN_FILENO, buffer, sizeof buffer);
    if (size > 0) {
        lines.add({buffer, static_cast<std::size_t>(size)});
    }
    if (size < 0 && errno != EINTR) {
        throw std::system_error(errno, std::generic_category(), "cannot read commands");
    }
    return size != 0;
}

void takeLines(Lines& lines, Protocol& protocol, Module& module, Log& log) {
    std::string line;
    while (!protocol.hasEnded() && lines.next(line)) {
        log.write(Log::kTrace, "< " + line);
        protocol.take(line);
        if (!protocol.isInside()) {
            module.writeEvents();
        }
    }
}

void serve(Module& module, Protocol& protocol, const VoxtrelService& service, Log& log,
           const bool& isRead) {
    Lines lines;
    while (isRead && !protocol.hasEnded()) {
        const bool isInside = protocol.isInside();
        pollfd sources[] = {{STDIN_FILENO, POLLIN, 0}, {service.fd(), POLLIN, 0}};
        const nfds_t count = isInside ? 1 : 2;
        if (poll(sources, count, isInside ? -1 : timeoutOf(module)) < 0 && errno != EINTR) {
            throw std::system_error(errno, std::generic_category(), "cannot wait for commands");
        }
        if (sources[0].revents != 0 && !readInput(lines)) {
            return;
        }
        takeLines(lines, protocol, module, log);
        if (!protocol.isInside()) {
            module.takeEvents();
        }
    }
}

int run(const char* configPath) {
    Log log;
    VoxtrelService service;
    bool isRead = true;
    const auto write = [&](const std::string& text) {
        log.write(Log::kTrace, "> " + text.substr(0, text.size() - 1));
        isRead = isRead && writeAll(text);
    };
    Module module(service, configFrom(configPath, log), log, write);
    Protocol protocol(module, write);
    serve(module, protocol, service, log, isRead);
    service.stop();
    return 0;
}

}  // namespace

int main(int count, char** words) {
    (void)std::signal(SIGPIPE, SIG_IGN);  // told by write
    try {
        return run(count > 1 ? words[1] : nullptr);
    } catch (const std::exception& error) {
        (void)writeAll(std::string("399-") + error.what() + "\n399 ERR CANT INIT MODULE\n");
        return 1;
    }
}
