// SPDX-License-Identifier: Apache-2.0
// The service manager behind its stub: registrations, look-ups and deaths of any processes of any
// users in any order, and any bytes. It answers what a plain table of the same services would,
// keeps nobody's names for others, logs one line a change, and holds nothing of what has gone.
#include <unistd.h>

#include <iterator>
#include <map>
#include <memory>
#include <set>
#include <vector>

#include "binder/BpBinder.h"
#include "binder/Parcel.h"
#include "binder/ServiceOwner.h"
#include "binder/internal/ManagerToken.h"
#include "binder/internal/ServeCall.h"
#include "binder/transport/Reference.h"
#include "fuzz/Input.h"
#include "servicemanager/Registry.h"

namespace {

using namespace android;
using voxtrel_fuzz::Input;
using voxtrel_fuzz::require;

constexpr size_t kMaxServices = 1024;
constexpr size_t kMaxOfOtherUser = 512;
constexpr size_t kLongestName = 127;
constexpr unsigned kNodes = 8;
const uid_t kStranger = geteuid() + 1;
const uid_t kOther = geteuid() + 2;

/// A node of another process, which ends when the input says so; who watches may be told later.
struct Node {
    bool hasEnded = false;
    wp<BpBinder> watcher;
};

class NodeReference : public transport::Reference {
public:
    explicit NodeReference(std::shared_ptr<Node> node) : mNode(std::move(node)) { ++sLiving; }
    ~NodeReference() override { --sLiving; }

    status_t call(uint32_t, const Parcel&, Parcel*, uint32_t) override {
        return mNode->hasEnded ? DEAD_OBJECT : OK;
    }
    bool hasEnded() const override { return mNode->hasEnded; }
    status_t watch(const wp<BpBinder>& proxy) override {
        mNode->watcher = proxy;
        return OK;
    }
    void unwatch() override { mNode->watcher = wp<BpBinder>(); }

    static int sLiving;

private:
    const std::shared_ptr<Node> mNode;
};

int NodeReference::sLiving = 0;

class Manager {
public:
    explicit Manager(Input& input) : mInput(input) {
        for (Service& service : mServices) {
            service = newService();
        }
    }
    Manager(const Manager&) = delete;
    Manager& operator=(const Manager&) = delete;

    void run() {
        while (!mInput.isAtEnd()) {
            act(mInput.below(8));
        }
        lookAllUp();
        requireList();
        mNames.clear();
        mRegistry.clear();
        for (Service& service : mServices) {
            service = {};
        }
        require(NodeReference::sLiving == 0);
    }

private:
    struct Service {
        std::shared_ptr<Node> node;
        sp<BpBinder> proxy;
    };
    struct Entry {
        sp<BpBinder> service;
        uid_t owner;
        pid_t pid;
        std::shared_ptr<Node> node;
    };
    using Names = std::map<String16, Entry>;

    static Service newService() {
        auto node = std::make_shared<Node>();
        return {node, new BpBinder(std::make_unique<NodeReference>(node))};
    }

    void act(unsigned kind) {
        if (kind < 3) {
            const unsigned count = mInput.below(16);
            add(name(), count == 15 ? 200 : 1);
        } else if (kind == 3) {
            requireLookUp(name());
        } else if (kind == 4) {
            die();
        } else if (kind == 5) {
            requireList();
        } else {
            raw(kind == 7);
        }
    }

    String16 name() {
        static const char* const names[] = {"", "a", "b", "c", "reserved", "spoken \n word"};
        const unsigned choice = mInput.below(16);
        if (choice == 15) {
            return String16(std::string(mInput.below(200), 'n').c_str());
        }
        return String16(names[choice % 6]);
    }

    transport::Caller caller() {
        const uid_t users[] = {geteuid(), kStranger, kOther};
        return {static_cast<pid_t>(100 + mInput.below(4)), users[mInput.below(3)]};
    }

    status_t serve(const transport::Caller& from, uint32_t code, Parcel& request, Parcel& reply) {
        const status_t status = transport::serveCall(*mRegistry, from, code, request, &reply, 0);
        reply.setDataPosition(0);
        return status;
    }

    static status_t writeTo(Parcel& request, const String16& name) {
        writeManagerToken(request);
        return request.writeString16(name);
    }

    /// Under many names of the same beginning, if there is more than one.
    void add(const String16& base, unsigned count) {
        const transport::Caller from = caller();
        const unsigned place = mInput.below(kNodes + 1);
        for (unsigned i = 0; i < count; ++i) {
            String16 name = base;
            if (count > 1) {
                name = String16(
                    ("many" + std::to_string(mInput.below(4)) + "." + std::to_string(i)).c_str());
            }
            addOne(name, from, place < kNodes ? mServices[place] : Service());
        }
    }

