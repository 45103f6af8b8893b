// SPDX-License-Identifier: Apache-2.0
#include "service/Cancel.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <ctime>

namespace voxtreld {

using std::chrono::nanoseconds;
using std::chrono::steady_clock;

Cancel::Cancel() : mDescriptor(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

Cancel::~Cancel() {
    close(mDescriptor);
}

void Cancel::set() {
    mSet = true;
    (void)eventfd_write(mDescriptor, 1);  // cannot be full: every `set` is followed by a `clear`
}

void Cancel::clear() {
    if (mSet.exchange(false)) {
        eventfd_t ignored = 0;
        (void)eventfd_read(mDescriptor, &ignored);
    }
}

bool Cancel::sleepUntil(steady_clock::time_point moment) const {
    while (!mSet) {
        const nanoseconds left = moment - steady_clock::now();
        if (left <= nanoseconds::zero()) {
            return false;
        }
        constexpr int64_t kSecond = 1'000'000'000;
        const timespec time = {static_cast<time_t>(left.count() / kSecond),
                               static_cast<long>(left.count() % kSecond)};
        pollfd request = {mDescriptor, POLLIN, 0};
        (void)ppoll(&request, 1, &time, nullptr);  // the loop checks again, also after a signal
    }
    return true;
}

}  // namespace voxtreld
