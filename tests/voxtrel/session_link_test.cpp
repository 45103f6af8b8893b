// SPDX-License-Identifier: Apache-2.0
// Why there is no connection, while the service is looked for again and again.
#include <memory>

#include "tests/voxtrel/ClientTest.h"
#include "tests/voxtrel/LossyWay.h"
#include "voxtrel/session/Session.h"
#include "voxtrel/testing/FakeRemote.h"

namespace {

using namespace voxtrel;
using namespace voxtrel_test;
using voxtrel::testing::FakeRemote;
using voxtrel::testing::FakeState;

constexpr std::uint64_t kFirstLife = 1;

class ClosedRemote : public FakeRemote {
public:
    explicit ClosedRemote(std::shared_ptr<FakeState> service)
        : FakeRemote(std::move(service), kFirstLife) {}

    int getCapabilities(TTS::Capabilities& capabilities) override {
        const int status = FakeRemote::getCapabilities(capabilities);
        capabilities.permitted = false;
        return status;
    }
};

/// The way to a service that does not let us in.
class ClosedPort : public Port {
public:
    explicit ClosedPort(std::shared_ptr<FakeState> service) : mService(std::move(service)) {}

    Found find(std::function<void()> /*died*/) override { return {new ClosedRemote(mService)}; }

private:
    const std::shared_ptr<FakeState> mService;
};

TEST(ARegistrationThatIsLost, IsMadeAgain) {
    const auto service = std::make_shared<FakeState>();
    const auto client = std::make_shared<Mailbox>(true);
    std::weak_ptr<Session> place;
    Losses losses;
    losses.lose(TTS::transaction::kRegisterCallback, 3);
    const std::shared_ptr<Session> session = Session::joinAt(
        place,
        [&] { return std::make_shared<Session>(std::make_unique<LossyPort>(service, losses)); },
        client);
    ASSERT_TRUE(session->waitUntilConnected(Session::Clock::now() + kLong));
    EXPECT_TRUE(session->checkEvents(Session::Clock::now() + kLong)) << "it hears of nothing";
    EXPECT_TRUE(losses.areOver());
    session->leave(client, Session::Clock::now() + kLong);
    service->end();
}

TEST(AServiceThatDoesNotLetUsIn, IsNotTakenForOneThatDoesNotAnswerBetweenTwoQuestions) {
    const auto service = std::make_shared<FakeState>();
    const auto client = std::make_shared<Mailbox>(true);
    std::weak_ptr<Session> place;
    const std::shared_ptr<Session> session = Session::joinAt(
        place, [&] { return std::make_shared<Session>(std::make_unique<ClosedPort>(service)); },
        client);
    const auto isDenied = [&] {
        const auto soon = Session::Clock::now() + 5ms;
        return session->waitUntilConnected(soon).status() == Status::PermissionDenied;
    };
    ASSERT_TRUE(eventually(isDenied));
    // Longer than from one question to the next; a machine that is busy may answer late for once.
    const auto isDeniedForLong = [&] {
        int count = 0;
        while (count < 150 && isDenied()) {
            ++count;
        }
        return count == 150;
    };
    EXPECT_TRUE(eventually(isDeniedForLong));
    session->leave(client, Session::Clock::now() + kLong);
    service->end();
}

}  // namespace
