// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BENCH_DESKTOP_SPOKENTEXT_H
#define VOXTREL_BENCH_DESKTOP_SPOKENTEXT_H

#include <memory>

namespace bench {

/// Microseconds that saying a short text takes its caller.
struct SayTimes {
    double toReturn = 0;
    double toEnd = 0;  ///< from the call until the caller knows that all has been spoken
};

/// A way for a program to have a text spoken.
class Speech {
public:
    virtual ~Speech() = default;

    /// Says a text, and waits for its end.
    virtual SayTimes say() = 0;
};

/// Through the interface for applications.
std::unique_ptr<Speech> throughVoxtrel();

/// Through speech-dispatcher and its client library.
std::unique_ptr<Speech> throughDesktop();

}  // namespace bench

#endif
