#include "foundation/messages/FMessage.h"
#include "foundation/messages/FMessenger.h"

#include <qorl/Ref.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <gtest/gtest.h>
#include <malloc.h>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

// Eight threads post to a thousand targets that come and go, in two rounds. QORL_STRESS_MESSAGES in the
// environment sets the number of messages: 1000000 takes some seconds in an optimised build.

namespace qorl {
namespace {

constexpr uint32_t threadCount = 8;
constexpr uint32_t targetCount = 1000;
constexpr uint32_t standardMessages = 40000;
/// One in so many posts replaces the target, and one in so many deliveries too.
constexpr uint32_t replacedInPost = 50;
constexpr uint32_t replacedInDelivery = 200;

uint32_t messageCount() {
    const char* asked = std::getenv("QORL_STRESS_MESSAGES");
    const auto count = static_cast<uint32_t>(asked ? std::strtoul(asked, nullptr, 10) : 0);
    return count > 0 ? count : standardMessages;
}

/// What became of the messages of one target; outlives it.
struct Account {
    std::atomic<uint32_t> posted{0};
    std::atomic<uint32_t> delivered{0};
    std::atomic<uint32_t> discarded{0};
    std::atomic<bool> isClosed{false};
    std::atomic<uint32_t> faults{0}; ///< Delivered to a dead target, out of order, or changed.
};

std::atomic<int64_t> liveMessages;
std::atomic<int64_t> liveTargets;

struct Parcel : FMessage {
    Parcel(std::shared_ptr<Account> to, uint32_t fromThread, uint32_t count, uint32_t passes)
        : FMessage("Parcel"), account(std::move(to)), thread(fromThread), number(count), delay(passes) {
        ++liveMessages;
    }
    ~Parcel() override {
        if (!isDelivered)
            ++account->discarded;
        --liveMessages;
    }
    std::shared_ptr<Account> account;
    uint32_t thread;
    uint32_t number;
    uint32_t delay;
    bool isDelivered = false;
};

struct House;

struct Tenant : CmObject {
    Tenant(House& home, FMessenger& from) : house(home), messenger(from) { ++liveTargets; }
    ~Tenant() override {
        messenger.cancelAll(this);
        account->isClosed = true;
        --liveTargets;
    }
    int32_t handleMessage(FMessage* message) override;

    House& house;
    FMessenger& messenger;
    std::shared_ptr<Account> account = std::make_shared<Account>();
    std::array<uint32_t, threadCount> last{};
};

/// Holds one target after the other.
struct House {
    void moveIn(FMessenger& messenger, std::vector<std::shared_ptr<Account>>& accounts) {
        Ref<Tenant> next = make<Tenant>(*this, messenger);
        accounts.push_back(next->account);
        {
            const std::lock_guard guard(mutex);
            std::swap(next, tenant);
        }
    }
    std::mutex mutex;
    Ref<Tenant> tenant;
};

int32_t Tenant::handleMessage(FMessage* message) {
    auto& parcel = static_cast<Parcel&>(*message);
    const bool isLate = parcel.delay == 0 && parcel.number <= last[parcel.thread];
    if (account->isClosed || parcel.account != account || isLate)
        ++account->faults;
    if (parcel.hasAttributes() && parcel.getInt("Number") != parcel.number)
        ++account->faults;
    if (parcel.delay == 0)
        last[parcel.thread] = parcel.number;
    parcel.isDelivered = true;
    ++account->delivered;
    // Moves out in the middle of its message, from time to time.
    if (parcel.number % replacedInDelivery == 0) {
        Ref<Tenant> leaving;
        const std::lock_guard guard(house.mutex);
        if (house.tenant == this)
            std::swap(leaving, house.tenant);
    }
    return handled;
}

struct Town {
    void postFrom(uint32_t thread, uint32_t count) {
        uint32_t state = thread + 1;
        for (uint32_t number = 1; number <= count; ++number) {
            state = state * 1664525 + 1013904223;
            House& house = houses[(state >> 8) % targetCount];
            if (number % replacedInPost == 0)
                house.moveIn(messenger, accounts[thread]);
            const uint32_t delay = number % 8 == 0 ? number / 8 % 3 : 0;
            const std::lock_guard guard(house.mutex);
            if (!house.tenant)
                continue;
            const Ref<Parcel> parcel = make<Parcel>(house.tenant->account, thread, number, delay);
            if (number % 4 == 0)
                parcel->setInt("Number", number);
            ++house.tenant->account->posted;
            messenger.post(house.tenant.get(), parcel, FMessenger::Duplicates::allow, delay);
        }
        ++finished;
    }
    /// All of one life, from the first tenant to the last one.
    void run(uint32_t perThread) {
        finished = 0;
        for (House& house : houses)
            house.moveIn(messenger, accounts[0]);
        std::vector<std::thread> threads;
        for (uint32_t thread = 0; thread < threadCount; ++thread)
            threads.emplace_back([this, thread, perThread] { postFrom(thread, perThread); });
        while (finished < threadCount || messenger.hasPending())
            messenger.deliverPending();
        for (std::thread& thread : threads)
            thread.join();
        uint64_t delivered = 0;
        for (auto& some : accounts) {
            for (const auto& account : some) {
                EXPECT_EQ(account->faults, 0u);
                EXPECT_EQ(account->posted, account->delivered + account->discarded);
                if (!account->isClosed) {
                    EXPECT_EQ(account->discarded, 0u) << "a target that stayed lost a message";
                }
                delivered += account->delivered;
            }
            std::vector<std::shared_ptr<Account>>().swap(some);
        }
        EXPECT_GT(delivered, perThread);
        EXPECT_EQ(liveMessages, 0);
        for (House& house : houses)
            house.tenant.reset();
        EXPECT_EQ(liveTargets, 0);
    }
    FMessenger messenger;
    std::array<House, targetCount> houses;
    std::array<std::vector<std::shared_ptr<Account>>, threadCount> accounts;
    std::atomic<uint32_t> finished{0};
};

/// What the program holds of the heap. Sanitizers have a heap of their own, which isn't counted here.
size_t liveBytes() {
    const auto info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

TEST(MessengerStress, NothingIsLostAndNothingReachesADeadTarget) {
    const auto town = std::make_unique<Town>();
    const uint32_t perThread = messageCount() / threadCount / 2;
    // What a thread keeps of freed blocks for itself is far less.
    const size_t allowed = liveBytes() + size_t{8} * threadCount * perThread;
    for (const char* round : {"first", "second"}) {
        SCOPED_TRACE(round);
        town->run(perThread);
        EXPECT_LT(liveBytes(), allowed) << "the messenger keeps memory";
    }
}

} // namespace
} // namespace qorl
