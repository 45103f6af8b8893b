// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BENCH_PLATFORM_MORTAL_H
#define VOXTREL_BENCH_PLATFORM_MORTAL_H

#include <sys/types.h>

#include <string>

namespace bench {

/// A process of the program `mortal`, ready to be killed.
class Mortal {
public:
    /// With a name it is a service of that name, else it only waits.
    explicit Mortal(const std::string& program, const std::string& service = {});
    ~Mortal();
    Mortal(const Mortal&) = delete;
    Mortal& operator=(const Mortal&) = delete;

    void kill() const;
    /// Sleeps until the kernel has closed the process's end of a socket.
    void waitForEndOfFile() const;

private:
    pid_t mPid = -1;
    int mSocket = -1;
};

}  // namespace bench

#endif
