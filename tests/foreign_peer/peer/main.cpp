// SPDX-License-Identifier: Apache-2.0
// A process that speaks the driver's protocol with a runtime of its own, as far as it has one, for
// tests of how this project's runtime gets on with others. It does what its input asks, a line
// each:
//
//   call HANDLE CODE FLAGS LAYOUT ITEM...   see Script.h; '-' is an empty layout
//   release HANDLE
//   watch HANDLE COOKIE, unwatch HANDLE COOKIE
//   manage number|object|stable             becomes the service manager (see Names.h)
//   forget                                  lets go of all names
//
// and answers with a line that begins with '='. Other lines tell what happens meanwhile. Its own
// nodes, which have the numbers that a test gives them, serve the calls of `TestCode`.
#include <poll.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "tests/foreign_peer/peer/Names.h"
#include "tests/foreign_peer/peer/Peer.h"
#include "tests/foreign_peer/peer/Script.h"

namespace {

using foreign::Answer;
using foreign::Image;
using foreign::ImageReader;
using foreign::Incoming;
using foreign::Outgoing;
using foreign::Peer;
using foreign::Words;

constexpr int32_t kUnknownTransaction = -74;

void tell(const std::string& line) {
    std::printf("%s\n", line.c_str());
    std::fflush(stdout);
}

/// What the nodes of this process do.
enum TestCode : uint32_t {
    kNotify = 1,  ///< anything -> int32 1
    kNest = 7,    ///< object, int32 depth: asks it the same with depth - 1 -> int32 calls made
    kSum = 10,    ///< int32 a, b -> int32 a + b
    kFail = 11,   ///< -> status -42
    kHang = 12,   ///< does not return
};

class Program {
public:
    explicit Program(const char* path)
        : mPeer(
              path, [this](const Incoming& call) { return serve(call); }, tell,
              [this](uint64_t cookie) { mNames.died(cookie); }),
          mNames([this](uint32_t handle, uint64_t cookie) { mPeer.requestDeath(handle, cookie); }) {
    }

    int run();

private:
    Outgoing serve(const Incoming& call);
    Outgoing serveNode(const Incoming& call);
    Outgoing nest(const Incoming& call);
    bool readInput();
    std::string carryOut(const Words& words);
    std::string manage(const std::string& shape);

    Peer mPeer;
    foreign::Names mNames;
    bool mIsManager = false;
    std::string mInput;
};

Outgoing Program::serve(const Incoming& call) {
    if (call.node == 0 && mIsManager) {
        return mNames.serve(call);
    }
    tell("called " + std::to_string(call.node) + ' ' + std::to_string(call.code) +
         ((call.flags & TF_ONE_WAY) != 0 ? " one-way pid " : " two-way pid ") +
         std::to_string(call.pid) + " uid " + std::to_string(call.uid) + ':' + textOf(call.data));
    return serveNode(call);
}

Outgoing Program::serveNode(const Incoming& call) {
    Outgoing answer;
    ImageReader request(call.data);
    switch (call.code) {
        case B_PACK_CHARS('_', 'P', 'N', 'G'):
            return answer;
        case B_PACK_CHARS('_', 'N', 'T', 'F'):
            answer.data.text16("foreign.INode");
            return answer;
        case kNotify:
            answer.data.int32(1);
            return answer;
        case kSum: {
            const int32_t first = request.int32().value_or(0);
            answer.data.int32(first + request.int32().value_or(0));
            return answer;
        }
        case kNest:
            return nest(call);
        case kFail:
            return {-42, {}};
        case kHang:
            for (;;) {
                pause();
            }
        default:
            return {kUnknownTransaction, {}};
    }
}

Outgoing Program::nest(const Incoming& call) {
    ImageReader request(call.data);
    const flat_binder_object other = request.object().value_or(flat_binder_object{});
    const int32_t depth = request.int32().value_or(0);
    Outgoing outgoing;
    int32_t calls = 0;
    if (depth > 0) {
        Image inner;
        inner.node(call.node);
        inner.int32(depth - 1);
        const Answer answer = mPeer.call(other.handle, kNest, 0, inner);
        calls = 1 + ImageReader(answer.data).int32().value_or(-1000);
    }
    outgoing.data.int32(calls);
    return outgoing;
}

std::string Program::manage(const std::string& shape) {
    mNames.setShape(shape == "number"   ? foreign::Shape::Number
                    : shape == "object" ? foreign::Shape::Object
                                        : foreign::Shape::Stable);
    mIsManager = mPeer.becomeContextManager();
    return mIsManager ? "manages" : "busy";
}

std::string Program::carryOut(const Words& words) {
    const auto number = [&words](size_t index) {
        return index < words.size() ? std::stoull(words[index], nullptr, 0) : 0;
    };
    const std::string command = words.empty() ? "" : words[0];
    const auto handle = static_cast<uint32_t>(command != "manage" ? number(1) : 0);
    if (command == "call" && words.size() > 4) {
        const Answer answer =
            mPeer.call(handle, static_cast<uint32_t>(number(2)), static_cast<uint32_t>(number(3)),
                       foreign::imageOf(words, 5));
        return textOf(answer, words[4] == "-" ? "" : words[4]);
    }
    if (command == "release") {
        mPeer.release(handle);
    } else if (command == "watch") {
        mPeer.requestDeath(handle, number(2));
    } else if (command == "unwatch") {
        mPeer.clearDeath(handle, number(2));
    } else if (command == "forget") {
        mNames.forget();
    } else if (command == "manage" && words.size() > 1) {
        return manage(words[1]);
    } else {
        return "unknown";
    }
    return "done";
}

/// False at the end of the input.
bool Program::readInput() {
    char bytes[1024];
    const ssize_t size = read(STDIN_FILENO, bytes, sizeof(bytes));
    if (size <= 0) {
        return false;
    }
    mInput.append(bytes, static_cast<size_t>(size));
    for (size_t end = 0; (end = mInput.find('\n')) != std::string::npos;) {
        const std::string line = mInput.substr(0, end);
        mInput.erase(0, end + 1);
        tell("= " + carryOut(foreign::wordsOf(line)));
    }
    return true;
}

int Program::run() {
    for (;;) {
        pollfd waited[] = {{mPeer.descriptor(), POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}};
        (void)poll(waited, 2, -1);  // interrupted: looks again
        if ((waited[0].revents & POLLIN) != 0) {
            mPeer.work();
        }
        if (waited[1].revents != 0 && !readInput()) {
            return 0;
        }
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: foreign_peer DEVICE [UID]\n");
        return 2;
    }
    if (argc > 2 && setuid(static_cast<uid_t>(std::stoul(argv[2]))) != 0) {
        std::perror("setuid");
        return 1;
    }
    return Program(argv[1]).run();
}
