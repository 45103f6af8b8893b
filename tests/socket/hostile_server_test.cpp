// SPDX-License-Identifier: Apache-2.0
// A service manager that answers badly, on purpose: a call to it fails, and nothing else does.
#include <binder/ProcessState.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "tests/platform/ProbeTest.h"
#include "tests/socket/RawWire.h"

namespace {

using android::IBinder;
using android::OK;
using android::sp;
using raw::Bytes;
using raw::Words;
using voxtrel_test::eventually;

Words reply(uint32_t payload = 0, uint32_t objects = 0) {
    Words made;
    made.kind = raw::kReply;
    made.payloadSize = payload;
    made.objects = objects;
    return made;
}

// A service manager of the test's own that answers as it likes.
class AHostileServer : public testing::Test {
protected:
    void SetUp() override {
        char folder[] = "/tmp/voxtrel-test-XXXXXX";
        ASSERT_TRUE(mkdtemp(folder) != nullptr);
        mPath = std::string(folder) + "/binder";
        setenv("VOXTREL_BINDER_SOCKET", mPath.c_str(), 1);
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, mPath.data(), mPath.size());
        ASSERT_EQ(0, bind(mListener.get(), reinterpret_cast<sockaddr*>(&address), sizeof(address)));
        ASSERT_EQ(0, listen(mListener.get(), 8));
    }
    void TearDown() override {
        unlink(mPath.c_str());
        rmdir(mPath.substr(0, mPath.rfind('/')).c_str());
    }

    enum class Then { ExpectHangUp, Leave, LeaveWithTheControl };

    // Lets one call come in, answers it with these bytes, and gives its result.
    android::status_t answerOnce(const Bytes& bytes, int fd, Then then) {
        std::thread server([&] {
            auto control = std::make_unique<raw::Fd>(accept(mListener.get(), nullptr, nullptr));
            const raw::Fd calls = raw::receiveFd(control->get());
            (void)raw::receive(calls.get());
            if (then == Then::LeaveWithTheControl) {
                control.reset();
                return;
            }
            EXPECT_TRUE(
                raw::send(calls.get(), bytes, fd >= 0 ? std::vector<int>{fd} : std::vector<int>{}));
            if (then == Then::ExpectHangUp) {
                EXPECT_TRUE(raw::hangsUp(calls.get()));
            }
        });
        const sp<IBinder> manager = android::ProcessState::self()->getContextObject(nullptr);
        android::Parcel answer;
        const android::status_t status =
            manager->transact(IBinder::PING_TRANSACTION, android::Parcel(), &answer);
        EXPECT_EQ(0U, answer.dataSize());
        server.join();
        return status;
    }

    void expectFailure(const Bytes& bytes, int fd = -1) {
        EXPECT_EQ(android::FAILED_TRANSACTION, answerOnce(bytes, fd, Then::ExpectHangUp));
    }

    std::string mPath;
    raw::Fd mListener{socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0)};
};

TEST_F(AHostileServer, MakesACallFailWithAReplyThatMakesNoSense) {
    const raw::Fd null(open("/dev/null", O_RDONLY | O_CLOEXEC));
    Words request;
    request.kind = raw::kRequest;
    request.code = 1;
    expectFailure(Bytes(3));
    expectFailure(raw::packet(request));
    expectFailure(raw::packet(reply(0x7FFFFFFF)));
    expectFailure(raw::packet(reply(24, 1), raw::joined(Bytes(24), raw::record(0, 5))), null.get());
}

TEST_F(AHostileServer, LeavesNoDescriptorBehindThatItHasNotAnnounced) {
    const raw::Fd null(open("/dev/null", O_RDONLY | O_CLOEXEC));
    EXPECT_EQ(OK, answerOnce(raw::packet(reply()), -1, Then::Leave));
    const int before = probe::descriptors();
    EXPECT_EQ(OK, answerOnce(raw::packet(reply()), null.get(), Then::Leave));
    EXPECT_TRUE(eventually([before] { return probe::descriptors() <= before; }));
}

TEST_F(AHostileServer, ThatGoesAwayIsDead) {
    EXPECT_EQ(android::DEAD_OBJECT, answerOnce({}, -1, Then::LeaveWithTheControl));
}

TEST_F(AHostileServer, MayAnswerSoundly) {
    EXPECT_EQ(OK, answerOnce(raw::packet(reply()), -1, Then::Leave));
}

}  // namespace
