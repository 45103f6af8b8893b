// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BENCH_GATE_GATESERVICE_H
#define VOXTREL_BENCH_GATE_GATESERVICE_H

#include "bench/platform/QuietService.h"

namespace bench {

/// A speech service that also takes calls of no meaning, marks its counts when it is told to, and
/// sends as many events as it is told to.
class GateService : public QuietService {
public:
    enum Code : uint32_t {
        kEcho = 0x1000,  ///< answers with the request's data
        kNote,           ///< takes the data, one-way
        kMark,           ///< int32: the number
        kEmit,           ///< int32: how many events go to the callback that was registered last
    };

    int registerCallback(unsigned pid, const android::sp<TTS::ICallback>& cb) override;

protected:
    android::status_t onTransact(uint32_t code, const android::Parcel& data, android::Parcel* reply,
                                 uint32_t flags) override;

private:
    void emit(int32_t count);

    std::mutex mLock;
    android::sp<TTS::ICallback> mLast;
};

}  // namespace bench

#endif
