// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <poll.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <future>
#include <memory>
#include <stdexcept>
#include <thread>

#include "voxtrel/session/Mailbox.h"

namespace {

using namespace voxtrel;
using Kind = Event::Kind;

Event eventOf(Kind kind, std::uint32_t value = 0) {
    Event event;
    event.kind = kind;
    event.value = value;
    return event;
}

bool isReadable(const Mailbox& mailbox) {
    pollfd look = {mailbox.fd(), POLLIN, 0};
    return ::poll(&look, 1, 0) == 1;
}

class AMailbox : public ::testing::Test {
protected:
    void listen() {
        mailbox.setHandler([this](const Event& event) { values.push_back(event.value); });
    }

    Mailbox mailbox{true};
    std::vector<std::uint32_t> values;
};

TEST_F(AMailbox, HandsOverEventsInOrder) {
    listen();
    for (std::uint32_t value = 1; value <= 3; ++value) {
        EXPECT_TRUE(mailbox.put(eventOf(Kind::Changed, value)));
    }
    EXPECT_EQ(3U, mailbox.dispatch());
    EXPECT_EQ((std::vector<std::uint32_t>{1, 2, 3}), values);
    EXPECT_EQ(0U, mailbox.dispatch());
}

TEST_F(AMailbox, WithoutAHandlerKeepsNothing) {
    EXPECT_FALSE(mailbox.hasHandler());
    EXPECT_FALSE(mailbox.put(eventOf(Kind::Ended)));
    EXPECT_FALSE(isReadable(mailbox));
    listen();
    EXPECT_TRUE(mailbox.hasHandler());
    EXPECT_EQ(0U, mailbox.dispatch());
    mailbox.put(eventOf(Kind::Ended));
    mailbox.setHandler({});
    EXPECT_FALSE(mailbox.hasHandler());
    EXPECT_FALSE(isReadable(mailbox));
    EXPECT_EQ(0U, mailbox.dispatch());
}

TEST_F(AMailbox, DropsWordsAndMarksWhenFullAndNothingElse) {
    listen();
    for (std::uint32_t n = 0; n < 256; ++n) {
        ASSERT_TRUE(mailbox.put(eventOf(Kind::Word, n)));
    }
    EXPECT_FALSE(mailbox.put(eventOf(Kind::Word, 1000)));
    EXPECT_FALSE(mailbox.put(eventOf(Kind::Mark, 1000)));
    for (const Kind kind :
         {Kind::Started, Kind::Ended, Kind::Connected, Kind::Disconnected, Kind::Changed}) {
        EXPECT_TRUE(mailbox.put(eventOf(kind, 2000)));
    }
    EXPECT_EQ(261U, mailbox.dispatch());
    EXPECT_EQ(255U, values[255]);
    EXPECT_EQ(2000U, values[256]);
    EXPECT_TRUE(mailbox.put(eventOf(Kind::Word)));
}

TEST_F(AMailbox, HasTheLastChangeOfEachSettingAloneWhenFull) {
    listen();
    Event change = eventOf(Kind::Changed);
    for (std::uint32_t n = 0; n < 10000; ++n) {
        change.setting = n % 2 == 0 ? Event::Setting::Lock : Event::Setting::Speech;
        change.value = n;
        mailbox.put(Event(change));
    }
    EXPECT_EQ(256U, mailbox.dispatch());
    EXPECT_EQ(1U, static_cast<unsigned>(std::count(values.begin(), values.end(), 9998U)));
    EXPECT_EQ(1U, static_cast<unsigned>(std::count(values.begin(), values.end(), 9999U)));
}

TEST_F(AMailbox, IsReadableExactlyWhileThereIsSomething) {
    listen();
    EXPECT_FALSE(isReadable(mailbox));
    mailbox.put(eventOf(Kind::Started));
    EXPECT_TRUE(isReadable(mailbox));
    mailbox.put(eventOf(Kind::Ended));
    EXPECT_TRUE(isReadable(mailbox));
    mailbox.dispatch();
    EXPECT_FALSE(isReadable(mailbox));
    mailbox.put(eventOf(Kind::Ended));
    EXPECT_TRUE(isReadable(mailbox));
    mailbox.close();
    EXPECT_FALSE(isReadable(mailbox));
    mailbox.put(eventOf(Kind::Ended));
    EXPECT_FALSE(isReadable(mailbox));
}

TEST(AMailboxThatIsNotPolled, HasNoDescriptor) {
    const Mailbox mailbox(false);
    EXPECT_EQ(-1, mailbox.fd());
    EXPECT_FALSE(mailbox.isPolled());
}

TEST_F(AMailbox, HandlesWhatComesMeanwhileToo) {
    mailbox.setHandler([this](const Event& event) {
        values.push_back(event.value);
        if (event.value < 3) {
            mailbox.put(eventOf(Kind::Changed, event.value + 1));
        }
        EXPECT_EQ(0U, mailbox.dispatch()) << "not within itself";
    });
    mailbox.put(eventOf(Kind::Changed, 1));
    EXPECT_EQ(3U, mailbox.dispatch());
    EXPECT_FALSE(isReadable(mailbox));
}

TEST_F(AMailbox, OutlivesAHandlerThatThrows) {
    mailbox.setHandler([this](const Event& event) {
        values.push_back(event.value);
        throw std::runtime_error("of the application");
    });
    mailbox.put(eventOf(Kind::Changed, 1));
    mailbox.put(eventOf(Kind::Changed, 2));
    EXPECT_EQ(2U, mailbox.dispatch());
    mailbox.put(eventOf(Kind::Changed, 3));
    EXPECT_EQ(1U, mailbox.dispatch());
    EXPECT_EQ((std::vector<std::uint32_t>{1, 2, 3}), values);
}

TEST_F(AMailbox, GivesWhatIsLeftToAHandlerThatReplacesAnother) {
    mailbox.setHandler([this](const Event&) { listen(); });
    for (std::uint32_t value = 1; value <= 3; ++value) {
        mailbox.put(eventOf(Kind::Changed, value));
    }
    EXPECT_EQ(3U, mailbox.dispatch());
    EXPECT_EQ((std::vector<std::uint32_t>{2, 3}), values);
}

TEST_F(AMailbox, RunsNoHandlerAfterItWasClosedFromWithin) {
    int calls = 0;
    mailbox.setHandler([&](const Event&) {
        ++calls;
        mailbox.close();
    });
    mailbox.put(eventOf(Kind::Changed));
    mailbox.put(eventOf(Kind::Changed));
    EXPECT_EQ(1U, mailbox.dispatch());
    EXPECT_EQ(1, calls);
    EXPECT_FALSE(mailbox.put(eventOf(Kind::Ended)));
}

TEST_F(AMailbox, RunsNoHandlerThatIsSetAfterItWasClosed) {
    mailbox.close();
    listen();
    EXPECT_FALSE(mailbox.put(eventOf(Kind::Ended)));
    EXPECT_EQ(0U, mailbox.dispatch());
}

/// Looks at a mailbox as it goes.
class Leaver {
public:
    Leaver(Mailbox& mailbox, int& gone) : mMailbox(mailbox), mGone(gone) {}
    Leaver(const Leaver&) = delete;
    Leaver& operator=(const Leaver&) = delete;
    ~Leaver() {
        (void)mMailbox.hasHandler();
        ++mGone;
    }

private:
    Mailbox& mMailbox;
    int& mGone;
};

TEST_F(AMailbox, LetsAHandlerGoThatUsesItInItsEnd) {
    int gone = 0;
    const auto handler = [&](std::function<void()> act) {
        return [act, leaver = std::make_shared<Leaver>(mailbox, gone)](const Event&) { act(); };
    };
    mailbox.setHandler(handler([] {}));
    mailbox.setHandler(handler([this] { mailbox.setHandler([](const Event&) {}); }));
    EXPECT_EQ(1, gone);
    mailbox.put(eventOf(Kind::Changed));
    EXPECT_EQ(1U, mailbox.dispatch());
    EXPECT_EQ(2, gone);
    mailbox.setHandler(handler([] {}));
    mailbox.close();
    EXPECT_EQ(3, gone);
}

/// A handler that stays inside until it is let go.
class Stayer {
public:
    void operator()() {
        mIsInside.set_value();
        mMayGo.get_future().wait();
        hasLeft = true;
    }
    void awaitInside() { mIsInside.get_future().wait(); }
    void letGo() { mMayGo.set_value(); }
    std::atomic<bool> hasLeft{false};

private:
    std::promise<void> mIsInside;
    std::promise<void> mMayGo;
};

/// `act` on the mailbox, on another thread, waits until the handler that runs on this has returned.
template <typename Act>
void expectWaiting(Mailbox& mailbox, Stayer& stayer, Act act) {
    mailbox.put(eventOf(Kind::Changed));
    std::thread handling([&] { mailbox.dispatch(); });
    stayer.awaitInside();
    std::promise<void> begins;
    std::thread acting([&] {
        begins.set_value();
        act();
        EXPECT_TRUE(stayer.hasLeft);
    });
    begins.get_future().wait();
    stayer.letGo();
    acting.join();
    handling.join();
}

TEST_F(AMailbox, IsClosedWhenTheHandlerHasReturned) {
    Stayer stayer;
    mailbox.setHandler([&](const Event&) { stayer(); });
    expectWaiting(mailbox, stayer, [&] { mailbox.close(); });
}

TEST_F(AMailbox, HasANewHandlerWhenTheOldOneHasReturned) {
    Stayer stayer;
    mailbox.setHandler([&](const Event&) { stayer(); });
    expectWaiting(mailbox, stayer, [&] { mailbox.setHandler({}); });
}

TEST_F(AMailbox, IsClosedWhenAHandlerThatReplacedItselfHasReturned) {
    Stayer stayer;
    mailbox.setHandler([&](const Event&) {
        mailbox.setHandler([](const Event&) {});
        stayer();
    });
    expectWaiting(mailbox, stayer, [&] { mailbox.close(); });
}

TEST_F(AMailbox, ReplacesAHandlerThoughEventsNeverStopComing) {
    std::atomic<bool> isReplaced{false};
    std::promise<void> isBusy;
    std::atomic<int> calls{0};
    mailbox.setHandler([&](const Event&) {
        if (++calls == 3) {
            isBusy.set_value();
        }
        mailbox.put(eventOf(Kind::Changed));
    });
    mailbox.put(eventOf(Kind::Changed));
    std::thread handling([&] { mailbox.dispatch(); });
    isBusy.get_future().wait();
    mailbox.setHandler([&](const Event&) {
        if (!isReplaced) {
            mailbox.put(eventOf(Kind::Changed));
        }
    });
    const int before = calls;
    isReplaced = true;
    handling.join();
    EXPECT_EQ(before, calls);
}

}  // namespace
