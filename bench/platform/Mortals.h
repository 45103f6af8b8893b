// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BENCH_PLATFORM_MORTALS_H
#define VOXTREL_BENCH_PLATFORM_MORTALS_H

#include <sys/types.h>

#include <string>
#include <vector>

namespace bench {

/// Processes that wait to be used and killed. Forked while the program is small and has not used
/// the runtime: what the kernel needs to tear down a large process is not measured with them.
class Mortals {
public:
    explicit Mortals(int count);
    ~Mortals();
    Mortals(const Mortals&) = delete;
    Mortals& operator=(const Mortals&) = delete;

    struct Process {
        pid_t pid;
        int socket;  ///< hangs up when the process has gone
    };
    /// The next process, as it is: it only waits.
    Process next();
    /// The next process, as a service "mortal" of the service manager at `path`.
    Process nextService(const std::string& path);

private:
    std::vector<Process> mAll;
    size_t mUsed = 0;
};

}  // namespace bench

#endif
