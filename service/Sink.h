// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_SINK_H
#define VOXTREL_SERVICE_SINK_H

#include <cstddef>
#include <cstdint>
#include <string>

#include "service/Cancel.h"

namespace voxtreld {

/// Where sound goes: mono samples of 16 bits. Called on: the speech thread only.
///
/// `begin`, any number of `write`, `end`, once for each utterance. An operation that returns false
/// has failed for this utterance; the next `begin` may try again.
class Sink {
public:
    virtual ~Sink() = default;

    /// Called once, before everything else. @param rate of all samples, in Hz.
    /// @return false, with `error` saying what is wrong and what to do.
    virtual bool open(unsigned rate, std::string& error) = 0;

    /// The utterance that the samples up to `end` belong to.
    virtual bool begin(uint32_t pid, uint32_t id) = 0;

    /// Returns when the samples are taken; within 10 ms once `cancel` is set.
    virtual bool write(const int16_t* samples, size_t count, const Cancel& cancel) = 0;

    /// Returns when all samples have been heard, or are safe in their file. With `cancel` set,
    /// pending samples are discarded at once.
    virtual bool end(const Cancel& cancel) = 0;
};

}  // namespace voxtreld

#endif
