// SPDX-License-Identifier: Apache-2.0
// A session with its threads, and a service that answers with any bytes, tells of anything and dies
// at any time: no call waits for ever, each utterance has one outcome when the client has left,
// which was told once at most, and of the session nothing stays. Nothing of this depends on how its
// threads are scheduled.
#include <array>
#include <condition_variable>
#include <map>
#include <mutex>

#include "fuzz/Input.h"
#include "ipc/BpTextToSpeechFestival.h"
#include "ipc/ICallback.h"
#include "ipc/TransactionCodes.h"
#include "voxtrel/session/Session.h"

namespace {

using namespace voxtrel;
using android::sp;
using voxtrel_fuzz::Input;
using voxtrel_fuzz::require;
using Bytes = std::vector<uint8_t>;

constexpr size_t kCodes = 32;
constexpr auto kMoment = std::chrono::milliseconds(1);

/// What a client needs to be told before it says anything.
Bytes goodCapabilities() {
    Bytes image;
    for (unsigned place = 0; place < 22; ++place) {
        const bool isRange = place == 1 || place == 2 || place == 4 || place == 5;
        const Bytes word = {static_cast<uint8_t>(isRange || place == 21 ? 0 : 1), 0, 0, 0};
        image.insert(image.end(), word.begin(), word.end());
    }
    return image;
}

/// The service's end. Called on: any thread.
class Service : public android::BBinder {
public:
    void answer(uint32_t code, android::status_t status, Bytes reply) {
        const std::lock_guard<std::mutex> lock(mMutex);
        mAnswers[code % kCodes] = {status, std::move(reply)};
    }
    sp<android::IBinder> callback() const {
        const std::lock_guard<std::mutex> lock(mMutex);
        return mCallback;
    }

protected:
    android::status_t onTransact(uint32_t code, const android::Parcel& request,
                                 android::Parcel* reply, uint32_t) override {
        const std::lock_guard<std::mutex> lock(mMutex);
        if (code == TTS::transaction::kRegisterCallback.code) {
            (void)request.readInt32();
            mCallback = request.readStrongBinder();
        }
        const Answer& answer = mAnswers[code % kCodes];
        if (reply != nullptr && answer.status == android::OK) {
            reply->setData(answer.reply.data(), answer.reply.size());
            reply->setDataPosition(0);
        }
        return answer.status;
    }

private:
    struct Answer {
        android::status_t status = android::OK;
        Bytes reply;
    };

    mutable std::mutex mMutex;
    std::array<Answer, kCodes> mAnswers;
    sp<android::IBinder> mCallback;
};

/// Where the session looks for a service. Called on: any thread.
class Place {
public:
    Port::Found find(std::function<void()> died) {
        const std::lock_guard<std::mutex> lock(mMutex);
        if (mService == nullptr) {
            return {nullptr, Reach::NoService};
        }
        mDied = std::move(died);
        return {new TTS::BpTextToSpeechFestival(mService), Reach::Connected};
    }
    void put(const sp<Service>& service) {
        std::function<void()> died;
        {
            const std::lock_guard<std::mutex> lock(mMutex);
            mService = service;
            died.swap(mDied);
        }
        if (died != nullptr) {
            died();
        }
    }
    void count(int change) {
        const std::lock_guard<std::mutex> lock(mMutex);
        mPorts += change;
        mChanged.notify_all();
    }
    /// When its port has gone, so have its threads.
    void waitUntilSessionIsGone() {
        std::unique_lock<std::mutex> lock(mMutex);
        mChanged.wait(lock, [this] { return mPorts == 0; });
    }

private:
    std::mutex mMutex;
    std::condition_variable mChanged;
    sp<Service> mService;
    std::function<void()> mDied;
    int mPorts = 0;
};

class AnyPort : public Port {
public:
    explicit AnyPort(Place& place) : mPlace(place) { mPlace.count(1); }
    ~AnyPort() override { mPlace.count(-1); }
    AnyPort(const AnyPort&) = delete;
    AnyPort& operator=(const AnyPort&) = delete;
    Found find(std::function<void()> died) override { return mPlace.find(std::move(died)); }

private:
    Place& mPlace;
};

class Process {
public:
    explicit Process(Input& input) : mInput(input) { mClient->setHandler(mNote); }

