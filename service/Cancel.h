// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_SERVICE_CANCEL_H
#define VOXTREL_SERVICE_CANCEL_H

#include <atomic>
#include <chrono>

namespace voxtreld {

/// Interrupts an operation on sound, even while it sleeps.
///
/// Called on: any thread, but `set` and `clear` by one at a time. Locks: none.
class Cancel {
public:
    Cancel();
    ~Cancel();
    Cancel(const Cancel&) = delete;
    Cancel& operator=(const Cancel&) = delete;

    void set();
    void clear();
    explicit operator bool() const { return mSet; }

    /// Sleeps up to a moment. @return true, at once, when set; false when the moment has come.
    bool sleepUntil(std::chrono::steady_clock::time_point moment) const;

    /// Becomes readable when set, for use with poll().
    int descriptor() const { return mDescriptor; }

private:
    std::atomic<bool> mSet{false};
    const int mDescriptor;
};

}  // namespace voxtreld

#endif
