// SPDX-License-Identifier: Apache-2.0
#include "tests/client/ClientTest.h"

#include <ttscommon/ttscommon.h>

#include "client/SharedConnection.h"

namespace support {
namespace {

void forgetConnection() {
    TTS::TTSClientPrivate::mCbDeathNotifier.clear();
    TTS::TTSClientPrivate::m_cb.clear();
    TTS::gDeathNotifier.clear();
    TTS::gttsbinder.clear();
}

}  // namespace

void notified(unsigned int a, unsigned int b, unsigned int c) {
    note("notify " + std::to_string(a) + " " + std::to_string(b) + " " + std::to_string(c));
}

std::string callLine(const std::string& operation) {
    return platform::logged(2, "[Client] %s()\n", "[Client] " + operation + "()\n");
}

std::string keyLine(const std::string& operation, int32_t key) {
    return platform::logged(
        2, "[Client] %s(), global config = %d\n",
        "[Client] " + operation + "(), global config = " + std::to_string(key) + "\n");
}

std::string notSupportedLine() {
    return platform::logged(1, " Not Support \n", " Not Support \n");
}

std::string debugLine(int level, const std::string& format, const std::string& text) {
    const std::string head = "\x1b[1;33;40m >>>>Debug<<<< ";
    const std::string tail = " \x1b[0m\n";
    return platform::logged(level, head + format + tail, head + text + tail);
}

VOXTRELAPI_GCONF keyOf(int32_t value) {
    return static_cast<VOXTRELAPI_GCONF>(value);
}

ConnectionTest::ConnectionTest() {
    forgetConnection();
    INI_LANGUAGE_WITH_VOICES = "";
    platform::onPause(nullptr);
    platform::onLog(nullptr);
    platform::onMutex(nullptr);
    manager->service = service.binder;
    platform::giveServiceManager(manager);
    takeNotes();
}

ConnectionTest::~ConnectionTest() {
    platform::onMutex(nullptr);
    forgetConnection();
}

ClientTest::ClientTest() {
    takeNotes();
}

JoinedClientTest::JoinedClientTest() {
    client.connect();
    takeNotes();
}

}  // namespace support
