// SPDX-License-Identifier: Apache-2.0
#include "tests/voxtrelctl/Device.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace voxtrel_test {

Device::Device(const Words& managerOptions) : mMachine(managerOptions) {
    unsetenv("VOXTREL_LANGUAGE_WITH_VOICES");
}

void Device::startService(const Words& options) {
    Words words = options;
    if (std::find(options.begin(), options.end(), "--sink") == options.end()) {
        words.insert(words.end(), {"--sink", "wav:" + wavPath()});
    }
    mMachine.startService(words);
    // A client connects when the service is ready, and not before. A refused one
    // has waited too.
    const Outcome ready = ctl({"languages"});
    if (ready.status != 0 && ready.err.find("-10") == std::string::npos) {
        service().kill(SIGTERM);
        throw std::runtime_error(ready.err + service().finish().err);
    }
}

void Device::stopService() {
    service().kill(SIGTERM);
    EXPECT_EQ(service().finish().status, 0);
}

void Device::killService() {
    service().kill(SIGKILL);
    EXPECT_EQ(service().finish().status, 128 + SIGKILL);
}

void Device::killServiceManager() {
    mMachine.manager().kill(SIGKILL);
    EXPECT_EQ(mMachine.manager().finish().status, 128 + SIGKILL);
}

Outcome Device::ctl(const Words& arguments, const std::string& input) {
    Words words = {control()};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return ChildProcess(words, input).finish();
}

std::unique_ptr<ChildProcess> Device::start(const Words& arguments) {
    Words words = {control()};
    words.insert(words.end(), arguments.begin(), arguments.end());
    return std::make_unique<ChildProcess>(words, "");
}

std::string Device::control() {
    return VOXTREL_CONTROL_PROGRAM;
}

std::string lastLine(const std::string& text) {
    const std::size_t end = text.size() - (text.empty() ? 0 : 1);  // not the one that it ends with
    const std::size_t before = text.substr(0, end).rfind('\n');
    return before == std::string::npos ? text : text.substr(before + 1);
}

std::string settingOf(Device& device, const std::string& name) {
    const Outcome got = device.ctl({"get", "--json", name});
    EXPECT_EQ(got.status, 0) << got.err;
    const nlohmann::json value = nlohmann::json::parse(got.out)[name]["value"];
    return value.is_string() ? value.get<std::string>() : value.dump();
}

}  // namespace voxtrel_test
