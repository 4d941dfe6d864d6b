#include "foundation/threads/ParallelQueue.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <numeric>
#include <string>
#include <vector>

namespace qorl {
namespace {

/// Runs everything backwards on the calling thread, and writes down what it was asked.
class ProbeService : public ParallelService {
public:
    struct Queue : ParallelWorkQueue {
        explicit Queue(std::string given) : name(std::move(given)) {}
        std::string name;
    };

    std::shared_ptr<ParallelWorkQueue> createQueue(const char* name, uint32_t flags,
                                                   int32_t priority) override {
        return std::make_shared<Queue>(std::string(name) + "/" + std::to_string(flags) + "/" +
                                       std::to_string(priority));
    }
    std::shared_ptr<ParallelWorkQueue> findQueue(uint32_t) override { return nullptr; }
    void run(ParallelWorkQueue* queue, void* first, int64_t count, const ItemFunction& function) override {
        calls += (queue ? static_cast<Queue*>(queue)->name : "any") + ":" + std::to_string(count) + " ";
        while (count > 0)
            function(first, --count);
    }

    std::string calls;
};

std::string nameOf(const ParallelWorkQueue* queue) {
    return queue ? static_cast<const ProbeService::Queue*>(queue)->name : "none";
}

class ParallelQueueTest : public ::testing::Test {
protected:
    ~ParallelQueueTest() override { ParallelQueue::service().reset(); }

    std::shared_ptr<ProbeService> bring() {
        auto service = std::make_shared<ProbeService>();
        ParallelQueue::service() = service;
        return service;
    }
    static std::vector<int> visited(int count) {
        std::vector<int> items(static_cast<size_t>(count));
        std::iota(items.begin(), items.end(), 0);
        std::vector<int> order;
        transformItems(items.data(), count, [&order](int& item) {
            order.push_back(item);
            item = -1;
        });
        EXPECT_EQ(std::count(items.begin(), items.end(), -1), count) << "each item itself, not a copy";
        return order;
    }
};

TEST_F(ParallelQueueTest, WithoutAServiceItemsKeepTheirOrder) {
    EXPECT_EQ(ParallelQueue::service(), nullptr);
    EXPECT_EQ(visited(4), (std::vector{0, 1, 2, 3}));
    EXPECT_EQ(visited(0), std::vector<int>{});

    SerialQueueUser user(nullptr, 3);
    EXPECT_EQ(user.queue(), nullptr);
    int runs = 0;
    user.run([&runs] { ++runs; });
    EXPECT_EQ(runs, 1) << "at once";
}

TEST_F(ParallelQueueTest, AServiceGetsTwoItemsAndMoreInOneCall) {
    const auto service = bring();
    EXPECT_EQ(visited(1), std::vector{0});
    EXPECT_EQ(service->calls, "");
    EXPECT_EQ(visited(2), (std::vector{1, 0}));
    EXPECT_EQ(service->calls, "any:2 ");
}

TEST_F(ParallelQueueTest, ASerialUserTakesItsQueueOrMakesOne) {
    const auto service = bring();
    SerialQueueUser own(nullptr, 3);
    EXPECT_EQ(nameOf(own.queue()), "FutureSerialQueue/0/3");
    SerialQueueUser given(service->createQueue("given", 5, 6));
    EXPECT_EQ(nameOf(given.queue()), "given/5/6");
    int runs = 0;
    given.run([&runs] { ++runs; });
    EXPECT_EQ(service->calls, "given/5/6:1 ");
    EXPECT_EQ(runs, 1);
}

TEST_F(ParallelQueueTest, TheHooksMakeAndDropTheQueueOfTheRedraw) {
    EXPECT_TRUE(ParallelQueue::createPreRenderQueue());
    EXPECT_EQ(nameOf(ParallelQueue::preRenderQueue().get()), "none");
    bring();
    EXPECT_TRUE(ParallelQueue::createPreRenderQueue());
    EXPECT_EQ(nameOf(ParallelQueue::preRenderQueue().get()), "UWindow PreRender/1/0");
    EXPECT_TRUE(ParallelQueue::dropPreRenderQueue());
    EXPECT_EQ(nameOf(ParallelQueue::preRenderQueue().get()), "none");
}

} // namespace
} // namespace qorl
