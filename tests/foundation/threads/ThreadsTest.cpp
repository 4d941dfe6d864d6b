#include "foundation/threads/FLock.h"
#include "foundation/threads/FThread.h"

#include <gtest/gtest.h>
#include <thread>
#include <vector>

namespace qorl {
namespace {

TEST(FLock, IsTakenAgainByItsHolderOnly) {
    FLock lock;
    const auto otherMayEnter = [&lock] {
        bool entered = false;
        std::thread([&] {
            entered = lock.tryLock();
            if (entered)
                lock.unlock();
        }).join();
        return entered;
    };
    lock.lock();
    EXPECT_TRUE(lock.tryLock());
    EXPECT_FALSE(otherMayEnter());
    lock.unlock();
    EXPECT_FALSE(otherMayEnter()) << "as often unlocked as locked";
    lock.unlock();
    EXPECT_TRUE(otherMayEnter());
    {
        const FGuard guard(lock);
        EXPECT_FALSE(otherMayEnter());
    }
    EXPECT_TRUE(otherMayEnter());
}

class Worker : public FThread {
public:
    Worker() : FThread("Test Worker") {}
    uint32_t run() override {
        isCurrentInside = isCurrent();
        idInside = getThreadId();
        entered.set();
        mayEnd.wait();
        return 7;
    }
    platform::Event entered{platform::Reset::manual};
    platform::Event mayEnd{platform::Reset::manual};
    bool isCurrentInside = false;
    uint32_t idInside = 0;
};

TEST(FThread, RunsOnAThreadOfItsOwnUntilItEnds) {
    Worker worker;
    EXPECT_TRUE(worker.join(0)) << "never started";
    EXPECT_FALSE(worker.isStarted());
    ASSERT_TRUE(worker.start());
    worker.entered.wait();
    EXPECT_TRUE(worker.isCurrentInside);
    EXPECT_FALSE(worker.isCurrent());
    EXPECT_EQ(worker.idInside, worker.getThreadId());
    EXPECT_NE(worker.idInside, platform::currentThreadId());
    EXPECT_FALSE(worker.join(0));
    worker.mayEnd.set();
    EXPECT_TRUE(worker.join());
    EXPECT_TRUE(worker.join(0));
}

TEST(FThread, KeepsItsPriorityWithinTheTable) {
    Worker worker;
    EXPECT_EQ(worker.getPriority(), 2);
    for (const auto& [given, kept] : {std::pair{0, 0}, {5, 5}, {-1, 0}, {6, 5}}) {
        worker.setPriority(given);
        EXPECT_EQ(worker.getPriority(), kept);
    }
}

TEST(FThread, CanBeEndedWhenItDoesNotAnswer) {
    struct Stubborn : FThread {
        Stubborn() : FThread("Stubborn") {}
        uint32_t run() override {
            entered.set();
            while (true)
                std::this_thread::yield();
        }
        platform::Event entered{platform::Reset::manual};
    } thread;
    ASSERT_TRUE(thread.start());
    thread.entered.wait();
    thread.terminate();
    EXPECT_EQ(thread.getHandle(), 0u);
    EXPECT_TRUE(thread.join(0));
}

TEST(FThread, TellsItsObserverOfItsLife) {
    struct Observer : ThreadObserver {
        void threadCreated(FThread* thread) override { created.push_back(thread->getName()); }
        void threadDestroyed(FThread*) override { ++destroyed; }
        std::vector<std::string> created;
        int destroyed = 0;
    } observer;
    setThreadObserver(&observer);
    { const Worker worker; }
    setThreadObserver(nullptr);
    { const Worker worker; }
    EXPECT_EQ(observer.created, std::vector<std::string>{"Test Worker"});
    EXPECT_EQ(observer.destroyed, 1);
}

} // namespace
} // namespace qorl
