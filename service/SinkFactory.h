// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_SINKFACTORY_H
#define VOXTREL_SERVICE_SINKFACTORY_H

#include <memory>
#include <string>

#include "service/Sink.h"

namespace voxtreld {

/// Makes the sink that a command line names: "wav:FILE", "wavdir:FOLDER", "alsa", "alsa:DEVICE" or
/// "none".
///
/// @param realTime a sink that is faster than sound takes as long as a loudspeaker would.
/// @return null, with `error` filled, for any other text.
std::unique_ptr<Sink> makeSink(const std::string& name, bool realTime, std::string& error);

}  // namespace voxtreld

#endif
