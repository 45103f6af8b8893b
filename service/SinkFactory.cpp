// SPDX-License-Identifier: Apache-2.0
#include "service/SinkFactory.h"

#include "service/AlsaSink.h"
#include "service/NullSink.h"
#include "service/PacedSink.h"
#include "service/WavSink.h"

namespace voxtreld {
namespace {

/// True, with `rest` what follows, when the text begins with the prefix and more follows it.
bool takeAfter(const std::string& text, const std::string& prefix, std::string& rest) {
    if (text.rfind(prefix, 0) != 0 || text.size() == prefix.size()) {
        return false;
    }
    rest = text.substr(prefix.size());
    return true;
}

std::unique_ptr<Sink> makePlainSink(const std::string& name) {
    std::string rest;
    if (name == "none") {
        return std::make_unique<NullSink>();
    }
    if (name == "alsa") {
        return std::make_unique<AlsaSink>("default");
    }
    if (takeAfter(name, "alsa:", rest)) {
        return std::make_unique<AlsaSink>(rest);
    }
    if (takeAfter(name, "wavdir:", rest)) {
        return std::make_unique<WavFolderSink>(rest);
    }
    if (takeAfter(name, "wav:", rest)) {
        return std::make_unique<WavSink>(rest);
    }
    return nullptr;
}

}  // namespace

std::unique_ptr<Sink> makeSink(const std::string& name, bool realTime, std::string& error) {
    std::unique_ptr<Sink> sink = makePlainSink(name);
    if (sink == nullptr) {
        error =
            "unknown sink '" + name + "': use wav:FILE, wavdir:FOLDER, alsa, alsa:DEVICE or none";
        return nullptr;
    }
    if (realTime && name.rfind("alsa", 0) != 0) {
        return std::make_unique<PacedSink>(std::move(sink));
    }
    return sink;
}

}  // namespace voxtreld
