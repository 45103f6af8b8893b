// SPDX-License-Identifier: Apache-2.0
// The service manager's requests byte for byte: a device's own manager reads them, and
// voxtrel-servicemanager reads those of other runtimes.
#include <binder/Binder.h>
#include <binder/IServiceManager.h>
#include <binder/Parcel.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "servicemanager/Registry.h"

namespace {

using android::BBinder;
using android::IBinder;
using android::IServiceManager;
using android::OK;
using android::Parcel;
using android::Registry;
using android::sp;
using android::status_t;
using android::String16;

using Bytes = std::vector<uint8_t>;

Bytes joined(const std::vector<Bytes>& parts) {
    Bytes all;
    for (const Bytes& part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

Bytes word(uint32_t value) {
    const auto* begin = reinterpret_cast<const uint8_t*>(&value);
    return {begin, begin + sizeof(value)};
}

// Length, units, a unit of 0, and zeros up to a whole word.
Bytes text(const std::string& ascii) {
    Bytes bytes = word(static_cast<uint32_t>(ascii.size()));
    for (const char letter : ascii + '\0') {
        const auto unit = static_cast<uint16_t>(letter);
        const auto* begin = reinterpret_cast<const uint8_t*>(&unit);
        bytes.insert(bytes.end(), begin, begin + sizeof(unit));
    }
    bytes.resize((bytes.size() + 3) / 4 * 4);
    return bytes;
}

// The strict-mode policy and the interface.
Bytes head(const std::string& interface = "android.os.IServiceManager") {
    return joined({word(0), text(interface)});
}

// Somebody else's service manager, which keeps the last request.
class ForeignManager : public BBinder {
public:
    uint32_t code = 0;
    Bytes request;
    std::vector<std::string> names;

protected:
    status_t onTransact(uint32_t asked, const Parcel& data, Parcel* reply, uint32_t) override {
        code = asked;
        request.assign(data.data(), data.data() + data.dataSize());
        if (asked != 4) {
            return reply->writeInt32(0);
        }
        const size_t number = request.at(request.size() - 8);
        return number < names.size() ? reply->writeString16(String16(names[number].c_str()))
                                     : android::NAME_NOT_FOUND;
    }
};

class ARequestToAForeignManager : public testing::Test {
protected:
    const sp<ForeignManager> mForeign = new ForeignManager();
    const sp<IServiceManager> mManager = IServiceManager::asInterface(mForeign);
};

TEST_F(ARequestToAForeignManager, ForAServiceIsCodeTwoWithItsName) {
    (void)mManager->checkService(String16("abc"));
    EXPECT_EQ(2U, mForeign->code);
    EXPECT_EQ(joined({head(), text("abc")}), mForeign->request);
}

TEST_F(ARequestToAForeignManager, ToAddAServiceIsCodeThreeWithNameBinderIsolationAndPriority) {
    EXPECT_EQ(OK, mManager->addService(String16("ab"), new BBinder(), true));
    EXPECT_EQ(3U, mForeign->code);
    const Bytes front = joined({head(), text("ab")});
    ASSERT_EQ(front.size() + 24 + 8, mForeign->request.size());
    EXPECT_EQ(front, Bytes(mForeign->request.begin(), mForeign->request.end() - 32));
    EXPECT_EQ(joined({word(1), word(8)}),
              Bytes(mForeign->request.end() - 8, mForeign->request.end()));
}

TEST_F(ARequestToAForeignManager,
       ForTheNamesIsCodeFourWithANumberAndAllPrioritiesUntilOneIsAbsent) {
    mForeign->names = {"b", "a"};
    const auto names = mManager->listServices();
    ASSERT_EQ(2U, names.size());
    EXPECT_TRUE(names[0] == String16("b"));
    EXPECT_TRUE(names[1] == String16("a"));
    EXPECT_EQ(4U, mForeign->code);
    EXPECT_EQ(joined({head(), word(2), word(15)}), mForeign->request);
}

class ARequestOfAForeignClient : public testing::Test {
protected:
    status_t ask(uint32_t code, const Bytes& request) {
        Parcel data;
        EXPECT_EQ(OK, data.setData(request.data(), request.size()));
        mReply.freeData();
        return mRegistry->transact(code, data, &mReply, 0);
    }

    const sp<Registry> mRegistry =
        new Registry([](android::transport::LogLevel, const std::string&) {}, {});
    Parcel mReply;
};

TEST_F(ARequestOfAForeignClient, FindsServicesAndTheirNames) {
    const sp<IBinder> service = new BBinder();
    ASSERT_EQ(OK, mRegistry->addService(String16("ab"), service));
    for (const uint32_t code : {1U, 2U}) {
        ASSERT_EQ(OK, ask(code, joined({head(), text("ab")})));
        EXPECT_TRUE(mReply.readStrongBinder() == service);
    }
    ASSERT_EQ(OK, ask(4, joined({head(), word(0)})));
    EXPECT_TRUE(mReply.readString16() == String16("ab"));
    EXPECT_NE(OK, ask(4, joined({head(), word(1)})));
}

TEST_F(ARequestOfAForeignClient, IsRefusedForAnotherInterface) {
    for (const uint32_t code : {1U, 2U, 3U, 4U}) {
        EXPECT_EQ(android::BAD_TYPE,
                  ask(code, joined({head("android.os.IServiceManageR"), text("ab")})));
    }
}

}  // namespace
