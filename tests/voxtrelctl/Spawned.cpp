// SPDX-License-Identifier: Apache-2.0
#include "tests/voxtrelctl/Spawned.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <sstream>

#include "tests/support/Eventually.h"
#include "tests/voxtrelctl/Device.h"

namespace voxtrel_test {
namespace {

namespace fs = std::filesystem;

std::string folderOf(const char* program) {
    return fs::path(program).parent_path().string();
}

/// Empty for a process that has gone meanwhile, or whose file is not ours to read.
/// Not by a stream: it throws where a process goes between opening and reading.
std::string contentOrNothing(const fs::path& path) {
    const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
    std::string content;
    char piece[4096];
    for (ssize_t size = 0; file >= 0 && (size = read(file, piece, sizeof(piece))) > 0;) {
        content.append(piece, static_cast<size_t>(size));
    }
    close(file);
    return content;
}

/// Of the program that runs as the process of this folder in /proc.
std::string nameOf(const fs::path& process) {
    const std::string command = contentOrNothing(process / "cmdline");
    return fs::path(command.substr(0, command.find('\0'))).filename();
}

bool isNumber(const std::string& text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

}  // namespace

EmptyHome::EmptyHome() {
    const std::string programs = folderOf(VOXTREL_SERVICE_PROGRAM) + ":" +
                                 folderOf(VOXTREL_SERVICEMANAGER_PROGRAM) + ":" +
                                 folderOf(VOXTREL_CONTROL_PROGRAM);
    const char* path = std::getenv("PATH");
    setenv("PATH", (programs + ":" + (path != nullptr ? path : "")).c_str(), 1);
    setenv("HOME", mFolder.path("home").c_str(), 1);
    setenv("XDG_STATE_HOME", mFolder.path("state").c_str(), 1);
    setenv("VOXTREL_BINDER_SOCKET", mFolder.path("binder").c_str(), 1);
    unsetenv("VOXTREL_LOG_LEVEL");
    fs::create_directory(mFolder.path("home"));
    writeFile(mFolder.path("asound.conf"), "pcm.!default { type null }\n");
    setenv("ALSA_CONFIG_PATH", mFolder.path("asound.conf").c_str(), 1);
}

EmptyHome::~EmptyHome() {
    for (const char* program : {"voxtreld", "voxtrel-servicemanager"}) {
        for (const pid_t pid : running(program)) {
            kill(pid, SIGKILL);
        }
        (void)eventually([&] { return running(program).empty(); });
    }
}

std::unique_ptr<ChildProcess> EmptyHome::spawn(const ChildProcess::Words& words) {
    ChildProcess::Words all = {Device::control(), "--spawn"};
    all.insert(all.end(), words.begin(), words.end());
    return std::make_unique<ChildProcess>(all, "");
}

std::vector<pid_t> EmptyHome::running(const std::string& program) const {
    std::vector<pid_t> found;
    std::error_code gone;  // a process may go while the folder is read
    for (fs::directory_iterator entry("/proc", gone), end; entry != end; entry.increment(gone)) {
        const fs::path& process = entry->path();
        if (isNumber(process.filename()) && nameOf(process) == program &&
            contentOrNothing(process / "environ").find(mFolder.path("binder")) !=
                std::string::npos) {
            found.push_back(std::stoi(process.filename()));
        }
    }
    return found;
}

std::vector<std::string> commandLineOf(pid_t pid) {
    std::istringstream words(contentOrNothing("/proc/" + std::to_string(pid) + "/cmdline"));
    std::vector<std::string> found;
    for (std::string word; std::getline(words, word, '\0');) {
        found.push_back(word);
    }
    return found;
}

}  // namespace voxtrel_test
