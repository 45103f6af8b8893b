// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_PROFILESTORE_H
#define VOXTREL_SERVICE_PROFILESTORE_H

#include <condition_variable>
#include <optional>
#include <string>
#include <thread>

#include "profile/TtsSetting.h"
#include "service/Locking.h"
#include "service/Log.h"
#include "service/SettingsJournal.h"

namespace voxtreld {

/// The service's profile file. Writing it waits for the disks, so that is done on a thread of its
/// own; changes that come faster than the disks are written once, with the last values.
///
/// A new state is written beside the file ("FILE.new") and takes its place when it is complete, and
/// a complete one that a killed service left behind is used at the next start. So the file is whole
/// at any moment. What it does not have yet is in a journal ("FILE.journal"), which is written
/// before `save` returns and counts more than the file at the next start. It is emptied once the
/// file has its newest record, never before.
///
/// Called on: any thread. Locks: its own.
class ProfileStore {
public:
    explicit ProfileStore(std::string path, Log log = nullptr);
    /// Writes pending changes.
    ~ProfileStore();
    ProfileStore(const ProfileStore&) = delete;
    ProfileStore& operator=(const ProfileStore&) = delete;

    /// Reads the profile; a missing file gives the values of a fresh one. Called once, at first.
    TTS::TtsSetting load();

    /// Keeps the profile: from the return on it outlives the process. Does not wait for a disk. If
    /// the journal cannot be written, that is logged once, until it can be again.
    void save(const TTS::TtsSetting& profile);

    /// Returns when everything saved before the call is written.
    void flush();

private:
    void run();
    bool take(std::optional<TTS::TtsSetting>& profile);
    bool write(const TTS::TtsSetting& profile) const;
    void settle();
    void report(const std::string& line) const;

    const std::string mPath;
    const std::string mNewPath;
    const std::string mJournalPath;
    const Log mLog;
    Mutex mMutex;
    std::condition_variable mSaved;
    std::condition_variable mWritten;
    SettingsJournal mJournal VOXTRELD_GUARDED_BY(mMutex);
    bool mJournalFails VOXTRELD_GUARDED_BY(mMutex) = false;
    bool mClearFailed VOXTRELD_GUARDED_BY(mMutex) = false;
    std::optional<TTS::TtsSetting> mPending VOXTRELD_GUARDED_BY(mMutex);
    bool mWriting VOXTRELD_GUARDED_BY(mMutex) = false;
    bool mClosed VOXTRELD_GUARDED_BY(mMutex) = false;
    std::thread mThread;
};

}  // namespace voxtreld

#endif
