// SPDX-License-Identifier: Apache-2.0
#include "service/ProfileStore.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <system_error>
#include <utility>

#include "service/SettingsText.h"

namespace voxtreld {
namespace {

/// Empty unless it is a regular file: opening a FIFO would block.
std::string contentOf(const std::string& path) {
    std::error_code ignored;
    if (!std::filesystem::is_regular_file(path, ignored)) {
        return {};
    }
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

/// A profile is written line by line and ends with an empty line, which no shorter one has.
bool isComplete(const std::string& path) {
    const std::string text = contentOf(path);
    return text.size() > 2 && text.compare(text.size() - 2, 2, "\n\n") == 0;
}

}  // namespace

ProfileStore::ProfileStore(std::string path, Log log)
    : mPath(std::move(path)),
      mNewPath(mPath + ".new"),
      mJournalPath(mPath + ".journal"),
      mLog(std::move(log)),
      mJournal(mJournalPath),
      mThread([this] { run(); }) {}

ProfileStore::~ProfileStore() {
    {
        const MutexLock lock(mMutex);
        mClosed = true;
    }
    mSaved.notify_one();
    mThread.join();
}

void ProfileStore::report(const std::string& line) const {
    if (mLog != nullptr) {
        mLog(LogLevel::Warning, line);
    }
}

TTS::TtsSetting ProfileStore::load() {
    if (isComplete(mNewPath)) {
        (void)std::rename(mNewPath.c_str(), mPath.c_str());  // the old file serves if it fails
    } else {
        (void)std::remove(mNewPath.c_str());  // usually absent
    }
    const std::string text = contentOf(mPath);  // before an upgrade writes it again
    TTS::TtsSetting profile("voxtrel");
    if (profile.isExistProfile(mPath.c_str())) {
        (void)profile.deserialize(mPath.c_str());  // reports itself what it cannot read
    }
    const MutexLock lock(mMutex);
    return mJournal.read().value_or(readSettings(text));
}

void ProfileStore::save(const TTS::TtsSetting& profile) {
    std::string error;
    bool isNews = false;
    {
        const MutexLock lock(mMutex);
        const bool fails = !mJournal.write(profile, error);
        isNews = fails && !mJournalFails;
        mJournalFails = fails;
        mPending = profile;
    }
    mSaved.notify_one();
    if (isNews) {
        report("settings may not survive when the service is killed: cannot write '" +
               mJournalPath + "': " + error + "; make room there, or name another --profile");
    }
}

void ProfileStore::flush() {
    MutexLock lock(mMutex);
    while (mWriting || mPending) {
        lock.wait(mWritten);
    }
}

bool ProfileStore::take(std::optional<TTS::TtsSetting>& profile) {
    MutexLock lock(mMutex);
    mWriting = false;
    mWritten.notify_all();
    while (!mPending && !mClosed) {
        lock.wait(mSaved);
    }
    profile = std::exchange(mPending, std::nullopt);
    mWriting = profile.has_value();
    return mWriting;
}

void ProfileStore::run() {
    std::optional<TTS::TtsSetting> profile;
    while (take(profile)) {
        if (write(*profile)) {
            settle();
        }
    }
}

bool ProfileStore::write(const TTS::TtsSetting& profile) const {
    // Checked before the rename: a full disk must not cost the settings that are there.
    return profile.serialize(mNewPath.c_str()) && isComplete(mNewPath) &&
           std::rename(mNewPath.c_str(), mPath.c_str()) == 0;
}

/// Empties the journal after its record was saved, unless it has a newer one by now.
void ProfileStore::settle() {
    std::string error;
    {
        const MutexLock lock(mMutex);
        if (mPending || mJournal.clear(error) || mClearFailed) {
            return;
        }
        mClearFailed = true;
    }
    report("old settings will come back at the next start: cannot empty '" + mJournalPath +
           "': " + error + "; remove it");
}

}  // namespace voxtreld
