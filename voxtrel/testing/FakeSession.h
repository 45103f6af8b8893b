// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTING_FAKESESSION_H
#define VOXTREL_TESTING_FAKESESSION_H

#include <memory>

#include "voxtrel/session/Session.h"
#include "voxtrel/testing/FakeService.h"

namespace voxtrel::testing {

/// The session with a fake service, begun if there is none, which `client` has joined.
std::shared_ptr<Session> sessionOf(FakeService& service, const std::shared_ptr<Mailbox>& client);

}  // namespace voxtrel::testing

#endif
