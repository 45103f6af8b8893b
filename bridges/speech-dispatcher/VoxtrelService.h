// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_BRIDGES_SPEECH_DISPATCHER_VOXTRELSERVICE_H
#define VOXTREL_BRIDGES_SPEECH_DISPATCHER_VOXTRELSERVICE_H

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "bridges/speech-dispatcher/Commands.h"
#include "bridges/speech-dispatcher/Prosody.h"
#include "bridges/speech-dispatcher/Service.h"
#include "voxtrel/voxtrel.h"

namespace sd_voxtrel {

/// The service, through the library.
class VoxtrelService : public Service {
public:
    /// Throws std::runtime_error where there is no memory, thread or descriptor for a client.
    VoxtrelService();

    /// Readable while there are events.
    int fd() const { return mFd; }

    /// Takes the next event; never waits. @return false if there is none.
    bool next(ServiceEvent& event);

    bool awaitConnected(std::chrono::milliseconds timeout);
    std::vector<ListedVoice> voices(std::chrono::milliseconds timeout);

    /// Changes it for everybody. @return false: the service did not do it in time.
    bool setVerbosity(int verbosity);

    bool isConnected() override;
    bool answers() override;
    unsigned long say(const std::string& text, const Style& style) override;
    void stop() override;

private:
    using Options = std::unique_ptr<vx_options, vx_status (*)(vx_options*)>;

    bool take(const vx_event& event, ServiceEvent& out);
    Options optionsOf(const Style& style);
    void setNumbers(vx_options& options, const Style& style);
    void loadScales();
    void loadRanges();
    void loadOwnValues();

    std::unique_ptr<vx_client, vx_status (*)(vx_client*)> mClient;
    int mFd = -1;
    bool mHasRanges = false;
    bool mHasOwnValues = false;
    std::optional<Scale> mSpeed;  ///< not set: the service cannot do it
    std::optional<Scale> mPitch;
    std::optional<Scale> mVolume;
};

}  // namespace sd_voxtrel

#endif
