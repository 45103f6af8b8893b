// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_SETTINGSJOURNAL_H
#define VOXTREL_SERVICE_SETTINGSJOURNAL_H

#include <cstdint>
#include <optional>
#include <string>

#include "profile/TtsSetting.h"

namespace voxtreld {

/// The newest settings in a file that is written at once, while the profile waits for the disks.
///
/// The file has two slots of 512 bytes; a record is one complete state and goes, by one system
/// call, into the slot that does not hold the newest one. So it never grows, and whenever the
/// process is killed one slot is whole. A record ends with a checksum; torn, foreign and damaged
/// records are ignored.
///
///     revision=7
///     lang=en_US
///     speed=300
///     ...
///     check=8b1f0c6ae3d45f02
///
/// Nothing waits for the disk: a record outlives the process, and not always a loss of power.
///
/// Called on: any thread, one at a time. Locks: none.
class SettingsJournal {
public:
    explicit SettingsJournal(std::string path) : mPath(std::move(path)) {}
    ~SettingsJournal();
    SettingsJournal(const SettingsJournal&) = delete;
    SettingsJournal& operator=(const SettingsJournal&) = delete;

    /// @return the newest record, if there is one. Later records are newer than all that are there.
    std::optional<TTS::TtsSetting> read();

    /// @return false, with the earlier record in place and `error` saying why, if it failed.
    bool write(const TTS::TtsSetting& settings, std::string& error);

    /// Forgets every record. @return false with `error` set if they are still there.
    bool clear(std::string& error);

private:
    bool open(int flags);
    bool isOpen();
    void close();

    const std::string mPath;
    int mFile = -1;
    uint64_t mRevision = 0;  ///< of the next record
};

}  // namespace voxtreld

#endif
