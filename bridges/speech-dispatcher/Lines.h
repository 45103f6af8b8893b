// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BRIDGES_SPEECH_DISPATCHER_LINES_H
#define VOXTREL_BRIDGES_SPEECH_DISPATCHER_LINES_H

#include <cstddef>
#include <string>
#include <string_view>

namespace sd_voxtrel {

/// Cuts what arrives in parts into lines.
class Lines {
public:
    /// What is beyond in a line is dropped; the first byte beyond is kept as a sign of that.
    static constexpr std::size_t kLongest = 1 << 20;

    void add(std::string_view bytes);

    /// Takes the next whole line, without its LF and a CR in front of that.
    /// @return false if there is none yet.
    bool next(std::string& line);

private:
    std::string mBytes;  ///< from `mBegin`: whole lines
    std::size_t mBegin = 0;
    std::string mUnfinished;  ///< the line that has no end yet
};

}  // namespace sd_voxtrel

#endif
