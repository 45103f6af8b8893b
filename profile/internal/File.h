// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_PROFILE_INTERNAL_FILE_H
#define VOXTREL_PROFILE_INTERNAL_FILE_H

#include <sys/types.h>

#include <cstddef>
#include <string>

namespace TTS {

/// An open file, closed with this object. Bytes pass as they are: no stream stands between, whose
/// buffers and locales would be most of what a profile costs a device.
class File {
public:
    /// @param flags those of `open`; a file that is made gets every permission that the mask
    /// leaves,
    ///     it may have any size, and no program that this process starts gets the descriptor.
    File(const std::string& name, int flags);
    ~File();
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    bool isOpen() const { return mDescriptor >= 0; }

    /// @return how many bytes were read, at most `size`; 0 at the end; below 0, and errno, after an
    ///     error.
    ssize_t read(char* out, size_t size) const;

    /// @return false if not all of it could be written.
    bool write(const char* bytes, size_t size) const;

private:
    const int mDescriptor;
};

}  // namespace TTS

#endif
