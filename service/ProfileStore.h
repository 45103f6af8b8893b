// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_PROFILESTORE_H
#define VOXTREL_SERVICE_PROFILESTORE_H

#include <condition_variable>
#include <optional>
#include <string>
#include <thread>

#include "profile/TtsSetting.h"
#include "service/Locking.h"

namespace voxtreld {

/// The service's profile file. Writing it waits for the disks, so that is done on a thread of its
/// own; changes that come faster than the disks are written once, with the last values.
///
/// A new state is written beside the file ("FILE.new") and takes its place when it is complete, and
/// a complete one that a killed service left behind is used at the next start. So the file is whole
/// at any moment, and a change outlives the process from a moment after `save`.
///
/// Called on: any thread. Locks: its own.
class ProfileStore {
public:
    explicit ProfileStore(std::string path);
    /// Writes what is still to be written.
    ~ProfileStore();
    ProfileStore(const ProfileStore&) = delete;
    ProfileStore& operator=(const ProfileStore&) = delete;

    /// Reads the profile; a missing file gives the values of a fresh one. Called once, at first.
    TTS::TtsSetting load() const;

    /// Has the profile written soon; returns at once.
    void save(const TTS::TtsSetting& profile);

    /// Returns when everything saved before the call is written.
    void flush();

private:
    void run();
    bool take(std::optional<TTS::TtsSetting>& profile);
    void write(const TTS::TtsSetting& profile) const;

    const std::string mPath;
    const std::string mNewPath;
    Mutex mMutex;
    std::condition_variable mSaved;
    std::condition_variable mWritten;
    std::optional<TTS::TtsSetting> mPending VOXTRELD_GUARDED_BY(mMutex);
    bool mWriting VOXTRELD_GUARDED_BY(mMutex) = false;
    bool mClosed VOXTRELD_GUARDED_BY(mMutex) = false;
    std::thread mThread;
};

}  // namespace voxtreld

#endif
