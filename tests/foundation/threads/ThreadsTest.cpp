#include "foundation/messages/EventLoop.h"
#include "foundation/threads/FLock.h"
#include "foundation/threads/FThread.h"
#include "foundation/threads/Ticks.h"
#include "platform/Platform.h"
#include "platform/headless/HeadlessDesktop.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <pthread.h>
#include <thread>
#include <utility>
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

TEST(FLock, WakesEachThreadThatWaitsForIt) {
    constexpr int threadCount = 4;
    constexpr int rounds = 20'000;
    FLock lock;
    int64_t sum = 0;
    int inside = 0;
    std::vector<std::thread> threads;
    lock.lock();
    for (int t = 0; t < threadCount; ++t)
        threads.emplace_back([&] {
            for (int i = 0; i < rounds; ++i) {
                const FGuard guard(lock);
                const FGuard again(lock);
                sum += ++inside == 1;
                --inside;
            }
        });
    lock.unlock();
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(sum, int64_t{threadCount} * rounds) << "never two at a time";
}

using Body = std::function<void()>;

struct BodyThread : FThread {
    explicit BodyThread(Body given) : FThread("Body"), body(std::move(given)) {}
    uint32_t run() override {
        body();
        return 0;
    }
    Body body;
};

void* runBody(void* body) {
    (*static_cast<const Body*>(body))();
    return nullptr;
}

/// Starts a thread in one of the ways in which a process gets its first. The result joins it.
struct ThreadMaker {
    const char* name;
    Body (*start)(const Body& body);
};

void PrintTo(const ThreadMaker& maker, std::ostream* out) {
    *out << maker.name;
}

constexpr ThreadMaker threadMakers[] = {
    {"AHost",
     [](const Body& body) -> Body {
         return [thread = std::make_shared<std::thread>(body)] { thread->join(); };
     }},
    {"OurOwn",
     [](const Body& body) -> Body {
         auto thread = std::make_shared<BodyThread>(body);
         EXPECT_TRUE(thread->start());
         return [thread] { thread->join(); };
     }},
    {"ALibraryInC",
     [](const Body& body) -> Body {
         pthread_t thread = {};
         EXPECT_EQ(pthread_create(&thread, nullptr, &runBody, const_cast<Body*>(&body)), 0);
         return [thread] { pthread_join(thread, nullptr); };
     }},
};

class LockBeforeTheFirstThread : public ::testing::TestWithParam<ThreadMaker> {};

/// Alone in its process, as each test of the suite runs, it locks while there is no other thread.
TEST_P(LockBeforeTheFirstThread, KeepsOutTheOneThatIsStartedMeanwhile) {
    FLock lock;
    platform::Event isHere(platform::Reset::manual);
    int shared = 0;
    int seen = 0;
    lock.lock();
    const Body body = [&] {
        EXPECT_FALSE(platform::isSingleThreaded());
        EXPECT_FALSE(lock.tryLock());
        isHere.set();
        const FGuard guard(lock);
        seen = shared;
    };
    const Body join = GetParam().start(body);
    isHere.wait();
    EXPECT_FALSE(platform::isSingleThreaded());
    shared = 1;
    lock.unlock();
    join();
    EXPECT_EQ(seen, 1);
    EXPECT_TRUE(lock.tryLock());
    lock.unlock();
}

INSTANTIATE_TEST_SUITE_P(By, LockBeforeTheFirstThread, ::testing::ValuesIn(threadMakers),
                         ::testing::PrintToStringParamName());

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

TEST(FThread, HasItsIdAsSoonAsItIsStarted) {
    struct Watched : Worker {
        // The last that `start` does before the thread may run.
        void setPriority(int32_t index) override {
            idAtStart = getThreadId();
            FThread::setPriority(index);
        }
        uint32_t idAtStart = 0;
    } worker;
    worker.mayEnd.set();
    EXPECT_EQ(worker.getThreadId(), 0u);
    ASSERT_TRUE(worker.start());
    EXPECT_TRUE(worker.join());
    EXPECT_NE(worker.idAtStart, 0u);
    EXPECT_EQ(worker.idAtStart, worker.idInside);
}

TEST(FThread, KeepsItsPriorityWithinTheTable) {
    Worker worker;
    EXPECT_EQ(worker.getPriority(), 2);
    for (const auto& [given, kept] : {std::pair{0, 0}, {5, 5}, {-1, 0}, {6, 5}}) {
        worker.setPriority(given);
        EXPECT_EQ(worker.getPriority(), kept);
    }
}

TEST(FThread, LowersItselfByTheClassOfItsProcess) {
    using platform::PriorityClass;
    const int32_t normal[] = {-15, -1, 0, 1, 2, 15};
    const int32_t other[] = {-15, -2, -1, 0, 1, 15};
    for (int32_t index = 0; index < FThread::priorities; ++index) {
        EXPECT_EQ(FThread::relativePriority(index, PriorityClass::normal), normal[index]) << index;
        EXPECT_EQ(FThread::relativePriority(index, PriorityClass::other), other[index]) << index;
    }
}

TEST(FThread, StartsAgainOnlyWhenItHasEnded) {
    Worker worker;
    ASSERT_TRUE(worker.start());
    worker.entered.wait();
    const platform::ThreadHandle handle = worker.getHandle();
    EXPECT_FALSE(worker.start());
    EXPECT_EQ(worker.getHandle(), handle);
    worker.mayEnd.set();
    EXPECT_TRUE(worker.join());
    EXPECT_FALSE(worker.isCurrent());
    EXPECT_TRUE(worker.start());
    EXPECT_TRUE(worker.join());
}

TEST(FThread, MayDeleteItselfAtTheEndOfItsWork) {
    struct Message : FThread {
        explicit Message(platform::Event& whenGone) : FThread("Important Message"), gone(whenGone) {}
        ~Message() override { gone.set(); }
        uint32_t run() override {
            delete this;
            return 0;
        }
        platform::Event& gone;
    };
    platform::Event gone(platform::Reset::manual);
    EXPECT_TRUE((new Message(gone))->start());
    gone.wait();
}

TEST(FThread, CanBeEndedWhenItDoesNotAnswer) {
    struct Stubborn : FThread {
        Stubborn() : FThread("Stubborn") {}
        uint32_t run() override {
            entered.set();
            while (true)
                ++rounds;
        }
        std::atomic<uint64_t> rounds{0};
        platform::Event entered{platform::Reset::manual};
    } thread;
    ASSERT_TRUE(thread.start());
    thread.entered.wait();
    EXPECT_TRUE(thread.terminate());
    EXPECT_TRUE(thread.terminate()) << "once is enough";
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

TEST(Ticks, FollowTheVirtualClockOnEveryThread) {
    auto* desktop = new platform::HeadlessDesktop;
    ASSERT_TRUE(platform::start(desktop));
    const EventLoop loop;
    const uint32_t start = getTicks();
    desktop->advance(250);
    uint32_t elsewhere = 0;
    std::thread([&] { elsewhere = getTicks() - start; }).join();
    EXPECT_EQ(elsewhere, 250u);
    const auto wait = &sleep;
    wait(60'000);
    EXPECT_EQ(getTicks() - start, 60'250u);
    platform::stop();
}

} // namespace
} // namespace qorl
