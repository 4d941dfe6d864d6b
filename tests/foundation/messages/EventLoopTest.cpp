#include "foundation/messages/EventLoop.h"

#include "foundation/Listener.h"
#include "foundation/messages/FMessenger.h"
#include "foundation/messages/OneShotCaller.h"
#include "foundation/messages/Target.h"
#include "foundation/messages/UTimer.h"
#include "foundation/messages/UpdateHandler.h"
#include "foundation/threads/Ticks.h"
#include "platform/Platform.h"
#include "platform/headless/HeadlessDesktop.h"
#include "support/FailingAllocation.h"

#include <future>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace qorl {
namespace {

using Log = std::vector<std::string>;
using Step = EventLoop::Step;
using testing::Target;

class EventLoopTest : public ::testing::Test {
protected:
    void SetUp() override {
        desktop = new platform::HeadlessDesktop;
        ASSERT_TRUE(platform::start(desktop));
        ASSERT_NE(UpdateHandler::instance(), nullptr);
        loop.emplace();
        start = getTicks();
    }
    void TearDown() override {
        for (Target* subject : {&a, &b})
            subject->removeDependent(nullptr);
        loop.reset();
        platform::stop();
    }
    Log take() { return std::exchange(log, {}); }
    void noteTime() { times.push_back(getTicks() - start); }

