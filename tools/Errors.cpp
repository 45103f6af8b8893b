// SPDX-License-Identifier: Apache-2.0
#include "tools/Errors.h"

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <string_view>

#include <sys/uio.h>
#include <unistd.h>

#include "tools/Text.h"

namespace voxtrelctl {
namespace {

constexpr int codeOf(voxtrel::Status status) {
    return static_cast<int>(status);
}

constexpr StatusMeaning kMeanings[] = {
    {TTS::STATUS_OK, "success", "nothing to do"},
    {TTS::STATUS_DISABLED, "speech is disabled", "switch it on with: voxtrelctl enable speech"},
    {TTS::STATUS_BAD_PARAMETER, "bad parameter",
     "see voxtrelctl --help for the values a command takes"},
    {TTS::STATUS_NO_SERVICE, "no connection to the service",
     "it went away; start voxtreld again and repeat the command"},
    {TTS::STATUS_PROFILE_ERROR, "profile could not be read or written",
     "check that the file exists and that its folder is yours to write"},
    {TTS::STATUS_LOCKED, "the service is locked by another client",
     "wait until that client unlocks or leaves; voxtrelctl monitor shows when"},
    {TTS::STATUS_SERVICE_NOT_FOUND, "service not found",
     "is voxtreld running? start it with: voxtreld (voxtrelctl doctor looks further)"},
    {TTS::STATUS_NOT_SUPPORTED, "not supported, switched off, or refused by the language filter",
     "voxtrelctl doctor lists what is switched off or filtered"},
    {TTS::STATUS_PERMISSION_DENIED, "permission denied",
     "the service does not let this user do that; ask whoever runs it (of voxtreld see "
     "voxtreld-policy(5))"},
    {TTS::STATUS_NO_LANGUAGE, "the client has no language of its own", "name one with --lang"},
    {TTS::STATUS_QUEUE_FULL, "the service's queue is full",
     "say it again when some of it has been spoken"},
    {TTS::STATUS_AUDIO_FAILED, "the engine or the audio output failed",
     "look at the output of voxtreld for the reason"},
    {TTS::STATUS_SHUTDOWN, "the service has been shut down",
     "start voxtreld again and repeat the command"},
    {codeOf(voxtrel::Status::TimedOut), "no answer in time",
     "it may still be done; --timeout waits longer"},
    {codeOf(voxtrel::Status::Unresponsive), "the service does not answer",
     "voxtrelctl doctor says why"},
    {codeOf(voxtrel::Status::Lost), "lost on its way, or the service does not tell of it",
     "try again; see the service's own log, and docs/writing-a-service.md for what it must "
     "tell"},
};

/// For writing only; the type has no const.
iovec partOf(std::string_view text) {
    return {const_cast<char*>(text.data()), text.size()};
}

std::string compose(int code, const std::string& detail, const std::string& remedy) {
    std::string line = std::to_string(code) + " " + meaningOf(code).meaning;
    for (const std::string& part : {detail, remedy}) {
        line += part.empty() ? "" : ": " + part;
    }
    std::replace(line.begin(), line.end(), '\n', ' ');
    return forTerminal(line);  // a detail may quote what a file or another program gave
}

}  // namespace

StatusMeaning meaningOf(int code) {
    const auto* found = std::find_if(std::begin(kMeanings), std::end(kMeanings),
                                     [code](const StatusMeaning& m) { return m.code == code; });
    if (found != std::end(kMeanings)) {
        return *found;
    }
    return {code, "the service answered with a status of its own",
            "look at the output of voxtreld for the reason"};
}

std::string errorLine(int code, const std::string& detail) {
    return compose(code, detail, meaningOf(code).remedy);
}

void printError(const std::string& what) {
    printError(what.c_str());
}

void printError(const char* what) noexcept {
    constexpr std::string_view kName = "voxtrelctl: ";
    iovec parts[] = {partOf(kName), partOf(what), partOf("\n")};
    while (writev(STDERR_FILENO, parts, 3) < 0 && errno == EINTR) {
    }
}

Failure::Failure(int code, const std::string& detail)
    : std::runtime_error(errorLine(code, detail)), mCode(code) {}

Failure::Failure(int code, const std::string& detail, const std::string& remedy)
    : std::runtime_error(compose(code, detail, remedy)), mCode(code) {}

Unanswered::Unanswered(const std::string& unknown, Why why)
    : std::runtime_error(std::string("0 sent, not answered: ") +
                         (why == Why::NoEvent
                              ? "the service sends no event about it"
                              : "the service takes a pause of 49 days instead of refusing it") +
                         ", so it is not known " + unknown +
                         ": see its own log; docs/writing-a-service.md says what it must send") {}

void check(int status, const std::string& detail) {
    if (status != 0) {
        throw Failure(status, detail);
    }
}

void check(const voxtrel::Result<void>& result) {
    check(static_cast<int>(result.status()), result.message());
}

}  // namespace voxtrelctl
