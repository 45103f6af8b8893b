// SPDX-License-Identifier: Apache-2.0
#include "tests/speech_dispatcher/Desktop.h"

#include <sys/socket.h>

#include <cstdlib>
#include <filesystem>

#include "tests/support/Eventually.h"
#include "tests/support/Listening.h"
#include "tests/support/TempFolder.h"

namespace voxtrel_test {
Desktop::Desktop(const Device::Words& options, unsigned timeout, bool asInstalled) {
    device.startService(options);
    for (const char* name : {"HOME", "XDG_RUNTIME_DIR", "XDG_CACHE_HOME", "XDG_CONFIG_HOME"}) {
        setenv(name, device.path("home").c_str(), 1);
    }
    writeConfig(timeout, asInstalled);
    const std::string socket = socketPath();
    setenv("SPEECHD_ADDRESS", ("unix_socket:" + socket).c_str(), 1);
    mServer = std::make_unique<ChildProcess>(
        ChildProcess::Words{VOXTREL_DESKTOP_SERVER, "-s", "-S", socket, "-C", device.path("conf"),
                            "-P", device.path("pid"), "-L", device.path("log"), "-t", "0", "-m",
                            device.path("modules")},
        "");
    awaitListener(socket, SOCK_STREAM, "the server");
}

void Desktop::writeConfig(unsigned timeout, bool asInstalled) {
    namespace fs = std::filesystem;
    fs::create_directories(device.path("home"));
    fs::create_directories(device.path("log"));
    fs::create_directories(device.path("conf/modules"));
    fs::create_directories(device.path("modules"));
    fs::create_symlink(VOXTREL_DESKTOP_MODULE, device.path("modules/sd_voxtrel"));
    const std::string plain =
        "LogLevel 3\nDefaultVolume 0\nAddModule \"voxtrel\" \"sd_voxtrel\" \"voxtrel.conf\"\n";
    writeFile(device.path("conf/speechd.conf"),
              (asInstalled ? readFile("/etc/speech-dispatcher/speechd.conf") : plain) +
                  "DefaultModule voxtrel\n");
    writeFile(
        device.path("conf/modules/voxtrel.conf"),
        readFile(VOXTREL_DESKTOP_CONFIG) + "WaitForService " + std::to_string(timeout) + "\n");
}

std::unique_ptr<ChildProcess> Desktop::start(const ChildProcess::Words& arguments) {
    ChildProcess::Words words = {VOXTREL_DESKTOP_SAY};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return std::make_unique<ChildProcess>(words, "");
}

Outcome Desktop::say(const ChildProcess::Words& arguments) {
    return start(arguments)->finish();
}

bool Desktop::awaitSound(double seconds) {
    constexpr double kBytesASecond = 2 * 22050;
    return eventually([&] {
        std::error_code none;
        const auto size = std::filesystem::file_size(device.wavPath(), none);
        return !none && static_cast<double>(size) > seconds * kBytesASecond;
    });
}

}  // namespace voxtrel_test
