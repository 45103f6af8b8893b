// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_FUZZ_CLIENT_APPLICATION_H
#define VOXTREL_FUZZ_CLIENT_APPLICATION_H

#include <array>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "client/TTSClientPrivate.h"
#include "fuzz/client/HostileService.h"

namespace voxtrel_fuzz {

/// A process with two clients, and what must be true of whatever they do. Only one at a time.
class Application {
public:
    explicit Application(Input& input);
    ~Application();
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    void run();

private:
    using Client = TTS::TTSClientPrivate;

    struct Notice {
        unsigned event;
        unsigned second;
        unsigned third;
    };
    /// What happened inside one operation; another may be made inside of it.
    struct Frame {
        std::vector<Exchange> exchanges;
        std::vector<Notice> notices;
    };

    static void onNotify(unsigned event, unsigned second, unsigned third);

    void act();
    void serve(unsigned kind);
    void meanwhile(const Exchange& exchange);
    void renewClient();
    void connect();
    void disconnect();
    void tell();
    void die();

    int perform(const std::function<int()>& operation);
    int32_t answerTo(TTS::Transaction transaction, size_t word = 0) const;
    bool wasAsked(TTS::Transaction transaction) const;

    void speak(unsigned kind);
    void change(unsigned kind);
    void own(unsigned kind);
    void ask(unsigned kind);
    void lock(bool isWanted);
    void setOwnNumber(unsigned kind);
    void setLanguage();
    void setVoice();
    void readLanguage();
    void requireVoices();
    void requireLanguages();
    void setGlobal();
    void readGlobal();

    int refusalToChange() const;
    template <typename Value>
    void requireSet(int (Client::*set)(void*), Value TTS::TtsSetting::*field, Value value,
                    bool isInside, bool isSupported, int flagKind);

    Input& mInput;
    android::sp<android::IServiceManager> mManager;
    HostileService mService;
    std::array<std::unique_ptr<Client>, 2> mClients;
    Client* mClient = nullptr;   ///< the one that is used
    std::vector<bool> mIsHeard;  ///< by registration: its client has a function
    std::vector<Frame> mFrames;  ///< the operations that are going on
    Frame mLast;                 ///< of the last that ended
    bool mHadService = false;    ///< when that began
    bool mWasOwner = false;      ///< of the lock
    bool mIsConnecting = false;
    std::string mFilter;
};

}  // namespace voxtrel_fuzz

#endif
