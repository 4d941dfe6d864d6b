#include "platform/Threads.h"

#include "platform/Clock.h"
#include "support/PlatformThread.h"
#include "support/SmallStack.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdio>
#include <gtest/gtest.h>
#include <limits>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace qorl::platform {
namespace {

using testing::PlatformThread;

constexpr int64_t generous = PlatformThread::generous;

TEST(Threads, RunJoinAndClose) {
    Event go{Reset::manual};
    std::atomic<ThreadHandle> seen = 0;
    const PlatformThread thread(
        [&] {
            seen = thread.handle();
            go.wait();
        },
        "a name that is much too long");
    EXPECT_FALSE(thread.ends(0)) << "it still waits";
    go.set();
    EXPECT_TRUE(thread.ends());
    EXPECT_TRUE(thread.ends(0)) << "asked again";
    EXPECT_EQ(seen, thread.handle()) << "the handle is stored before the body runs";
    EXPECT_TRUE(terminateThread(thread.handle())) << "has ended";
}

TEST(Threads, EachOfSeveralWaitersHearsOfTheEnd) {
    Event go{Reset::manual};
    std::atomic<int> count = 0;
    const PlatformThread awaited([&] { go.wait(); });
    std::array<std::thread, 4> waiters;
    for (std::thread& waiter : waiters)
        waiter = std::thread([&] { count += awaited.ends(); });
    go.set();
    for (std::thread& waiter : waiters)
        waiter.join();
    EXPECT_EQ(count, 4);
}

TEST(Threads, AForeignThreadIsAwaitedToo) {
    Event go{Reset::manual};
    Event opened{Reset::automatic};
    ThreadHandle handle = 0;
    std::thread foreign([&] {
        handle = openCurrentThread();
        opened.set();
        go.wait();
    });
    ASSERT_TRUE(opened.wait(generous));
    EXPECT_FALSE(joinThread(handle, 1));
    go.set();
    EXPECT_TRUE(joinThread(handle, generous));
    foreign.join();
    closeThread(handle);
}

TEST(Threads, ClosingAHandleLetsTheThreadRunOn) {
    struct {
        Event go{Reset::manual};
        Event done{Reset::automatic};
    } shared;
    const auto body = [](void* argument) -> uint32_t {
        auto& own = *static_cast<decltype(shared)*>(argument);
        own.go.wait();
        own.done.set();
        return 0;
    };
    ThreadHandle handle = 0;
    ASSERT_TRUE(startThread(body, &shared, "detached", handle));
    closeThread(handle);
    shared.go.set();
    EXPECT_TRUE(shared.done.wait(generous));
}

TEST(Threads, TerminateEndsAThreadThatNeverLooks) {
    // Left to the thread: it might have been stopped within them.
    static std::atomic<uint64_t> rounds = 0;
    static Event started{Reset::automatic};
    const PlatformThread busy([] {
        started.set();
        for (;;)
            ++rounds;
    });
    ASSERT_TRUE(started.wait(generous));
    EXPECT_TRUE(terminateThread(busy.handle()));
    const uint64_t last = rounds;
    EXPECT_TRUE(busy.ends(0));
    EXPECT_EQ(rounds, last) << "it still runs";

    const ThreadHandle self = openCurrentThread();
    EXPECT_FALSE(terminateThread(self));
    EXPECT_FALSE(joinThread(self, 0));
    closeThread(self);
}

TEST(Threads, TerminateLeavesNoLockOfTheCLibraryBehind) {
    char room[64];
    char buffer[64];
    for (int round = 0; round < 20; ++round) {
        FILE* file = fmemopen(room, sizeof room, "w");
        std::setvbuf(file, buffer, _IOFBF, sizeof buffer);
        Event started{Reset::automatic};
        const PlatformThread writer([&] {
            started.set();
            for (std::atomic<uint64_t> rounds = 0;; ++rounds)
                std::fputs("takes the lock of the file", file);
        });
        ASSERT_TRUE(started.wait(generous));
        ASSERT_TRUE(terminateThread(writer.handle()));
        ASSERT_EQ(ftrylockfile(file), 0) << "in round " << round;
        funlockfile(file);
        std::fclose(file);
    }
}

TEST(Threads, LoweringAPriorityNeedsNoRights) {
    Event go{Reset::manual};
    const PlatformThread thread([&] { go.wait(); });
    for (const int32_t priority : {0, -1, -2, -15})
        EXPECT_TRUE(setThreadPriority(thread.handle(), priority)) << priority;
    go.set();
    EXPECT_TRUE(thread.ends());
    EXPECT_FALSE(setThreadPriority(thread.handle(), 0));
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
    rlimit earlier = {};
    getrlimit(RLIMIT_NICE, &earlier);
    constexpr int granted = -5;
    const rlimit limit = {20 - granted, 20 - granted};
    // Who may not set the limit has one that grants nothing: the thread stays where it was lowered to.
    const bool mayRaise = setrlimit(RLIMIT_NICE, &limit) == 0;
    int lowered = 0;
    int raised = 0;
    const PlatformThread thread([&] {
        // Of this thread alone: without the rights of an administrator.
        constexpr unsigned nobody = 65534;
        syscall(SYS_setresuid, -1, nobody, -1);
        setThreadPriority(thread.handle(), -1);
        lowered = getpriority(PRIO_PROCESS, 0);
        EXPECT_TRUE(setThreadPriority(thread.handle(), 15));
        raised = getpriority(PRIO_PROCESS, 0);
    });
    EXPECT_TRUE(thread.ends());
    EXPECT_EQ(raised, mayRaise ? granted : lowered);
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
    bool wasSet = false;
    const PlatformThread waiter([&] {
        begun.set();
        wasSet = never.wait(std::numeric_limits<int64_t>::max());
    });
    EXPECT_TRUE(begun.wait(generous));
    EXPECT_FALSE(waiter.ends(1)) << "the longest wait was over at once";
    never.set();
    EXPECT_TRUE(waiter.ends());
    EXPECT_TRUE(wasSet);
}

TEST(Events, ManualOnesLetAllThroughUntilReset) {
    Event open{Reset::manual};
    std::atomic<int> passed = 0;
    const auto pass = [&] { passed += open.wait(generous); };
    const PlatformThread threads[] = {PlatformThread(pass), PlatformThread(pass), PlatformThread(pass)};
    open.set();
    for (const PlatformThread& thread : threads)
        EXPECT_TRUE(thread.ends());
    EXPECT_EQ(passed, 3);
    open.reset();
    EXPECT_FALSE(open.wait(1));
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
    void* seen = &value;
    const PlatformThread other([&] { seen = getThreadSlot(again); });
    EXPECT_TRUE(other.ends());
    EXPECT_EQ(seen, nullptr) << "another thread's value";
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
