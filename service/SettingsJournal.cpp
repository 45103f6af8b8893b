// SPDX-License-Identifier: Apache-2.0
#include "service/SettingsJournal.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <system_error>

#include "service/SettingsText.h"

namespace voxtreld {
namespace {

constexpr size_t kSlotSize = 512;
constexpr size_t kSlots = 2;
constexpr std::string_view kRevision = "revision=";

using Slot = std::array<char, kSlotSize>;

struct Record {
    uint64_t revision;
    TTS::TtsSetting settings;
};

std::string describe(int number) {
    return std::system_category().message(number);
}

/// FNV-1a: detects damage, not tampering.
uint64_t checksum(std::string_view text) {
    uint64_t sum = 0xcbf29ce484222325U;
    for (const char each : text) {
        sum = (sum ^ static_cast<unsigned char>(each)) * 0x100000001b3U;
    }
    return sum;
}

std::string checkLine(std::string_view text) {
    char line[32];
    std::snprintf(line, sizeof line, "check=%016" PRIx64 "\n", checksum(text));
    return line;
}

off_t placeOf(uint64_t revision) {
    return static_cast<off_t>(revision % kSlots * kSlotSize);
}

std::optional<Record> recordIn(const Slot& slot, size_t size) {
    const std::string_view bytes(slot.data(), size);
    const std::string_view text = bytes.substr(0, bytes.find('\0'));
    const size_t end = text.rfind("check=");
    if (end == std::string_view::npos || text.substr(end) != checkLine(text.substr(0, end)) ||
        text.substr(0, kRevision.size()) != kRevision) {
        return std::nullopt;
    }
    const std::string body(text.substr(0, end));
    return Record{std::strtoull(body.c_str() + kRevision.size(), nullptr, 10), readSettings(body)};
}

}  // namespace

SettingsJournal::~SettingsJournal() {
    close();
}

void SettingsJournal::close() {
    if (mFile >= 0) {
        ::close(mFile);
        mFile = -1;
    }
}

/// Neither blocks on a FIFO nor follows a symbolic link.
bool SettingsJournal::open(int flags) {
    close();
    const int file = ::open(mPath.c_str(), flags | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC, 0644);
    struct stat status {};
    if (file >= 0 && (fstat(file, &status) != 0 || !S_ISREG(status.st_mode))) {
        ::close(file);
        errno = EINVAL;
        return false;
    }
    mFile = file;
    return file >= 0;
}

/// Also detects that the file was removed: what is written to it then is lost.
bool SettingsJournal::isOpen() {
    struct stat status {};
    return mFile >= 0 && fstat(mFile, &status) == 0 && status.st_nlink > 0;
}

std::optional<TTS::TtsSetting> SettingsJournal::read() {
    const bool isWritable = open(O_RDWR);
    if (!isWritable && !open(O_RDONLY)) {
        return std::nullopt;
    }
    std::optional<Record> newest;
    for (size_t i = 0; i < kSlots; ++i) {
        Slot slot = {};
        const ssize_t size = pread(mFile, slot.data(), slot.size(), placeOf(i));
        const auto record = recordIn(slot, size > 0 ? static_cast<size_t>(size) : 0);
        if (record && placeOf(record->revision) == placeOf(i) &&
            (!newest || record->revision > newest->revision)) {
            newest = record;
        }
    }
    if (!isWritable) {
        close();
    }
    if (!newest) {
        return std::nullopt;
    }
    mRevision = newest->revision + 1;
    return newest->settings;
}

bool SettingsJournal::write(const TTS::TtsSetting& settings, std::string& error) {
    if (!isOpen() && !open(O_RDWR | O_CREAT)) {
        error = describe(errno);
        return false;
    }
    std::string text =
        std::string(kRevision) + std::to_string(mRevision) + "\n" + writeSettings(settings);
    text += checkLine(text);
    if (text.size() > kSlotSize) {
        error = describe(EFBIG);
        return false;
    }
    text.resize(kSlotSize);
    const ssize_t written = pwrite(mFile, text.data(), text.size(), placeOf(mRevision));
    if (written != static_cast<ssize_t>(text.size())) {
        error = describe(written < 0 ? errno : ENOSPC);
        return false;
    }
    ++mRevision;
    return true;
}

bool SettingsJournal::clear(std::string& error) {
    if (mFile >= 0 && ftruncate(mFile, 0) == 0) {
        return true;
    }
    close();
    if (unlink(mPath.c_str()) == 0) {
        return true;
    }
    error = describe(errno);
    struct stat status {};
    return lstat(mPath.c_str(), &status) != 0 || !S_ISREG(status.st_mode);
}

}  // namespace voxtreld
