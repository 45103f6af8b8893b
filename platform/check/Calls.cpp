// SPDX-License-Identifier: Apache-2.0
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

#include "check/CallNode.h"
#include "check/Peer.h"
#include "check/PeerNode.h"
#include "check/Row.h"

namespace check {
namespace {

using android::Parcel;
using android::sp;
using android::status_t;
using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::milliseconds::rep;

constexpr uint32_t kOneWay = android::IBinder::FLAG_ONEWAY;

Milliseconds millisecondsSince(Clock::time_point begin) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin).count();
}

/// One call with one number; its status, and the first number of its reply in `answer`.
status_t ask(const sp<android::IBinder>& node, uint32_t code, int32_t number, int32_t& answer) {
    Parcel request;
    request.writeInt32(number);
    Parcel reply;
    const status_t status = node->transact(code, request, &reply, 0);
    answer = reply.readInt32();
    return status;
}

status_t note(const sp<android::IBinder>& node, int32_t number, int32_t milliseconds) {
    Parcel request;
    request.writeInt32(number);
    request.writeInt32(milliseconds);
    return node->transact(kNote, request, nullptr, kOneWay);
}

struct Caller {
    int32_t pid = -1;
    int32_t uid = -1;
};

Caller callerIn(const Parcel& reply) {
    const int32_t pid = reply.readInt32();
    return {pid, reply.readInt32()};
}

/// What the peer has noted.
struct Notes {
    int32_t maxAtATime = 0;
    Caller caller;
    std::vector<int32_t> numbers;
};

Notes notesOf(const sp<android::IBinder>& node) {
    const Parcel request;
    Parcel reply;
    Notes notes;
    if (node->transact(kNotes, request, &reply, 0) == android::OK) {
        notes.maxAtATime = reply.readInt32();
        notes.caller = callerIn(reply);
        notes.numbers.resize(static_cast<size_t>(std::max(0, reply.readInt32())));
        for (int32_t& number : notes.numbers) {
            number = reply.readInt32();
        }
    }
    return notes;
}

/// The same, once so many have been noted or the time is up.
Notes awaitNotes(const sp<android::IBinder>& node, size_t count) {
    const Deadline end = soon();
    Notes notes = notesOf(node);
    while (notes.numbers.size() < count && Clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        notes = notesOf(node);
    }
    return notes;
}

Result twoWayCalls() {
    const Peer peer;
    int32_t answer = 0;
    const Clock::time_point begin = Clock::now();
    const status_t waited = ask(peer.node(), kWait, 100, answer);
    const Milliseconds took = millisecondsSince(begin);
    const Parcel request;
    Parcel failed;
    const status_t status = peer.node()->transact(kFail, request, &failed, 0);
    const bool isEmpty = status != android::OK && failed.dataSize() == 0;
    return require(waited == android::OK && answer == 1 && took >= 100 && isEmpty,
                   "an answer after " + std::to_string(took) + " of 100 ms; a failure, " +
                       std::to_string(status) + ", with " + std::to_string(failed.dataSize()) +
                       " bytes of reply");
}

Result oneWayCalls() {
    constexpr int32_t kCalls = 200;
    const Peer peer;
    Parcel reply;
    Parcel slow;
    slow.writeInt32(0);
    slow.writeInt32(1000);
    const Clock::time_point begin = Clock::now();
    (void)peer.node()->transact(kNote, slow, &reply, kOneWay);
    const Milliseconds took = millisecondsSince(begin);
    for (int32_t i = 1; i < kCalls; ++i) {
        (void)note(peer.node(), i, 0);
    }
    const Notes notes = awaitNotes(peer.node(), kCalls);
    const bool isSorted = std::is_sorted(notes.numbers.begin(), notes.numbers.end());
    const bool isEmpty = reply.dataSize() == 0;
    return require(took < 1000 && isEmpty && isSorted && notes.maxAtATime == 1 &&
                       notes.numbers.size() == kCalls,
                   std::to_string(notes.numbers.size()) + " of 200 arrived, " +
                       (isSorted ? "in order, " : "out of order, ") +
                       std::to_string(notes.maxAtATime) +
                       " at a time; one of 1000 ms returned after " + std::to_string(took) +
                       " ms with " + std::to_string(reply.dataSize()) + " bytes of reply");
}

Result overtaking() {
    constexpr int kRounds = 20;
    const Peer peer;
    int overtook = 0;
    for (int32_t i = 1; i <= kRounds; ++i) {
        (void)note(peer.node(), i, 1);
        overtook += notesOf(peer.node()).numbers.size() < static_cast<size_t>(i) ? 1 : 0;
        (void)awaitNotes(peer.node(), static_cast<size_t>(i));
    }
    return {Verdict::Ok, "overtook in " + std::to_string(overtook) + " of 20 rounds"};
}