    platform::HeadlessDesktop* desktop = nullptr;
    std::optional<EventLoop> loop;
    uint32_t start = 0;
    std::vector<uint32_t> times; ///< milliseconds since the start
    Log log;
    Target a{log, "a"};
    Target b{log, "b"};
};

TEST_F(EventLoopTest, EventsComeBeforeMessagesAndMessagesBeforeDeferredChanges) {
    testing::Listener listener("heard", log);
    a.addDependent(&listener);
    a.deferUpdate(1);
    FMessenger::instance()->post(&b, "Posted");
    desktop->postCall([&] { log.push_back("event"); });
    EXPECT_EQ(loop->step(), Step::event);
    EXPECT_EQ(take(), Log{"event"});
    EXPECT_FALSE(loop->processEvent());
    EXPECT_EQ(take(), (Log{"b:Posted", "heard:1"}));

    desktop->postCall([&] { log.push_back("first"); });
    desktop->postCall([&] { log.push_back("second"); });
    FMessenger::instance()->post(&b, "Posted");
    a.deferUpdate(1);
    loop->flushEvents();
    EXPECT_EQ(take(), (Log{"first", "second", "b:Posted", "heard:1"}));
}

TEST_F(EventLoopTest, EndsWhenNothingCanEverHappenOrItIsStopped) {
    EXPECT_EQ(loop->step(), Step::ended) << "a dry queue in virtual time";
    desktop->postCall([&] { loop->stop(); });
    desktop->postCall([&] { log.push_back("behind the end"); });
    loop->run();
    EXPECT_EQ(take(), Log{});
    EXPECT_EQ(loop->step(), Step::ended);
}

TEST_F(EventLoopTest, CallsIdleTargetsEveryTenMilliseconds) {
    a.reaction = [&](FMessage&) {
        noteTime();
        if (times.size() == 4)
            loop->removeIdleClient(&a);
    };
    loop->addIdleClient(&a);
    loop->run();
    ASSERT_EQ(times.size(), 4u);
    EXPECT_LE(times[0], EventLoop::idlePeriod);
    for (size_t i = 1; i < times.size(); ++i)
        EXPECT_EQ(times[i] - times[i - 1], EventLoop::idlePeriod) << i;
}

TEST_F(EventLoopTest, TargetsMayComeAndGoDuringTheIdleStep) {
    Target c{log, "c"};
    a.reaction = [&](FMessage&) { loop->removeIdleClient(&a); };
    b.reaction = [&](FMessage&) {
        loop->removeIdleClient(&c);
        loop->idle();
    };
    for (Target* client : {&a, &b, &c})
        loop->addIdleClient(client);
    loop->idle();
    EXPECT_EQ(take(), (Log{"a:Idle", "b:Idle"})) << "nobody is skipped, and idle does not nest";
}

TEST_F(EventLoopTest, ALoopWithinTheIdleStepSleepsUntilItsEvents) {
    int steps = 0;
    a.reaction = [&](FMessage&) {
        loop->removeIdleClient(&a);
        bool isOpen = true;
        desktop->postPause(100);
        desktop->postCall([&] { isOpen = false; });
        while (isOpen && ++steps < 20 && loop->step() != Step::ended) {}
        EXPECT_FALSE(isOpen);
    };
    loop->addIdleClient(&a);
    loop->addIdleClient(&b);
    loop->idle();
    EXPECT_LT(steps, 20) << "it spins";
}

TEST_F(EventLoopTest, PacesItselfOnlyWhenAsked) {
    loop->idle();
    const uint32_t before = getTicks();
    loop->idle();
    EXPECT_EQ(getTicks(), before);
    loop->idle(EventLoop::Pace::sleepWhenEarly);
    EXPECT_EQ(getTicks() - before, 5u);
}

TEST_F(EventLoopTest, ReleasesWhatWasHandedInBehindTheIdleTargets) {
    static bool isGone;
    struct Going : CmObject {
        ~Going() override { isGone = true; }
    };
    isGone = false;
    a.reaction = [&](FMessage&) { log.push_back(isGone ? "gone" : "there"); };
    loop->addIdleClient(&a);
    loop->releaseLater(make<Going>());
    EXPECT_FALSE(isGone);
    loop->idle();
    EXPECT_TRUE(isGone);
    EXPECT_EQ(take(), (Log{"a:Idle", "there"}));
}

TEST(EventLoopOfAnotherDesktop, KeepsTheOnlyReferenceOnWhatAThreadHandsIn) {
    struct Desktop : platform::HeadlessDesktop {
        void wakeUp() override { left = object->addRef() - 1, object->release(); }
        CmObject* object = nullptr;
        uint32_t left = 0;
    };
    auto* desktop = new Desktop;
    ASSERT_TRUE(platform::start(desktop));
    {
        EventLoop loop;
        Ref<CmObject> object = make<CmObject>();
        desktop->object = object.get();
        std::thread([&] { loop.releaseLater(std::move(object)); }).join();
        EXPECT_EQ(desktop->left, 1u) << "the thread would release the object if the idle step came first";
        loop.idle();
    }
    platform::stop();
}

TEST_F(EventLoopTest, TellsTheTimeWhileSomeoneWaitsForIt) {
    struct Listener : EventLoop::TimeListener {
        void timePassed(uint32_t ticks) override { told.push_back(ticks); }
        bool isWaitingForTime() const override { return told.size() < 3; }
        std::vector<uint32_t> told;
    } listener;
    loop->setTimeListener(&listener);
    loop->run();
    ASSERT_EQ(listener.told.size(), 3u);
    EXPECT_EQ(listener.told[2] - listener.told[1], EventLoop::idlePeriod);
    loop->setTimeListener(nullptr);
}

TEST_F(EventLoopTest, WakesForWhatOtherThreadsQueue) {
    EXPECT_TRUE(EventLoop::isGuiThread());
    bool otherIsGui = true;
    std::thread other([&] {
        otherIsGui = EventLoop::isGuiThread();
        FMessenger::instance()->post(&a, "From afar");
    });
    other.join();
    EXPECT_FALSE(otherIsGui);
    EXPECT_EQ(loop->step(), Step::idle);
    EXPECT_EQ(take(), Log{"a:From afar"});
}

TEST_F(EventLoopTest, AChangeThatCanBeToldDoesNotSleepOnBehindOneThatCannot) {
    testing::Listener heard("heard", log);
    a.addDependent(&heard);
    b.addDependent(&heard);
    bool isFirst = true;
    heard.reaction = [&] {
        if (!std::exchange(isFirst, false))
            return;
        a.deferUpdate(7);
        EXPECT_EQ(loop->step(), Step::ended) << "it waits for the notification";
        std::thread([&] { b.deferUpdate(8); }).join();
        EXPECT_EQ(desktop->waitForEvent(-1), platform::WaitResult::wakeUp);
        EXPECT_EQ(loop->step(), Step::ended);
        EXPECT_EQ(take(), (Log{"heard:1", "heard:8"}));
    };
    a.changed(1);
    EXPECT_EQ(loop->step(), Step::ended);
    EXPECT_EQ(take(), Log{"heard:7"});
}

TEST_F(EventLoopTest, WakesWhenAnotherThreadHasToldWhatADeferredChangeWaitsFor) {
    testing::Listener heard("heard", log);
    a.addDependent(&heard);
    std::promise<void> told;
    std::promise<void> deferred;
    heard.reaction = [&] {
        told.set_value();
        deferred.get_future().wait();
    };
    std::thread other([&] { a.changed(1); });
    told.get_future().wait();
    a.deferUpdate(7);
    EXPECT_EQ(loop->step(), Step::ended);
    deferred.set_value();
    other.join();
    heard.reaction = nullptr;
    EXPECT_EQ(desktop->waitForEvent(-1), platform::WaitResult::wakeUp);
    EXPECT_FALSE(loop->processEvent());
    EXPECT_EQ(take(), (Log{"heard:1", "heard:7"}));
}

TEST_F(EventLoopTest, TimersRepeatUntilTheyAreStopped) {
    const Ref<UTimer> timer = make<UTimer>(&a, 30);
    a.reaction = [&](FMessage& message) {
        EXPECT_EQ(message.getObject("Timer"), timer.get());
        noteTime();
        if (times.size() == 3)
            timer->stop();
    };
    EXPECT_TRUE(timer->start());
    loop->run();
    EXPECT_EQ(times, (std::vector<uint32_t>{30, 60, 90}));
    EXPECT_EQ(log[0], "a:Timer");
    EXPECT_FALSE(timer->isRunning());

    timer->start(50);
    timer->start();
    EXPECT_EQ(timer->getPeriod(), 50) << "0 keeps the old period";
    times.clear();
    times.resize(2);
    loop->run();
    EXPECT_EQ(times[2], 140u);
}

TEST_F(EventLoopTest, ATimerTellsThatItFoundNoMemory) {
    failEachAllocation([&](FailingAllocation& allocation) {
        UTimer timer(&a, 30);
        const bool isStarted = allocation.during([&] { return timer.start(); });
        EXPECT_EQ(isStarted, !allocation.hasFailed());
        EXPECT_EQ(timer.isRunning(), isStarted);
    });
}

TEST_F(EventLoopTest, ATimerMayLoseItsLastReferenceInItsOwnTick) {
    Ref<UTimer> timer = make<UTimer>(&a, 5);
    a.reaction = [&](FMessage&) { timer.reset(); };
    timer->start();
    loop->run();
    EXPECT_EQ(log.size(), 1u);
}

TEST_F(EventLoopTest, AOneShotCallComesOnceItsTimeHasPassed) {
    const Ref<OneShotCaller> caller = make<OneShotCaller>([&] { noteTime(); });
    EXPECT_TRUE(caller->start(25));
    loop->run();
    ASSERT_EQ(times.size(), 1u);
    EXPECT_GE(times[0], 25u);
    EXPECT_LE(times[0], 25u + EventLoop::idlePeriod);
    EXPECT_FALSE(caller->isPending());

    caller->start(10);
    caller->start(100);
    loop->run();
    ASSERT_EQ(times.size(), 2u) << "an earlier start is forgotten";
    EXPECT_GE(times[1] - times[0], 100u);

    caller->start(5);
    caller->cancel();
    loop->run();
    EXPECT_EQ(times.size(), 2u);

    desktop->advance((int64_t{1} << 31) + 1000);
    start = getTicks();
    caller->start(5);
    loop->run();
    ASSERT_EQ(times.size(), 3u);
    EXPECT_LE(times[2], 5u + EventLoop::idlePeriod) << "a loop that slept for weeks counts from then on";
}

TEST_F(EventLoopTest, AOneShotCallMayReleaseOrRestartItsCaller) {
    int calls = 0;
    Ref<OneShotCaller> restarting;
    restarting = make<OneShotCaller>([&] {
        if (++calls < 3)
            restarting->start(0);
        else
            restarting.reset();
    });
    restarting->start(0);
    loop->run();
    EXPECT_EQ(calls, 3);
    EXPECT_EQ(restarting, nullptr);
}

TEST_F(EventLoopTest, HoldsWhomItCalls) {
    struct Leaving : Target {
        using Target::Target;
        ~Leaving() override { log_.push_back("gone"); }
    };
    Ref<Target> own = make<Leaving>(log, "own");
    own->reaction = [&](FMessage&) {
        loop->removeIdleClient(own.get());
        own.reset();
        log.push_back("left");
    };
    loop->addIdleClient(own.get());
    loop->addIdleClient(&b);
    loop->idle();
    EXPECT_EQ(take(), (Log{"own:Idle", "left", "gone", "b:Idle"}));
    loop->removeIdleClient(&b);

    struct Ticking : Leaving {
        using Leaving::Leaving;
        UTimer timer{this, 5}; // goes with its target
    };
    Ref<Ticking> ticking = make<Ticking>(log, "own");
    ticking->reaction = [&](FMessage&) {
        ticking.reset();
        log.push_back("left");
    };
    ticking->timer.start();
    loop->run();
    EXPECT_EQ(take(), (Log{"own:Timer", "left", "gone"}));
}

TEST_F(EventLoopTest, AnIdleStepThatThrewIsNotTheLastOne) {
    a.reaction = [&](FMessage&) {
        a.reaction = nullptr;
        throw std::bad_alloc();
    };
    loop->addIdleClient(&a);
    EXPECT_THROW(loop->idle(), std::bad_alloc);
    loop->idle();
    EXPECT_EQ(take(), (Log{"a:Idle", "a:Idle"}));
}

TEST_F(EventLoopTest, TheNextLoopOwesNothingToTheOneBefore) {
    UTimer timer(&a, 5);
    timer.start();
    const Ref<OneShotCaller> caller = make<OneShotCaller>([&] { log.push_back("called"); });
    caller->start(5);
    TearDown();
    SetUp();
    UTimer fresh(&b, 5);
    b.reaction = [&](FMessage&) { fresh.stop(); };
    fresh.start();
    timer.stop();
    EXPECT_TRUE(caller->start(20));
    loop->run();
    EXPECT_EQ(take(), (Log{"b:Timer", "called"}));
}

TEST(Timer, DoesNotStartWithoutADesktop) {
    CmObject target;
    UTimer timer(&target, 10);
    EXPECT_FALSE(timer.start());
    EXPECT_FALSE(timer.isRunning());
    timer.stop();
}

} // namespace
} // namespace qorl
