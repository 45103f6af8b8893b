// SPDX-License-Identifier: Apache-2.0
#include "voxtrel/testing/FakeSession.h"
namespace voxtrel::testing {
std::shared_ptr<Session> sessionOf(FakeService&, const std::shared_ptr<Mailbox>& c) { return Session::ofProcess(c); }
}
