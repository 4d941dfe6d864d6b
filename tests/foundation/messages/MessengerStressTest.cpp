#include "foundation/messages/FMessage.h"
#include "foundation/messages/FMessenger.h"

#include <qorl/Ref.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

// Eight threads post to a thousand targets that come and go. QORL_STRESS_MESSAGES in the environment sets the
// number of messages: 1000000 takes some seconds in an optimised build.

namespace qorl {
namespace {

constexpr uint32_t threadCount = 8;
constexpr uint32_t targetCount = 1000;
constexpr uint32_t standardMessages = 20000;
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
    std::atomic<uint32_t> faults{0}; ///< Delivered to a dead target, or out of order.
};

std::atomic<int64_t> liveMessages;
std::atomic<int64_t> liveTargets;

struct Parcel : FMessage {
    Parcel(std::shared_ptr<Account> to, uint32_t fromThread, uint32_t count)
        : FMessage("Parcel"), account(std::move(to)), thread(fromThread), number(count) {
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
    if (account->isClosed || parcel.account != account || parcel.number <= last[parcel.thread])
        ++account->faults;
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
            const std::lock_guard guard(house.mutex);
            if (!house.tenant)
                continue;
            ++house.tenant->account->posted;
            messenger.post(house.tenant.get(), make<Parcel>(house.tenant->account, thread, number));
        }
        ++finished;
    }
    FMessenger messenger;
    std::array<House, targetCount> houses;
    std::array<std::vector<std::shared_ptr<Account>>, threadCount> accounts;
    std::atomic<uint32_t> finished{0};
};

TEST(MessengerStress, NothingIsLostAndNothingReachesADeadTarget) {
    const auto town = std::make_unique<Town>();
    for (House& house : town->houses)
        house.moveIn(town->messenger, town->accounts[0]);
    const uint32_t perThread = messageCount() / threadCount;
    std::vector<std::thread> threads;
    for (uint32_t thread = 0; thread < threadCount; ++thread)
        threads.emplace_back([&, thread] { town->postFrom(thread, perThread); });
    while (town->finished < threadCount)
        town->messenger.deliverPending();
    for (std::thread& thread : threads)
        thread.join();
    town->messenger.deliverPending();
    EXPECT_FALSE(town->messenger.hasPending());

    uint64_t delivered = 0;
    for (const auto& accounts : town->accounts)
        for (const auto& account : accounts) {
            EXPECT_EQ(account->faults, 0u);
            EXPECT_EQ(account->posted, account->delivered + account->discarded);
            if (!account->isClosed) {
                EXPECT_EQ(account->discarded, 0u) << "a target that stayed lost a message";
            }
            delivered += account->delivered;
        }
    EXPECT_GT(delivered, perThread);
    EXPECT_EQ(liveMessages, 0);
    for (House& house : town->houses)
        house.tenant.reset();
    EXPECT_EQ(liveTargets, 0);
}

} // namespace
} // namespace qorl
