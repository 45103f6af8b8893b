// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/testing/FakeService.h"

#include "voxtrel/testing/FakeHost.h"

namespace voxtrel::testing {

FakeService::FakeService() : mState(std::make_shared<FakeHost>()) {}

FakeService::~FakeService() {
    mState->end();
}

std::vector<std::string> FakeService::spoken() const {
    return mState->spoken();
}

bool FakeService::waitForSpoken(std::size_t count, std::chrono::milliseconds timeout) const {
    return mState->waitForSpoken(count, timeout);
}

std::vector<std::string> FakeService::requests() const {
    return mState->requests();
}

void FakeService::hold() {
    mState->hold(true);
}

void FakeService::goOn() {
    mState->hold(false);
}

void FakeService::refuseNext(Status why) {
    mState->refuseNext(why);
}

void FakeService::loseNextRequest() {
    mState->loseNextRequest();
}

void FakeService::loseNextEvent(Event::Kind kind) {
    mState->loseNextEvent(kind);
}

void FakeService::freeze() {
    mState->freeze(true);
}

void FakeService::thaw() {
    mState->freeze(false);
}

void FakeService::answerAfter(std::chrono::milliseconds delay) {
    mState->answerAfter(delay);
}

void FakeService::die() {
    mState->die();
}

void FakeService::shutDown() {
    mState->shutDown();
}

void FakeService::comeBack() {
    mState->comeBack();
}

void FakeService::stopByAnother() {
    mState->stopByAnother();
}

void FakeService::lockByAnother(std::uint32_t process) {
    mState->setHolder(process);
}

void FakeService::unlockByAnother() {
    mState->unlockByAnother();
}

}  // namespace voxtrel::testing
