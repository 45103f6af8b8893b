// SPDX-License-Identifier: Apache-2.0
#include "bench/voxtrel/Peer.h"
#include "voxtrel/Client.h"

namespace {

class Facade : public bench::Speaker {
public:
    Facade() {
        mClient.onEvent([this](const voxtrel::Event& event) {
            if (event.kind == voxtrel::Event::Kind::Started) {
                noteStart();
            } else if (event.kind == voxtrel::Event::Kind::Ended) {
                noteEnd();
            }
        });
        mClient.waitUntilConnected(std::chrono::seconds(60)).value();
    }

    void say() override { (void)mClient.say("Hello, world."); }

private:
    voxtrel::Client mClient;
};

}  // namespace

int main() {
    Facade facade;
    return bench::serveBenchmark(facade);
}
