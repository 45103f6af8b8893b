// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_WAVSINK_H
#define VOXTREL_SERVICE_WAVSINK_H

#include <sndfile.h>

#include <string>

#include "service/Sink.h"

namespace voxtreld {

/// One mono WAV file of 16-bit samples being written. Closes itself.
class WavFile {
public:
    WavFile() = default;
    ~WavFile() { close(); }
    WavFile(const WavFile&) = delete;
    WavFile& operator=(const WavFile&) = delete;

    /// Makes the file, or empties it. @return false, with `error` filled, if that fails.
    bool create(const std::string& path, unsigned rate, std::string& error);
    bool write(const int16_t* samples, size_t count);

    /// Makes the header describe all that has been written, so that a reader who opens the file
    /// now, or after this process was killed, finds it whole.
    bool updateHeader();
    void close();

private:
    SNDFILE* mFile = nullptr;
};

/// All utterances one after the other in one file, which is emptied first. Valid whenever an
/// utterance has ended.
class WavSink : public Sink {
public:
    explicit WavSink(std::string path) : mPath(std::move(path)) {}

    bool open(unsigned rate, std::string& error) override;
    bool begin(uint32_t /*pid*/, uint32_t /*id*/) override { return true; }
    bool write(const int16_t* samples, size_t count, const Cancel& cancel) override;
    bool end(const Cancel& cancel) override;

private:
    std::string mPath;
    WavFile mFile;
};

/// A file an utterance, "000001-PID-ID.wav" and so on, in a folder that is made if it is missing.
/// A number that the folder already has is never used again.
class WavFolderSink : public Sink {
public:
    explicit WavFolderSink(std::string folder) : mFolder(std::move(folder)) {}

    bool open(unsigned rate, std::string& error) override;
    bool begin(uint32_t pid, uint32_t id) override;
    bool write(const int16_t* samples, size_t count, const Cancel& cancel) override;
    bool end(const Cancel& cancel) override;

private:
    std::string mFolder;
    WavFile mFile;
    unsigned mRate = 0;
    unsigned mLastNumber = 0;
};

}  // namespace voxtreld

#endif
