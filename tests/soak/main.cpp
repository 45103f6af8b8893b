// SPDX-License-Identifier: Apache-2.0
// usage: voxtrel_soak SECONDS [SEED]. Exit status 1 when something was found.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <random>

#include "tests/soak/ClientLife.h"
#include "tests/soak/Report.h"
#include "tests/soak/Soak.h"
#include "tests/soak/StrangerLife.h"
#include "tests/soak/ToolLife.h"
#include "tests/support/Roles.h"

namespace {

using soak::ClientLife;

unsigned seedIn(const voxtrel_test::Arguments& arguments) {
    return static_cast<unsigned>(std::strtoul(arguments.at(1).c_str(), nullptr, 10));
}

int live(const voxtrel_test::Arguments& arguments, const soak::NewSpeaker& newSpeaker) {
    return ClientLife(arguments.at(0), seedIn(arguments), newSpeaker).live();
}

const voxtrel_test::Role kCpp("cpp", [](const voxtrel_test::Arguments& arguments) {
    return live(arguments, soak::speakerInCpp);
});
const voxtrel_test::Role kC("c", [](const voxtrel_test::Arguments& arguments) {
    return live(arguments, soak::speakerInC);
});

const voxtrel_test::Role kTools("tools", [](const voxtrel_test::Arguments& arguments) {
    return soak::ToolLife(arguments.at(0), seedIn(arguments), arguments.at(2)).live();
});
const voxtrel_test::Role kStranger("stranger", [](const voxtrel_test::Arguments& arguments) {
    return soak::StrangerLife(arguments.at(0), seedIn(arguments)).live();
});

std::string newFolder() {
    std::string folder = (std::filesystem::temp_directory_path() / "voxtrel-soak-XXXXXX").string();
    if (mkdtemp(folder.data()) == nullptr) {
        std::cerr << "cannot make a folder like " << folder << "\n";
        std::exit(2);
    }
    return folder;
}

void setUp(const std::string& folder, unsigned seed) {
    setenv("VOXTREL_BINDER_SOCKET", (folder + "/binder").c_str(), 1);
    setenv("VOXTREL_BINDER_SEED", std::to_string(seed).c_str(), 1);
    const char* const manners = std::getenv("VOXTREL_BINDER_MANNERS");
    std::cout << "seed " << seed << ", "
              << (manners != nullptr && *manners != '\0' ? manners : "orderly") << " manners, "
              << folder << std::endl;
    if (std::freopen((folder + "/log").c_str(), "w", stderr) == nullptr) {
        std::exit(2);
    }
}

int soakMain(int argc, char** argv) {
    const long seconds = argc > 1 ? std::strtol(argv[1], nullptr, 10) : 0;
    if (seconds <= 0) {
        std::cerr << "usage: voxtrel_soak SECONDS [SEED]\n";
        return 2;
    }
    const unsigned seed = argc > 2 ? static_cast<unsigned>(std::strtoul(argv[2], nullptr, 10))
                                   : std::random_device()();
    const std::string folder = newFolder();
    setUp(folder, seed);
    const bool isGood =
        soak::report(soak::Soak(folder, std::chrono::seconds(seconds), seed).run(), std::cout);
    if (isGood) {
        std::filesystem::remove_all(folder);
    } else {
        std::cout << "ledgers and log are kept in " << folder << std::endl;
    }
    return isGood ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    return voxtrel_test::runRoleOr(argc, argv, soakMain);
}
