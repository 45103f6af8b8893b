// SPDX-License-Identifier: Apache-2.0
#include "service/ProfileStore.h"

#include <cstdio>
#include <fstream>
#include <iterator>
#include <utility>

namespace voxtreld {
namespace {

/// A profile is written line by line and ends with an empty line, which no shorter one has.
bool isComplete(const std::string& path) {
    std::ifstream file(path);
    const std::string text((std::istreambuf_iterator<char>(file)),
                           std::istreambuf_iterator<char>());
    return text.size() > 2 && text.compare(text.size() - 2, 2, "\n\n") == 0;
}

}  // namespace

ProfileStore::ProfileStore(std::string path)
    : mPath(std::move(path)), mNewPath(mPath + ".new"), mThread([this] { run(); }) {}

ProfileStore::~ProfileStore() {
    {
        const MutexLock lock(mMutex);
        mClosed = true;
    }
    mSaved.notify_one();
    mThread.join();
}

TTS::TtsSetting ProfileStore::load() const {
    if (isComplete(mNewPath)) {
        (void)std::rename(mNewPath.c_str(), mPath.c_str());  // the old file serves if it fails
    } else {
        (void)std::remove(mNewPath.c_str());  // usually there is none
    }
    TTS::TtsSetting profile("voxtrel");
    if (profile.isExistProfile(mPath.c_str())) {
        (void)profile.deserialize(mPath.c_str());  // says itself what it cannot read
    }
    return profile;
}

void ProfileStore::save(const TTS::TtsSetting& profile) {
    {
        const MutexLock lock(mMutex);
        mPending = profile;
    }
    mSaved.notify_one();
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
        write(*profile);
    }
}

void ProfileStore::write(const TTS::TtsSetting& profile) const {
    // Checked before the rename: a full disk must not cost the settings that are there.
    if (profile.serialize(mNewPath.c_str()) && isComplete(mNewPath)) {
        (void)std::rename(mNewPath.c_str(), mPath.c_str());
    }
}

}  // namespace voxtreld
