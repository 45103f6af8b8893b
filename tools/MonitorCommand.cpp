// SPDX-License-Identifier: Apache-2.0
#include <iostream>
#include <memory>

#include "tools/Commands.h"
#include "tools/Json.h"
#include "tools/Session.h"
#include "tools/Settle.h"

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
    explicit Doubt(Session& session) : mEnd(EventQueue::Clock::now() + kPatience) {
        sendFence(session);
    }
    EventQueue::Clock::time_point end() const { return mEnd; }

    void dispel() { mEnd = EventQueue::Clock::time_point::max(); }

    void voice() {
        std::cerr
            << "voxtrelctl: the service does not answer with an event when it is asked for one; "
               "what changes may not be told\n";
        dispel();
    }

private:
    static constexpr auto kPatience = std::chrono::seconds(10);

    EventQueue::Clock::time_point mEnd;
};

bool anyNotice(const Notice&) {
    return true;
}

}  // namespace

int runMonitor(const Options& options, Terminal& terminal) {
    auto session = std::make_unique<Session>(terminal);
    showConnection(options, terminal, "connected");
    Doubt doubt(*session);
    uint32_t shown = 0;
    while (options.count == 0 || shown < options.count) {
        const Notice notice = EventQueue::instance().next(doubt.end(), anyNotice);
        switch (notice.source) {
            case Notice::Source::Interrupted:
                return 0;
            case Notice::Source::TimedOut:
                doubt.voice();
                break;
            case Notice::Source::ServiceDied:
                showConnection(options, terminal, "died");
                session.reset();
                session = std::make_unique<Session>(terminal);
                showConnection(options, terminal, "connected");
                doubt = Doubt(*session);
                break;
            case Notice::Source::Service:
                doubt.dispel();
                if (!isFence(notice.event)) {
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
