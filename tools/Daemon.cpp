// SPDX-License-Identifier: Apache-2.0
#include "tools/Daemon.h"

#include <fcntl.h>
#include <pwd.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "tools/Errors.h"

namespace voxtrelctl {
namespace {

namespace fs = std::filesystem;

/// A log that is longer is put aside before the next start; the one before it is dropped.
constexpr uintmax_t kLongestLog = uintmax_t(256) * 1024;

std::string environment(const char* name) {
    const char* value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): read only
    return value != nullptr ? value : "";
}

/// The folder of this program.
fs::path ownFolder() {
    std::error_code none;
    return fs::read_symlink("/proc/self/exe", none).parent_path();
}

/// The path of a program beside this one, or its name for one that is to be looked for in $PATH.
std::string findProgram(const std::string& name) {
    const fs::path path = ownFolder() / name;
    return access(path.c_str(), X_OK) == 0 ? path.string() : name;
}

fs::path stateFolder() {
    const std::string named = environment("XDG_STATE_HOME");
    if (!named.empty() && named[0] == '/') {
        return named;
    }
    std::string home = environment("HOME");
    if (home.empty() || home[0] != '/') {
        const passwd* user = getpwuid(geteuid());  // NOLINT(concurrency-mt-unsafe): main thread
        home = user != nullptr ? user->pw_dir : "/";
    }
    return fs::path(home) / ".local/state";
}

/// The folder of the log, for this user alone.
fs::path logFolder() {
    fs::path folder = stateFolder() / "voxtrel";
    std::error_code error;
    const bool made = fs::create_directories(folder, error);
    if (error) {
        throw Failure(TTS::STATUS_SERVICE_NOT_FOUND,
                      "cannot make " + folder.string() + " for the log: " + error.message(),
                      "set XDG_STATE_HOME to a folder that is yours to write");
    }
    if (made) {
        fs::permissions(folder, fs::perms::owner_all,
                        error);  // of no use to others, no harm either
    }
    return folder;
}

std::string prepareLog(const std::string& name) {
    std::string path = logFolder() / (name + ".log");
    std::error_code none;
    if (fs::file_size(path, none) > kLongestLog && !none) {
        fs::rename(path, path + ".old", none);
    }
    return path;
}

std::streamoff sizeOf(const std::string& path) {
    std::error_code none;
    const uintmax_t size = fs::file_size(path, none);
    return none ? 0 : static_cast<std::streamoff>(size);
}

/// What a new process gets in the place of what this one has.
class Surroundings {
public:
    explicit Surroundings(const std::string& log) {
        posix_spawn_file_actions_init(&mFiles);
        posix_spawn_file_actions_addopen(&mFiles, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_addopen(&mFiles, STDOUT_FILENO, log.c_str(),
                                         O_WRONLY | O_APPEND | O_CREAT, 0600);
        posix_spawn_file_actions_adddup2(&mFiles, STDOUT_FILENO, STDERR_FILENO);
        posix_spawn_file_actions_addclosefrom_np(&mFiles, STDERR_FILENO + 1);
        posix_spawnattr_init(&mAttributes);
        sigset_t none;
        sigemptyset(&none);
        posix_spawnattr_setsigmask(&mAttributes, &none);
        sigset_t all;
        sigfillset(&all);
        posix_spawnattr_setsigdefault(&mAttributes, &all);
        posix_spawnattr_setflags(
            &mAttributes, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~Surroundings() {
        posix_spawn_file_actions_destroy(&mFiles);
        posix_spawnattr_destroy(&mAttributes);
    }
    Surroundings(const Surroundings&) = delete;
    Surroundings& operator=(const Surroundings&) = delete;

    const posix_spawn_file_actions_t* files() const { return &mFiles; }
    const posix_spawnattr_t* attributes() const { return &mAttributes; }

private:
    posix_spawn_file_actions_t mFiles;
    posix_spawnattr_t mAttributes;
};

/// Prefers a line of the program's own: those that its libraries print may come later, out of a
/// buffer.
std::string lastLineOf(const std::string& path, std::streamoff begin, const std::string& name) {
    std::ifstream log(path);
    log.seekg(begin);
    const std::string begins = name + ": ";
    std::string last;
    std::string own;
    for (std::string line; std::getline(log, line);) {
        last = line.empty() ? last : line;
        own = line.find(begins) == 0 ? line : own;
    }
    return own.empty() ? last : own;
}

}  // namespace

Daemon::Daemon(const std::string& name, const std::vector<std::string>& options)
    : mName(name), mLogPath(prepareLog(name)), mLogBegin(sizeOf(mLogPath)) {
    std::vector<std::string> words = {findProgram(name)};
    words.insert(words.end(), options.begin(), options.end());
    std::vector<char*> arguments;
    arguments.reserve(words.size() + 1);
    for (std::string& word : words) {
        arguments.push_back(word.data());
    }
    arguments.push_back(nullptr);
    const Surroundings surroundings(mLogPath);
    const int error = posix_spawnp(&mPid, arguments[0], surroundings.files(),
                                   surroundings.attributes(), arguments.data(), environ);
    if (error == ENOENT) {
        throw Failure(TTS::STATUS_SERVICE_NOT_FOUND,
                      name + " is neither in " + ownFolder().string() + " nor in PATH",
                      "install it, or start it by hand");
    }
    if (error != 0) {
        throw Failure(TTS::STATUS_SERVICE_NOT_FOUND,
                      "cannot start " + words.front() + " with its log in " + mLogPath + ": " +
                          std::generic_category().message(error),
                      "start it by hand");
    }
}

bool Daemon::hasEnded() {
    int status = 0;
    if (!mStatus.has_value() && waitpid(mPid, &status, WNOHANG) == mPid) {
        mStatus = status;
    }
    return mStatus.has_value();
}

std::string Daemon::howItEnded() const {
    const std::string line = lastLineOf(mLogPath, mLogBegin, mName);
    if (!line.empty()) {
        return mName + " has ended: " + line;
    }
    const int status = mStatus.value_or(0);
    return mName + " has ended with " +
           (WIFSIGNALED(status) ? "signal " + std::to_string(WTERMSIG(status))
                                : "exit status " + std::to_string(WEXITSTATUS(status)));
}

}  // namespace voxtrelctl
