// SPDX-License-Identifier: Apache-2.0
// An application that says long texts through the interface for applications, which sends them in
// pieces. For each line "SIZE N" on standard input it says a text of so many bytes N times, and
// prints a line: microseconds from say to the started event and to the end, for each.
#include <sys/prctl.h>

#include <chrono>
#include <condition_variable>
#include <csignal>
#include <iostream>
#include <mutex>
#include <string>

#include "bench/scale/Board.h"
#include "voxtrel/Client.h"

namespace bench {
namespace {

class Reader {
public:
    Reader() {
        mClient.onEvent([this](const voxtrel::Event& event) { come(event.kind); });
        mClient.waitUntilConnected(std::chrono::seconds(60)).value();
    }

    void read(const std::string& text) {
        mEndedNs = 0;
        const int64_t called = nowNs();
        (void)mClient.say(text);
        std::unique_lock<std::mutex> lock(mMutex);
        mCame.wait(lock, [this] { return mEndedNs != 0; });
        print(mStartedNs - called);
        print(mEndedNs - called);
    }

private:
    void come(voxtrel::Event::Kind kind) {
        const int64_t now = nowNs();
        const std::lock_guard<std::mutex> lock(mMutex);
        if (kind == voxtrel::Event::Kind::Started) {
            mStartedNs = now;
        } else if (kind == voxtrel::Event::Kind::Ended) {
            mEndedNs = now;
            mCame.notify_all();
        }
    }

    static void print(int64_t nanoseconds) {
        std::cout << ' ' << static_cast<double>(nanoseconds) / 1000.0;
    }

    std::mutex mMutex;
    std::condition_variable mCame;
    int64_t mStartedNs = 0;
    int64_t mEndedNs = 0;
    voxtrel::Client mClient;
};

std::string textOf(size_t size) {
    std::string text;
    while (text.size() < size) {
        text += "In two hundred metres, turn left into Station Road. ";
    }
    text.resize(size);
    return text;
}

void obey(Reader& reader) {
    size_t size = 0;
    int rounds = 0;
    while (std::cin >> size >> rounds) {
        const std::string text = textOf(size);
        for (int n = 0; n < rounds; ++n) {
            reader.read(text);
        }
        std::cout << std::endl;
    }
}

}  // namespace
}  // namespace bench

int main() {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    bench::Reader reader;
    bench::obey(reader);
    return 0;
}
