// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_CLIENT_CLIENTTEST_H
#define VOXTREL_TESTS_CLIENT_CLIENTTEST_H

#include <gtest/gtest.h>

#include <string>

#include "client/TTSClientPrivate.h"
#include "tests/client/Platform.h"
#include "tests/support/FakeServiceManager.h"
#include "tests/support/Journal.h"
#include "tests/support/ScriptedService.h"

namespace support {

/// The application's function: notes "notify a b c" in the journal.
void notified(unsigned int a, unsigned int b, unsigned int c);

// The journal's lines for log lines that many operations share.
std::string callLine(const std::string& operation);  // "[Client] %s()\n"
std::string keyLine(const std::string& operation,
                    int32_t key);  // "[Client] %s(), global config..."
std::string notSupportedLine();    // " Not Support \n"
std::string debugLine(int level, const std::string& format, const std::string& text);  // in colours

VOXTRELAPI_GCONF keyOf(int32_t value);

/// A process without a connection, a service that can be found, and an empty filter.
class ConnectionTest : public testing::Test {
protected:
    ConnectionTest();
    ~ConnectionTest() override;

    ScriptedService service;
    android::sp<FakeServiceManager> manager = new FakeServiceManager;
};

/// A client that is not connected; the journal starts empty.
class ClientTest : public ConnectionTest {
protected:
    ClientTest();

    TTS::TTSClientPrivate client{"app", notified};
};

/// A client that has joined the service; the journal starts empty.
class JoinedClientTest : public ClientTest {
protected:
    JoinedClientTest();
};

}  // namespace support

#endif
