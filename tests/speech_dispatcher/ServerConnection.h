// SPDX-License-Identifier: Apache-2.0
#ifndef VOXTREL_TESTS_SPEECH_DISPATCHER_SERVERCONNECTION_H
#define VOXTREL_TESTS_SPEECH_DISPATCHER_SERVERCONNECTION_H

#include <string>

namespace voxtrel_test {

/// A connection to speech-dispatcher as a screen reader has one, for what spd-say cannot ask.
class ServerConnection {
public:
    /// @param socket where the server listens.
    explicit ServerConnection(const std::string& socket);
    ~ServerConnection();
    ServerConnection(const ServerConnection&) = delete;
    ServerConnection& operator=(const ServerConnection&) = delete;

    void say(const std::string& line);

    /// Reads up to a line that begins so; fails the test if there is none for a generous time.
    void await(const std::string& begin);

    /// A line, and the answer that it must have.
    void ask(const std::string& line, const std::string& answer) {
        say(line);
        await(answer);
    }

private:
    std::string readLine();

    const int mSocket;
    std::string mBuffer;
};

}  // namespace voxtrel_test

#endif
