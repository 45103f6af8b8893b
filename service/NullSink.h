// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_NULLSINK_H
#define VOXTREL_SERVICE_NULLSINK_H

#include <string>

#include "service/Sink.h"

namespace voxtreld {

/// Takes sound as fast as it is made and forgets it.
class NullSink : public Sink {
public:
    bool open(unsigned /*rate*/, std::string& /*error*/) override { return true; }
    bool begin(uint32_t /*pid*/, uint32_t /*id*/) override { return true; }
    bool write(const int16_t* /*samples*/, size_t /*count*/, const Cancel& /*cancel*/) override {
        return true;
    }
    bool end(const Cancel& /*cancel*/) override { return true; }
};

}  // namespace voxtreld

#endif
