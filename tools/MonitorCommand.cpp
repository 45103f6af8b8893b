// SPDX-License-Identifier: Apache-2.0
#include <memory>

#include "tools/Commands.h"
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

}  // namespace

int runMonitor(const Options& options, Terminal& terminal) {
    auto session = std::make_unique<Session>(terminal);
    showConnection(options, terminal, "connected");
    uint32_t shown = 0;
    while (options.count == 0 || shown < options.count) {
        const Notice notice = EventQueue::instance().next();
        if (notice.source == Notice::Source::Interrupted) {
            return 0;
        }
        if (notice.source == Notice::Source::ServiceDied) {
            showConnection(options, terminal, "died");
            session.reset();
            session = std::make_unique<Session>(terminal);
            showConnection(options, terminal, "connected");
        }
        if (notice.source == Notice::Source::Service) {
            show(options, terminal, notice.event);
            ++shown;
        }
    }
    return 0;
}

}  // namespace voxtrelctl
