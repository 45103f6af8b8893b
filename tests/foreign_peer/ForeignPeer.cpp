// SPDX-License-Identifier: Apache-2.0
#include "tests/foreign_peer/ForeignPeer.h"

#include <binder/BinderDriver.h>

#include "tests/support/Eventually.h"

namespace voxtrel_test {

namespace {

bool beginsWith(const std::string& line, const std::string& beginning) {
    return line.compare(0, beginning.size(), beginning) == 0;
}

}  // namespace

ForeignPeer::ForeignPeer()
    : ForeignPeer(ChildProcess::Words{VOXTREL_FOREIGN_PEER, android::binderDriver()}) {}

ForeignPeer ForeignPeer::ofNobody() {
    return ForeignPeer({VOXTREL_FOREIGN_PEER, android::binderDriver(), std::to_string(kNobody)});
}

std::string ForeignPeer::ask(const std::string& line) {
    return begin(line) ? answer() : "";
}

std::string ForeignPeer::answer() {
    for (;;) {
        const std::string heard = mProcess.readLine();
        if (heard.empty() || beginsWith(heard, "= ")) {
            return heard.empty() ? "" : heard.substr(2);
        }
        mEvents.push_back(heard);
    }
}

std::string ForeignPeer::event(const std::string& beginning) {
    for (;;) {
        while (!mEvents.empty()) {
            const std::string first = mEvents.front();
            mEvents.pop_front();
            if (beginsWith(first, beginning)) {
                return first;
            }
        }
        const std::string heard = mProcess.readLine();
        if (heard.empty()) {
            return "";
        }
        mEvents.push_back(heard);
    }
}

std::string ForeignPeer::askManager(uint32_t code, const std::string& layout,
                                    const std::string& items) {
    return ask("call 0 " + std::to_string(code) + " 0 " + layout + ' ' + kManagerToken + items);
}

std::string ForeignPeer::find(const std::string& name) {
    const std::string found = "reply h:";
    const std::string answer = askManager(kCheckService, "b", "s:" + name);
    return beginsWith(answer, found) ? answer.substr(found.size()) : "";
}

std::string ForeignPeer::await(const std::string& name) {
    std::string handle;
    (void)eventually([&] {
        handle = find(name);
        return !handle.empty();
    });
    return handle;
}

}  // namespace voxtrel_test