Result oneWayRoom() {
    constexpr int kCalls = 1000;
    const Peer peer;
    (void)note(peer.node(), 0, 1000);
    const std::vector<char> text(1024, 'x');
    int refused = 0;
    for (int i = 1; i < kCalls; ++i) {
        Parcel request;
        request.writeInt32(i);
        request.writeInt32(0);
        request.write(text.data(), text.size());
        refused += peer.node()->transact(kNote, request, nullptr, kOneWay) != android::OK ? 1 : 0;
    }
    return {Verdict::Ok, std::to_string(refused) + " of 1000 calls of 1 KiB were refused"};
}

Result oneWayToOwnObject() {
    const sp<CallNode> own = new CallNode();
    Parcel request;
    request.writeInt32(5);
    Parcel reply;
    (void)own->transact(kAdd, request, &reply, kOneWay);
    return {Verdict::Ok, std::to_string(reply.dataSize()) + " bytes of reply"};
}

Result callsAtOnce() {
    constexpr int kThreads = 3;
    const Peer peer;
    std::atomic<int> met{0};
    std::vector<std::thread> threads;
    threads.reserve(kThreads);
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([&] {
            int32_t answer = 0;
            (void)ask(peer.node(), kMeet, kThreads, answer);
            met += answer;
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    return require(met == kThreads, std::to_string(met) + " of 3 calls met in the other process");
}

std::string wordsOf(const Caller& caller) {
    const bool isUser = caller.uid == static_cast<int32_t>(getuid());
    return (caller.pid == getpid() ? "the caller's pid" : "pid " + std::to_string(caller.pid)) +
           (isUser ? " and uid" : " and uid " + std::to_string(caller.uid));
}

Result callingIdentity() {
    const Peer peer;
    (void)note(peer.node(), 1, 0);
    const Caller oneWay = awaitNotes(peer.node(), 1).caller;
    const Parcel request;
    Parcel reply;
    const status_t status = peer.node()->transact(kCaller, request, &reply, 0);
    const Caller twoWay = callerIn(reply);
    const auto isUser = [](int32_t uid) { return uid == static_cast<int32_t>(getuid()); };
    return require(status == android::OK && twoWay.pid == getpid() && isUser(twoWay.uid) &&
                       (oneWay.pid == getpid() || oneWay.pid == 0) && isUser(oneWay.uid),
                   wordsOf(twoWay) + "; one-way " + wordsOf(oneWay));
}

Result incomingCalls() {
    android::ProcessState::self()->startThreadPool();
    const Peer peer;
    const sp<CallNode> mine = new CallNode();
    const int32_t status = callThrough(peer.node(), mine, 9, kOneWay);
    const bool isCalled = mine->waitForCall(9);
    return require(isCalled, isCalled
                                 ? "a one-way call arrived"
                                 : "none arrived within 5 s, status " + std::to_string(status));
}

}  // namespace

Rows callRows() {
    return {
        {"two-way-calls", "waits; a failure leaves the reply empty",
         "a failed call looks like an answer", twoWayCalls},
        {"one-way-calls",
         "returns at once; calls of one caller to one node arrive in order, one at a time; the "
         "reply stays empty",
         "stopAndFlush overtakes the say before it", oneWayCalls},
        {"overtaking", "nothing: over the kernel's driver it may overtake them",
         "nothing in the library; a service may be told deregisterCallback or setEnable before a "
         "say that was sent first, and has to expect it",
         overtaking},
        {"one-way-room", "nothing: over the driver it fails at once with FAILED_TRANSACTION",
         "the proxy returns 0 all the same, as its contract says: to the application the call has "
         "vanished without an event",
         oneWayRoom},
        {"one-way-to-own-objects", "runs here and fills the reply",
         "nothing: the library does not rely on either", oneWayToOwnObject},
        {"calls-at-once", "they do not wait for each other",
         "a slow call holds up all threads of the application", callsAtOnce},
        {"calling-identity",
         "the caller's; 0 in place of the pid of a one-way call, as over the driver, will do",
         "nothing in the library; a service refuses its clients, or takes one for another",
         callingIdentity},
        {"incoming-calls",
         "need threads of the runtime (ProcessState::startThreadPool), which the application "
         "starts",
         "without them there are no events, and no death is noticed", incomingCalls},
    };
}

}  // namespace check
