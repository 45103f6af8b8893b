// SPDX-License-Identifier: Apache-2.0
#include "tests/soak/Ledger.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>

namespace soak {
namespace {

std::string words(unsigned client, uint64_t number) {
    return " " + std::to_string(client) + " " + std::to_string(number);
}

std::string words(const Ending& ending) {
    return " " + std::to_string(ending.kind) + " " + std::to_string(ending.status);
}

}  // namespace

Ledger::Ledger(const std::string& path)
    : mFile(open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600)) {}

Ledger::~Ledger() {
    close(mFile);
}

void Ledger::said(unsigned client, uint64_t number) {
    write("said" + words(client, number));
}

void Ledger::ended(unsigned client, uint64_t number, const Ending& ending) {
    write("ended" + words(client, number) + words(ending));
}

void Ledger::endedWithItsClient(unsigned client, uint64_t number, const Ending& ending) {
    write("closed" + words(client, number) + words(ending));
}

void Ledger::differs(unsigned client, uint64_t number) {
    write("differs" + words(client, number));
}

void Ledger::called(const char* name, long beyondMs) {
    write(std::string("called ") + name + " " + std::to_string(beyondMs));
}

void Ledger::exited(const char* name, int status) {
    write(std::string("exited ") + name + " " + std::to_string(status));
}

void Ledger::interrupted(const char* name) {
    write(std::string("interrupted ") + name);
}

void Ledger::left() {
    write("left");
}

void Ledger::write(const std::string& line) const {
    const std::string text = line + "\n";
    if (::write(mFile, text.data(), text.size()) != static_cast<ssize_t>(text.size())) {
        std::abort();  // a ledger with gaps would prove nothing
    }
}

}  // namespace soak
