// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_FOREIGN_PEER_FOREIGNPEER_H
#define VOXTREL_TESTS_FOREIGN_PEER_FOREIGNPEER_H

#include <gtest/gtest.h>

#include <list>
#include <string>

#include "tests/support/ChildProcess.h"

namespace voxtrel_test {

/// A process of another runtime over the same driver; peer/main.cpp has what it can be asked.
class ForeignPeer {
public:
    ForeignPeer();
    /// Of another user, `nobody`.
    static ForeignPeer ofNobody();
    static constexpr int kNobody = 65534;

    /// Its answer to one line.
    std::string ask(const std::string& line);
    /// The same in two steps, for what it waits for meanwhile.
    bool begin(const std::string& line) { return mProcess.say(line); }
    std::string answer();
    /// The first line that begins like this of what it has told aside of its answers, with what
    /// precedes it taken off; waits for it. Empty: it did not come.
    std::string event(const std::string& beginning);

    /// A request to the service manager, with the classic token, in the peer's words.
    std::string askManager(uint32_t code, const std::string& layout, const std::string& items);
    /// The handle of a service; empty: there is none of that name.
    std::string find(const std::string& name);
    /// The same, once there is one.
    std::string await(const std::string& name);

    pid_t pid() const { return mProcess.pid(); }
    std::string pidItem() const { return "i:" + std::to_string(pid()); }
    void killNow() { mProcess.killNow(); }

private:
    explicit ForeignPeer(const ChildProcess::Words& command) : mProcess(command) {}

    ChildProcess mProcess;
    std::list<std::string> mEvents;
};

/// What follows the handle in a call that every node answers.
inline constexpr const char* kPing = " 0x5f504e47 0 -";
inline constexpr const char* kInterface = " 0x5f4e5446 0 s";
/// The word that later ages write behind each object.
inline constexpr const char* kStability = "i:12";

/// Of the requests to a service manager.
inline constexpr const char* kManagerToken = "i:0 s:android.os.IServiceManager ";
enum ManagerCode : uint32_t { kGetService = 1, kCheckService, kAddService, kListServices };

}  // namespace voxtrel_test

#endif