    void run() {
        renewService();
        std::weak_ptr<Session> place;
        const auto newSession = [this] {
            return std::make_shared<Session>(std::make_unique<AnyPort>(mPlace));
        };
        mSession = Session::joinAt(place, newSession, mClient);
        if (mInput.below(4) != 0) {
            (void)mSession->waitUntilConnected(soon(20));
        }
        while (!mInput.isAtEnd()) {
            act(mInput.below(12));
        }
        (void)mClient->dispatch();
        mSession->leave(mClient, Session::Clock::now() + std::chrono::hours(1));
        for (const auto& speech : mSaid) {
            require(!speech->state->outcome().isPending());
            require(mEnds[speech->state->number()] <= 1);
        }
        mSession.reset();
        mPlace.waitUntilSessionIsGone();
    }

private:
    static Session::Clock::time_point soon(int moments = 1) {
        return Session::Clock::now() + moments * kMoment;
    }

    void act(unsigned kind) {
        if (kind < 3) {
            say();
        } else if (kind < 6) {
            tell();
        } else if (kind == 6) {
            const uint32_t code = mInput.byte();
            const bool isFailure = mInput.below(8) == 7;
            mService->answer(code, isFailure ? android::FAILED_TRANSACTION : android::OK,
                             mInput.bytes(mInput.byte()));
        } else if (kind == 7) {
            renewService();
        } else if (kind == 8) {
            mSession->waitUntilSent(*mClient, soon(5));
        } else if (kind == 9) {
            mSession->stop(mClient);
        } else {
            ask(mInput.below(9));
        }
    }

    void renewService() {
        mService = nullptr;
        if (mInput.below(16) != 15) {
            mService = new Service;
            mService->answer(TTS::transaction::kGetCapabilities.code, android::OK,
                             goodCapabilities());
            if (mInput.below(4) == 3) {
                mService->answer(TTS::transaction::kGetCapabilities.code, android::OK,
                                 mInput.bytes(mInput.byte()));
            }
        }
        mPlace.put(mService);
        if (mService == nullptr) {
            mService = new Service;  // that nobody finds
        }
    }

    void say() {
        const uint8_t choice = mInput.byte();
        auto speech = std::make_shared<Speech>();
        speech->client = mClient;
        speech->state = std::make_shared<UtteranceState>(mSaid.size() + 1);
        speech->options.onLoss = static_cast<OnLoss>(choice % 3);
        speech->text = std::string(size_t{16} * (choice >> 2U), 'a');
        if (speech->text.empty()) {
            speech->pauseMs = choice;
        }
        mSaid.push_back(speech);
        mSession->say(speech);
    }

    /// An event that may be about something, or any bytes.
    void tell() {
        const sp<android::IBinder> callback = mService->callback();
        const unsigned kind = mInput.below(16);
        android::Parcel event;
        if (kind == 15) {
            const Bytes image = mInput.bytes(mInput.byte());
            event.setData(image.data(), image.size());
        } else {
            event.writeUint32(kind % 8);
            event.writeUint32(kind < 8 ? mInput.byte() : mInput.byte() + Session::kFirstFence);
            event.writeInt32(static_cast<int8_t>(mInput.byte()));
        }
        if (callback != nullptr) {
            android::Parcel reply;
            (void)callback->transact(TTS::ICallback::kNotify, event, &reply,
                                     android::IBinder::FLAG_ONEWAY);
        }
    }

    void ask(unsigned kind) {
        switch (kind) {
            case 0:
                (void)mSession->stopEverybody(mClient, soon());
                break;
            case 1:
                (void)mSession->lock(*mClient, soon());
                break;
            case 2:
                mSession->unlock(*mClient);
                break;
            case 3:
                (void)mSession->breakLock(*mClient, soon());
                break;
            case 4:
                (void)mSession->lockState(soon());
                break;
            case 5:
                (void)mSession->checkEvents(soon());
                break;
            case 6:
                (void)mSession->waitUntilTaken(*mClient, soon());
                break;
            case 7:
                (void)mSession->features(soon());
                break;
            default:
                (void)mSession->waitForAll(*mClient, soon());
        }
    }

    Input& mInput;
    Place mPlace;
    sp<Service> mService;
    std::shared_ptr<Session> mSession;
    std::vector<std::shared_ptr<Speech>> mSaid;
    std::map<uint64_t, unsigned> mEnds;
    const Mailbox::Handler mNote = [this](const Event& event) {
        if (event.kind == Event::Kind::Ended) {
            require(++mEnds[event.utterance.number()] == 1 && !event.outcome.isPending());
        }
    };
    const std::shared_ptr<Mailbox> mClient = std::make_shared<Mailbox>(true);
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Input input(data, size);
    Process(input).run();
    return 0;
}
