// SPDX-License-Identifier: Apache-2.0
#include <iostream>
#include <memory>

#include "tools/Commands.h"
#include "tools/Fence.h"
#include "tools/Json.h"
#include "tools/Session.h"

namespace voxtrelctl {
namespace {

void show(const Options& options, Terminal& terminal, const Event& event) {
    terminal.line(options.json ? eventJson(event, "") : describe(event));
}

void showConnection(const Options& options, Terminal& terminal, const char* what) {
    terminal.line(options.json ? connectionJson(what) : std::string("service ") + what);
}

/// Asked for an event at the start, a service sends one, or it never sends any.
class Doubt {
public:
    explicit Doubt(Session& session) : mFence(session) { mFence.send(); }
    EventQueue::Clock::time_point end() const { return mEnd; }

    void see(const Notice& notice) {
        mFence.see(notice);
        mHeard = mHeard || notice.source == Notice::Source::Service;
        if (mFence.wasTaken() && !mComplained) {
            mComplained = true;
            warnOfAnyPause();
        }
    }

    /// Time is up.
    void voice() {
        if (!mHeard) {
            std::cerr << "voxtrelctl: the service does not answer with an event when it is asked "
                         "for one; what changes may not be told\n";
        }
        mFence.recall();
        mEnd = EventQueue::Clock::time_point::max();
    }

private:
    static constexpr auto kPatience = std::chrono::seconds(10);

    Fence mFence;
    EventQueue::Clock::time_point mEnd = EventQueue::Clock::now() + kPatience;
    bool mHeard = false;
    bool mComplained = false;
};

bool anyNotice(const Notice&) {
    return true;
}

}  // namespace

int runMonitor(const Options& options, Terminal& terminal) {
    auto session = std::make_unique<Session>(terminal);
    showConnection(options, terminal, "connected");
    auto doubt = std::make_unique<Doubt>(*session);
    uint32_t shown = 0;
    while (options.count == 0 || shown < options.count) {
        const Notice notice = EventQueue::instance().next(doubt->end(), anyNotice);
        doubt->see(notice);
        switch (notice.source) {
            case Notice::Source::Interrupted:
                return 0;
            case Notice::Source::TimedOut:
                doubt->voice();
                break;
            case Notice::Source::ServiceDied:
                showConnection(options, terminal, "died");
                doubt.reset();
                session.reset();
                session = std::make_unique<Session>(terminal);
                showConnection(options, terminal, "connected");
                doubt = std::make_unique<Doubt>(*session);
                break;
            case Notice::Source::Service:
                if (!Fence::isFence(notice.event)) {
                    show(options, terminal, notice.event);
                    ++shown;
                }
                break;
            default:
                break;
        }
    }
    return 0;
}

}  // namespace voxtrelctl
