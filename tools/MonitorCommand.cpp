// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <vector>

#include "tools/Commands.h"
#include "tools/Connection.h"
#include "tools/Errors.h"
#include "tools/Json.h"

namespace voxtrelctl {
namespace {

using voxtrel::Milliseconds;

constexpr Milliseconds kForever(-1);
constexpr Milliseconds kLook(100);

/// Shows what happens to the service.
class Monitor {
public:
    Monitor(const Options& options, Terminal& terminal)
        : mOptions(options), mTerminal(terminal), mConnection(options, terminal) {
        // What a handler throws is lost, so it only notes.
        mConnection.client().onEvent(
            [this](const voxtrel::Event& event) { mEvents.push_back(event); });
    }

    /// Until as many changes were shown as asked for, or a signal comes.
    void run() {
        connect();
        mConnection.endQuietly();
        while (!isDone()) {
            mConnection.dispatch(mIsSure ? kForever : kLook);
            showAll();
            if (!mIsSure) {
                makeSure();
            }
        }
    }

private:
    bool isDone() const {
        return mConnection.isInterrupted() || (mOptions.count != 0 && mShown >= mOptions.count);
    }

    void connect() {
        mConnection.connect();
        mTerminal.line(mOptions.json ? connectionJson("connected") : "service connected");
        mIsSure = false;
        makeSure();
    }

    /// Asked for an event at the start, a service sends one, or it never sends any.
    void makeSure() {
        const bool isTold = static_cast<bool>(mConnection.client().checkEvents(Milliseconds(0)));
        if (isTold) {
            mConnection.complain();
        } else if (mConnection.left() == Milliseconds::zero()) {
            printError(
                "the service does not answer with an event when it is asked "
                "for one; what changes may not be told");
            mConnection.client().stop();  // it may have taken what it must refuse
        }
        mIsSure = isTold || mConnection.left() == Milliseconds::zero();
    }

    void showAll() {
        std::vector<voxtrel::Event> events;
        events.swap(mEvents);
        for (const voxtrel::Event& event : events) {
            if (!isDone()) {
                show(event);
            }
        }
    }

    void show(const voxtrel::Event& event) {
        if (event.kind == voxtrel::Event::Kind::Disconnected) {
            mTerminal.line(mOptions.json ? connectionJson("died") : "service died");
            connect();
        }
        if (event.kind == voxtrel::Event::Kind::Changed) {
            const Event change = toEvent(event).value_or(Event());
            mTerminal.line(mOptions.json ? eventJson(change, "") : describe(change));
            ++mShown;
        }
    }

    const Options& mOptions;
    Terminal& mTerminal;
    std::vector<voxtrel::Event> mEvents;
    std::uint32_t mShown = 0;
    bool mIsSure = false;
    Connection mConnection;
};

}  // namespace

int runMonitor(const Options& options, Terminal& terminal) {
    Monitor(options, terminal).run();
    return 0;
}

}  // namespace voxtrelctl
