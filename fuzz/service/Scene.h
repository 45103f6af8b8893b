// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_FUZZ_SERVICE_SCENE_H
#define VOXTREL_FUZZ_SERVICE_SCENE_H

#include <memory>
#include <string>

#include "fuzz/Input.h"
#include "fuzz/service/Clients.h"
#include "ipc/TransactionCodes.h"
#include "service/Engine.h"
#include "service/Sink.h"
#include "service/VoxtrelService.h"

namespace voxtrel_fuzz {

/// A service, its clients, and the requests that an input has for it, all on one thread: whenever
/// the speech thread calls out, to engine, sink or listener, the next requests are made. So the
/// same input always meets the service in the same state, and no request need be waited for.
class Scene : public voxtreld::Engine, public voxtreld::Sink, public voxtreld::Listener {
public:
    /// @param profile path of the service's settings, which are not there yet.
    Scene(const std::string& profile, Input& input);

    /// Makes all requests, speaks all that is accepted, and has all clients die.
    void run();

private:
    // Engine.
    bool load(std::string& error) override;
    unsigned sampleRate() const override { return 100; }
    std::vector<voxtreld::EngineVoice> voices() const override;
    bool speak(const std::string& text, const voxtreld::Prosody& prosody,
               voxtreld::SpeechReceiver& receiver) override;
    // Sink.
    bool open(unsigned rate, std::string& error) override;
    bool begin(uint32_t pid, uint32_t id) override;
    bool write(const int16_t* samples, size_t count, const voxtreld::Cancel& cancel) override;
    bool end(const voxtreld::Cancel& cancel) override;
    // Listener.
    void tell(uint32_t pid, TTS::Event event, uint32_t second, uint32_t third) override;

    bool requestsGoWell();
    void makeRequests();
    void feedTheQueue();
    bool makeRequest();
    void chooseSender();
    void speech(unsigned kind);
    void shared(unsigned kind);
    void setting(unsigned kind);
    void raw();
    void join();
    void die();

    int transact(TTS::Transaction transaction, android::Parcel& request);
    int callWith(TTS::Transaction transaction, std::initializer_list<uint32_t> values);
    void judge(uint32_t code, uint32_t pid, uint32_t id, int status);
    void judgeSpeech(uint32_t pid, uint32_t id, int status);
    void requireRightLock();
    void setLockOwner(uint32_t pid);
    void freeLockOf(uint32_t pid);
    void announceVoices();
    void newService();

    // What all clients share (SceneSettings.cpp).
    void judgeChange(uint32_t code, uint32_t key, int status);
    Notice changeBy(uint32_t code, uint32_t key);
    void requireSettingsSurvive();
    uint32_t eventValue(uint32_t key);
    std::string answerTo(TTS::Transaction transaction, uint32_t key);
    std::string allSettings(int digits = 9);  ///< of a fraction: so many tell all of them apart

    Input& mInput;
    const std::string mProfilePath;
    std::shared_ptr<voxtreld::SpeechQueue> mQueue;
    std::shared_ptr<voxtreld::ProfileStore> mProfile;
    android::sp<voxtreld::VoxtrelService> mService;
    Clients mClients;
    voxtreld::Caller mCaller = {0, 0};
    uint32_t mNamed = 0;  ///< the process id that the next request gives
    uint32_t mLastId = 0;
    uint32_t mLockOwner = 0;
    std::string mSettings;  ///< what they were after the last change
    bool mHasVoices = false;
    unsigned mFailures = 0;  ///< operations of engine and sink that are to fail
    bool mIsClosed = false;
};

}  // namespace voxtrel_fuzz

#endif
