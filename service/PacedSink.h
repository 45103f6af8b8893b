// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_PACEDSINK_H
#define VOXTREL_SERVICE_PACEDSINK_H

#include <chrono>
#include <memory>
#include <string>

#include "service/Sink.h"

namespace voxtreld {

/// Slows another sink down to the speed of sound, so that events come when a listener at a
/// loudspeaker would hear the words: what it takes is written at once, and what comes next waits
/// until that would have been heard.
class PacedSink : public Sink {
public:
    explicit PacedSink(std::unique_ptr<Sink> inner) : mInner(std::move(inner)) {}

    bool open(unsigned rate, std::string& error) override;
    bool begin(uint32_t pid, uint32_t id) override;
    bool write(const int16_t* samples, size_t count, const Cancel& cancel) override;
    bool end(const Cancel& cancel) override;

private:
    std::unique_ptr<Sink> mInner;
    unsigned mRate = 1;
    std::chrono::steady_clock::time_point mHeardAt;  ///< when the last sample taken will be over
};

}  // namespace voxtreld

#endif
