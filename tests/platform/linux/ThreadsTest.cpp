#include "platform/Threads.h"

#include "platform/Clock.h"
#include "support/SmallStack.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <gtest/gtest.h>
#include <limits>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

namespace qorl::platform {
namespace {

/// What a test's thread and the test share.
struct Shared {
    Event go{Reset::manual};
    Event done{Reset::automatic};
    std::atomic<int> count = 0;
    ThreadHandle handle = 0;
    std::atomic<ThreadHandle> seen = 0;
};

constexpr int64_t generous = 30'000; // milliseconds

TEST(Threads, RunJoinAndClose) {
    Shared shared;
    const auto body = [](void* argument) -> uint32_t {
        auto& own = *static_cast<Shared*>(argument);
        own.seen = own.handle;
        own.go.wait();
        ++own.count;
        return 7;
    };
    ASSERT_TRUE(startThread(body, &shared, "a name that is much too long", shared.handle));
    EXPECT_FALSE(joinThread(shared.handle, 0)) << "it still waits";
    shared.go.set();
    EXPECT_TRUE(joinThread(shared.handle, generous));
    EXPECT_TRUE(joinThread(shared.handle, 0)) << "asked again";
    EXPECT_EQ(shared.count, 1);
    EXPECT_EQ(shared.seen, shared.handle) << "the handle is stored before the body runs";
    EXPECT_TRUE(terminateThread(shared.handle)) << "has ended";
    closeThread(shared.handle);
}

TEST(Threads, EachOfSeveralWaitersHearsOfTheEnd) {
    Shared shared;
    const auto body = [](void* argument) -> uint32_t {
        static_cast<Shared*>(argument)->go.wait();
        return 0;
    };
    ASSERT_TRUE(startThread(body, &shared, "awaited", shared.handle));
    std::vector<std::thread> waiters;
    for (int i = 0; i < 4; ++i)
        waiters.emplace_back([&shared] { shared.count += joinThread(shared.handle, 5000); });
    shared.go.set();
    for (std::thread& waiter : waiters)
        waiter.join();
    EXPECT_EQ(shared.count, 4);
    closeThread(shared.handle);
}

TEST(Threads, AForeignThreadIsAwaitedToo) {
    Shared shared;
    std::thread foreign([&shared] {
        shared.handle = openCurrentThread();
        shared.done.set();
        shared.go.wait();
    });
    ASSERT_TRUE(shared.done.wait(generous));
    EXPECT_FALSE(joinThread(shared.handle, 1));
    shared.go.set();
    EXPECT_TRUE(joinThread(shared.handle, generous));
    foreign.join();
    closeThread(shared.handle);
}

TEST(Threads, ClosingAHandleLetsTheThreadRunOn) {
    Shared shared;
    const auto body = [](void* argument) -> uint32_t {
        auto& own = *static_cast<Shared*>(argument);
        own.go.wait();
        own.done.set();
        return 0;
    };
    ASSERT_TRUE(startThread(body, &shared, "detached", shared.handle));
    closeThread(shared.handle);
    shared.go.set();
    EXPECT_TRUE(shared.done.wait(generous));
}

TEST(Threads, TerminateEndsAThreadThatNeverLooks) {
    struct Counter {
        std::atomic<uint64_t> rounds = 0;
        Event started{Reset::automatic};
    };
    // Left to the thread: it might have been stopped within it.
    static Counter counter;
    const auto body = [](void*) -> uint32_t {
        counter.started.set();
        for (;;)
            ++counter.rounds;
    };
    ThreadHandle handle = 0;
    ASSERT_TRUE(startThread(body, nullptr, "busy", handle));
    ASSERT_TRUE(counter.started.wait(generous));
    EXPECT_TRUE(terminateThread(handle));
    const uint64_t rounds = counter.rounds;
    EXPECT_TRUE(joinThread(handle, 0));
    EXPECT_EQ(counter.rounds, rounds) << "it still runs";
    closeThread(handle);

    const ThreadHandle self = openCurrentThread();
    EXPECT_FALSE(terminateThread(self));
    EXPECT_FALSE(joinThread(self, 0));
    closeThread(self);
}

TEST(Threads, TerminateLeavesNoLockOfTheCLibraryBehind) {
    struct Writer {
        FILE* file = nullptr;
        Event started{Reset::automatic};
        std::atomic<uint64_t> rounds = 0;
    };
    const auto body = [](void* argument) -> uint32_t {
        auto& own = *static_cast<Writer*>(argument);
        own.started.set();
        for (;;) {
            ++own.rounds;
            std::fputs("takes the lock of the file", own.file);
        }
    };
    char room[64];
    char buffer[64];
    for (int round = 0; round < 20; ++round) {
        Writer writer;
        writer.file = fmemopen(room, sizeof room, "w");
        std::setvbuf(writer.file, buffer, _IOFBF, sizeof buffer);
        ThreadHandle handle = 0;
        ASSERT_TRUE(startThread(body, &writer, "writer", handle));
        ASSERT_TRUE(writer.started.wait(generous));
        ASSERT_TRUE(terminateThread(handle));
        closeThread(handle);
        ASSERT_EQ(ftrylockfile(writer.file), 0) << "in round " << round;
        funlockfile(writer.file);
        std::fclose(writer.file);
    }
}

TEST(Threads, LoweringAPriorityNeedsNoRights) {
    Shared shared;
    const auto body = [](void* argument) -> uint32_t {
        static_cast<Shared*>(argument)->go.wait();
        return 0;
    };
    ASSERT_TRUE(startThread(body, &shared, "priority", shared.handle));
    for (const int32_t priority : {0, -1, -2, -15})
        EXPECT_TRUE(setThreadPriority(shared.handle, priority)) << priority;
    shared.go.set();
    EXPECT_TRUE(joinThread(shared.handle, generous));
    EXPECT_FALSE(setThreadPriority(shared.handle, 0));
    closeThread(shared.handle);
}

TEST(Threads, APriorityOfTheFirstThreadIsNoClassOfTheProcess) {
    const auto niceOf = [](id_t thread) { return getpriority(PRIO_PROCESS, thread); };
    const int before = niceOf(0);
    const PriorityClass processClass = getPriorityClass();
    const ThreadHandle self = openCurrentThread();
    for (const auto& [priority, nice] : {std::pair{-1, 5}, {-2, 10}}) {
        EXPECT_TRUE(setThreadPriority(self, priority));
        EXPECT_EQ(niceOf(0), std::min(before + nice, 19)) << priority;
        EXPECT_EQ(getPriorityClass(), processClass) << priority;
    }
    setThreadPriority(self, 0);
    closeThread(self);
}

TEST(Threads, TheNearestPriorityThatTheSystemGrantsIsTaken) {
    struct Raised {
        Shared shared;
        bool isSet = false;
        int lowered = 0;
        int nice = 0;
    } raised;
    const auto body = [](void* argument) -> uint32_t {
        auto& own = *static_cast<Raised*>(argument);
        // Of this thread alone: without the rights of an administrator.
        constexpr unsigned nobody = 65534;
        syscall(SYS_setresuid, -1, nobody, -1);
        setThreadPriority(own.shared.handle, -1);
        own.lowered = getpriority(PRIO_PROCESS, 0);
        own.isSet = setThreadPriority(own.shared.handle, 15);
        own.nice = getpriority(PRIO_PROCESS, 0);
        return 0;
    };
    rlimit earlier = {};
    getrlimit(RLIMIT_NICE, &earlier);
    constexpr int granted = -5;
    const rlimit limit = {20 - granted, 20 - granted};
    // Who may not set the limit has one that grants nothing: the thread stays where it was lowered to.
    const bool mayRaise = setrlimit(RLIMIT_NICE, &limit) == 0;
    ASSERT_TRUE(startThread(body, &raised, "raised", raised.shared.handle));
    EXPECT_TRUE(joinThread(raised.shared.handle, generous));
    EXPECT_TRUE(raised.isSet);
    EXPECT_EQ(raised.nice, mayRaise ? granted : raised.lowered);
    closeThread(raised.shared.handle);
    setrlimit(RLIMIT_NICE, &earlier);
}

// The address sanitizer would put the array elsewhere.
[[gnu::noinline, gnu::no_sanitize_address]] int64_t stackLeftBelow32K() {
    char buffer[0x8000];
    const int64_t left = getStackLeft();
    // So that it stands there in its full size.
    asm volatile("" : : "r"(buffer) : "memory");
    return left;
}

TEST(Threads, KnowHowMuchStackTheyHaveLeft) {
    constexpr int64_t size = 0x40000;
    testing::runOnStack(size, [&] {
        const int64_t before = getStackLeft();
        EXPECT_LT(before, size);
        EXPECT_GT(before, size / 2);
        EXPECT_LE(stackLeftBelow32K(), before - 0x8000);
    });
    EXPECT_GT(getStackLeft(), size) << "the first thread";
}

TEST(Events, AutomaticOnesLetOneWaiterThrough) {
    Event event(Reset::automatic, Event::State::set);
    EXPECT_TRUE(event.wait(0));
    EXPECT_FALSE(event.wait(0));
    event.set();
    event.set();
    EXPECT_TRUE(event.wait(0));
    EXPECT_FALSE(event.wait(0)) << "two sets are one";
    event.set();
    event.reset();
    EXPECT_FALSE(event.wait(0));
}

TEST(Events, WaitForAsLongAsIsAsked) {
    Event never(Reset::manual);
    Event begun(Reset::manual);
    struct Waiter {
        Event& begun;
        Event& never;
        bool wasSet = false;
    } waiter{begun, never};
    const auto body = [](void* argument) -> uint32_t {
        auto& own = *static_cast<Waiter*>(argument);
        own.begun.set();
        own.wasSet = own.never.wait(std::numeric_limits<int64_t>::max());
        return 0;
    };
    ThreadHandle thread = 0;
    ASSERT_TRUE(startThread(body, &waiter, "waiter", thread));
    EXPECT_TRUE(begun.wait(generous));
    EXPECT_FALSE(joinThread(thread, 1)) << "the longest wait was over at once";
    never.set();
    EXPECT_TRUE(joinThread(thread, generous));
    EXPECT_TRUE(waiter.wasSet);
    closeThread(thread);
}

TEST(Events, ManualOnesLetAllThroughUntilReset) {
    struct Gate {
        Event open{Reset::manual};
        std::atomic<int> passed = 0;
    } gate;
    const auto body = [](void* argument) -> uint32_t {
        auto& own = *static_cast<Gate*>(argument);
        own.passed += own.open.wait(generous);
        return 0;
    };
    std::vector<ThreadHandle> threads(4);
    for (ThreadHandle& thread : threads)
        ASSERT_TRUE(startThread(body, &gate, "waiter", thread));
    gate.open.set();
    for (const ThreadHandle thread : threads) {
        EXPECT_TRUE(joinThread(thread, generous));
        closeThread(thread);
    }
    EXPECT_EQ(gate.passed, 4);
    gate.open.reset();
    EXPECT_FALSE(gate.open.wait(1));
}

TEST(ThreadSlots, AFreshSlotReadsNullWhoeverUsedItBefore) {
    const int32_t slot = allocateThreadSlot();
    ASSERT_GE(slot, 0);
    int value = 0;
    setThreadSlot(slot, &value);
    EXPECT_EQ(getThreadSlot(slot), &value);
    freeThreadSlot(slot);
    const int32_t again = allocateThreadSlot();
    EXPECT_EQ(again, slot);
    EXPECT_EQ(getThreadSlot(again), nullptr);

    setThreadSlot(again, &value);
    struct Other {
        int32_t slot;
        void* seen;
    } other{again, &value};
    ThreadHandle handle = 0;
    const auto body = [](void* argument) -> uint32_t {
        auto& own = *static_cast<Other*>(argument);
        own.seen = getThreadSlot(own.slot);
        return 0;
    };
    ASSERT_TRUE(startThread(body, &other, "slots", handle));
    EXPECT_TRUE(joinThread(handle, generous));
    closeThread(handle);
    EXPECT_EQ(other.seen, nullptr) << "another thread's value";
    freeThreadSlot(again);
}

TEST(ThreadSlots, RunOutWithAClearAnswer) {
    std::vector<int32_t> slots;
    for (int32_t slot = allocateThreadSlot(); slot >= 0; slot = allocateThreadSlot())
        slots.push_back(slot);
    EXPECT_EQ(slots.size(), 64U);
    EXPECT_EQ(getThreadSlot(-1), nullptr);
    for (const int32_t slot : slots)
        freeThreadSlot(slot);
}

TEST(Clock, CalendarsAndMomentsAreInverse) {
    const int64_t moments[] = {0, -1, -1'000, 951'827'696'789, 1'709'164'800'000, 4'102'444'800'500};
    for (const int64_t moment : moments)
        EXPECT_EQ(fromLocalTime(toLocalTime(moment)), moment);

    const CalendarTime before = toUtc(-1);
    EXPECT_EQ(before.year, 1969);
    EXPECT_EQ(before.millisecond, 999);
    const CalendarTime leap = toUtc(1'709'164'800'000);
    EXPECT_EQ(leap.month * 100 + leap.day, 229);
    EXPECT_EQ(leap.weekday, 4);
}

} // namespace
} // namespace qorl::platform
