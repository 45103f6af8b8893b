// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_ALSASINK_H
#define VOXTREL_SERVICE_ALSASINK_H

#include <alsa/asoundlib.h>

#include <string>

#include "service/Sink.h"

namespace voxtreld {

/// A sound card. Its buffer is kept short, so that a stop takes effect at once. A card that fails,
/// or is unplugged, is closed, and opened again for the next utterance.
class AlsaSink : public Sink {
public:
    /// @param device as ALSA names it: "default", "plughw:1,0", ...
    explicit AlsaSink(std::string device) : mDevice(std::move(device)) {}
    ~AlsaSink() override;
    AlsaSink(const AlsaSink&) = delete;
    AlsaSink& operator=(const AlsaSink&) = delete;

    bool open(unsigned rate, std::string& error) override;
    bool begin(uint32_t pid, uint32_t id) override;
    bool write(const int16_t* samples, size_t count, const Cancel& cancel) override;
    bool end(const Cancel& cancel) override;

private:
    /// Zero, or ALSA's error, after which it is closed.
    int openCard();
    void closeCard();
    bool waitForRoom(const Cancel& cancel);
    bool writeAll(const int16_t* samples, size_t count, const Cancel& cancel);

    std::string mDevice;
    unsigned mRate = 0;
    snd_pcm_t* mPcm = nullptr;
};

}  // namespace voxtreld

#endif