    void addOne(const String16& name, const transport::Caller& from, const Service& service) {
        const status_t expected = answerTo(name, from.uid, service);
        Parcel request;
        Parcel reply;
        require(writeTo(request, name) == OK);
        require(request.writeStrongBinder(service.proxy) == OK);
        mLines = 0;
        require(serve(from, IServiceManager::ADD_SERVICE_TRANSACTION, request, reply) == OK);
        require(reply.readInt32() == expected);
        if (expected == OK) {
            require(mLines == 1);
            mNames[name] = {service.proxy, from.uid, from.pid, service.node};
        }
    }

    status_t answerTo(const String16& name, uid_t user, const Service& service) const {
        if (name.size() == 0 || name.size() > kLongestName || service.proxy == nullptr) {
            return BAD_VALUE;
        }
        const bool isReserved = name == String16("reserved");
        if (isReserved && user != kStranger) {
            return PERMISSION_DENIED;
        }
        if (service.node->hasEnded) {
            return DEAD_OBJECT;
        }
        const auto found = mNames.find(name);
        const bool isThere = found != mNames.end();
        if (isThere && found->second.owner != user && !found->second.node->hasEnded) {
            return PERMISSION_DENIED;
        }
        return isReserved || hasRoom(isThere ? &found->second : nullptr, user) ? OK : NO_MEMORY;
    }

    bool hasRoom(const Entry* old, uid_t user) const {
        if (old != nullptr && old->owner == user) {
            return true;
        }
        size_t held = 0;
        for (const auto& [name, entry] : mNames) {
            held += entry.owner == user ? 1 : 0;
        }
        return (old != nullptr || mNames.size() < kMaxServices) &&
               (user == geteuid() || held < kMaxOfOtherUser);
    }

    /// The whole of what it tells of a name; of one that has died it knows nothing afterwards.
    void requireLookUp(const String16& name) {
        static const uint32_t codes[] = {IServiceManager::GET_SERVICE_TRANSACTION,
                                         IServiceManager::CHECK_SERVICE_TRANSACTION,
                                         GET_OWNED_SERVICE_TRANSACTION};
        const auto found = mNames.find(name);
        const bool isThere = found != mNames.end() && !found->second.node->hasEnded;
        for (const uint32_t code : codes) {
            Parcel request;
            Parcel reply;
            (void)writeTo(request, name);
            require(serve({1, kOther}, code, request, reply) == OK);
            const sp<IBinder> service = reply.readStrongBinder();
            require((service != nullptr) == isThere);
            require(!isThere || service.get() == found->second.service.get());
            if (isThere && code == GET_OWNED_SERVICE_TRANSACTION) {
                require(reply.readUint32() == found->second.owner);
                require(reply.readInt32() == found->second.pid);
            }
        }
        if (!isThere) {
            mNames.erase(name);
        }
    }

    void lookAllUp() {
        const Names names = mNames;
        for (const auto& [name, entry] : names) {
            requireLookUp(name);
        }
    }

    void requireList() {
        std::set<String16> names;
        for (const auto& [name, entry] : mNames) {
            names.insert(name);
        }
        for (size_t place = 0; place < mNames.size(); ++place) {
            Parcel reply;
            require(list(place, reply) == OK);
            require(names.erase(reply.readString16()) == 1);
        }
        Parcel reply;
        require(list(mNames.size(), reply) != OK);
    }

    status_t list(size_t place, Parcel& reply) {
        Parcel request;
        writeManagerToken(request);
        request.writeInt32(static_cast<int32_t>(place));
        return serve({1, kOther}, IServiceManager::LIST_SERVICES_TRANSACTION, request, reply);
    }

    /// A new process comes in its place. Its end is told at once, or not before somebody asks.
    void die() {
        Service& service = mServices[mInput.below(kNodes)];
        const std::shared_ptr<Node> node = service.node;
        node->hasEnded = true;
        const sp<BpBinder> watcher = node->watcher.promote();
        if (mInput.below(2) == 1 && watcher != nullptr) {
            watcher->reportDeath();
            for (auto entry = mNames.begin(); entry != mNames.end();) {
                entry = entry->second.node == node ? mNames.erase(entry) : std::next(entry);
            }
        }
        service = newService();
    }

    void raw(bool hasToken) {
        const transport::Caller from = caller();
        const uint32_t code = mInput.below(64) == 63 ? mInput.word() : mInput.below(8);
        const std::vector<uint8_t> image = mInput.bytes(mInput.byte());
        Parcel request;
        if (hasToken) {
            writeManagerToken(request);
        }
        if (!image.empty()) {
            request.write(image.data(), image.size());
        }
        Parcel reply;
        (void)serve(from, code, request, reply);
        lookAllUp();  // as the request may have done
    }

    Input& mInput;
    Service mServices[kNodes];
    Names mNames;
    unsigned mLines = 0;
    sp<Registry> mRegistry = new Registry(
        [this](transport::LogLevel, const std::string& line) {
            ++mLines;
            for (const char character : line) {
                require(character >= 0x20 && character < 0x7F);
            }
        },
        {{String16("reserved"), kStranger}});
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Input input(data, size);
    Manager(input).run();
    return 0;
}
