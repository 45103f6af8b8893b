// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BRIDGES_SPEECH_DISPATCHER_LOG_H
#define VOXTREL_BRIDGES_SPEECH_DISPATCHER_LOG_H

#include <fstream>
#include <string>

namespace sd_voxtrel {

/// Lines on standard error, which the server keeps in its log folder, and in a file for debugging.
class Log {
public:
    static constexpr int kTrouble =
        0;  ///< what a user must be able to find; the server's usual level
    static constexpr int kTrace = 5;  ///< each line that is read or written

    /// Lines above that level are left out on standard error.
    void setLevel(int level) { mLevel = level; }

    /// All lines go into that file as well; empty: none. @return false: it cannot be opened.
    bool open(const std::string& path);

    void write(int level, const std::string& line);

private:
    int mLevel = kTrouble;
    std::ofstream mFile;
};

}  // namespace sd_voxtrel

#endif
