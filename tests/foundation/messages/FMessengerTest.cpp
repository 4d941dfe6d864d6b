#include "foundation/messages/FMessenger.h"

#include "foundation/messages/Target.h"
#include "foundation/threads/FLock.h"
#include "support/FailingAllocation.h"
#include "support/Objects.h"

#include <qorl/IPlugMessageTarget.h>

#include <atomic>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

namespace qorl {
namespace {

using testing::Target;
using FMessengerTest = testing::MessengerTest;
using Log = FMessengerTest::Log;

TEST_F(FMessengerTest, DeliversInOrderAndKeepsWhatIsPostedMeanwhile) {
    messenger.post(&a, "One");
    messenger.post(&b, "Two");
    messenger.post(&a, "Three");
    a.reaction = [&](FMessage&) {
        messenger.post(&b, "Later");
        a.reaction = nullptr;
    };
    EXPECT_EQ(deliver(), (Log{"a:One", "b:Two", "a:Three"}));
    EXPECT_EQ(deliver(), (Log{"b:Later"}));
    EXPECT_FALSE(messenger.hasPending());
}

TEST_F(FMessengerTest, WaitsForAsManyPassesAsItIsTold) {
    messenger.post(&a, make<FMessage>("Delayed"), FMessenger::Duplicates::allow, 2);
    messenger.post(&a, "Now");
    EXPECT_EQ(deliver(), (Log{"a:Now"}));
    messenger.post(&a, "Next");
    EXPECT_EQ(deliver(), (Log{"a:Next"}));
    EXPECT_EQ(deliver(), (Log{"a:Delayed"}));
}

TEST_F(FMessengerTest, DropsWhatIsQueuedForTheTargetAlready) {
    const Ref<FMessage> second = make<FMessage>("Foo");
    messenger.post(&a, "Foo");
    messenger.post(&a, second, FMessenger::Duplicates::drop);
    EXPECT_EQ(referencesOn(second.get()), 1u) << "the dropped message is released";
    messenger.post(&b, "Foo", FMessenger::Duplicates::drop);
    messenger.post(&a, "Bar", FMessenger::Duplicates::drop);
    EXPECT_EQ(deliver(), (Log{"a:Foo", "b:Foo", "a:Bar"}));
}

TEST_F(FMessengerTest, NothingReachesATargetThatTookItsMessagesBack) {
    const Ref<FMessage> foo = make<FMessage>("Foo");
    for (Target* target : {&a, &b}) {
        messenger.post(target, "Foo");
        messenger.post(target, "Bar");
    }
    messenger.cancel(&a, foo.get());
    EXPECT_EQ(deliver(), (Log{"a:Bar", "b:Foo", "b:Bar"}));

    messenger.post(&b, "First");
    messenger.post(&a, "Second");
    messenger.post(&a, "Third", FMessenger::Duplicates::allow);
    b.reaction = [&](FMessage&) { messenger.cancelAll(&a); };
    EXPECT_EQ(deliver(), (Log{"b:First"})) << "also out of the pass that is running";
}

TEST_F(FMessengerTest, QueuesWhilePaused) {
    EXPECT_FALSE(messenger.setPaused(true));
    messenger.post(&a, "One");
    messenger.post(&a, "Two");
    EXPECT_EQ(deliver(), Log{});
    EXPECT_FALSE(messenger.hasPending());
    EXPECT_TRUE(messenger.setPaused(false));
    EXPECT_EQ(deliver(), (Log{"a:One", "a:Two"}));
}

TEST_F(FMessengerTest, ANestedPassDeliversWhatIsLeft) {
    messenger.post(&a, "One");
    messenger.post(&b, "Two");
    a.reaction = [&](FMessage&) {
        a.reaction = nullptr;
        messenger.post(&a, "Three");
        messenger.deliverPending();
        log.push_back("end of One");
    };
    EXPECT_EQ(deliver(), (Log{"a:One", "b:Two", "a:Three", "end of One"}));
}

TEST_F(FMessengerTest, WhatATargetThrowsCostsNoOtherMessage) {
    messenger.post(&a, "One");
    messenger.post(&b, "Two");
    messenger.post(&b, "Three");
    a.reaction = [&](FMessage&) {
        a.reaction = nullptr;
        throw std::bad_alloc();
    };
    EXPECT_THROW(deliver(), std::bad_alloc);
    EXPECT_TRUE(messenger.hasPending()) << "they don't wait for another post";
    messenger.post(&a, "Four");
    EXPECT_EQ(deliver(), (Log{"a:One", "b:Two", "b:Three", "a:Four"}));
}

TEST_F(FMessengerTest, TakesOnlyItsOwnMessagesThroughTheInterface) {
    Ref<IMessenger> face;
    ASSERT_EQ(messenger.queryInterface(IMessenger::iid, face.out()), Result::ok);
    CmObject noMessage;
    EXPECT_FALSE(face->post(&a, &noMessage));
    EXPECT_EQ(referencesOn(&noMessage), 1u) << "the reference stays with the caller";
    EXPECT_TRUE(face->post(&a, static_cast<CmObject*>(make<FMessage>("Mine").detach())));
    EXPECT_EQ(deliver(), (Log{"a:Mine"}));
}

struct Plug : IPlugMessageTarget {
    Result queryInterface(const InterfaceId& id, void** out) override {
        const bool known = id == IPlugMessageTarget::iid || id == FInterface::iid;
        *out = known ? this : nullptr;
        return known ? Result::ok : Result::noInterface;
    }
    uint32_t addRef() override { return 1; }
    uint32_t release() override { return 1; }
    int32_t receiveMessage(FInterface* message) override {
        Ref<IMessageAttributes> face;
        if (message->queryInterface(IMessageAttributes::iid2, face.out()) == Result::ok)
            face->getInt8("Number", &number);
        return 1;
    }
    int64_t number = 0;
};

TEST_F(FMessengerTest, ReachesTargetsOfOtherModules) {
    Plug plug;
    const Ref<FMessage> message = make<FMessage>("Any");
    message->setInt("Number", 42);
    messenger.postForeign(&plug, message);
    deliver();
    EXPECT_EQ(plug.number, 42);
    FObject neither;
    messenger.postForeign(&neither, make<FMessage>("Lost"));
    EXPECT_EQ(deliver(), Log{}) << "a target that is neither is skipped";
}

/// Hears numbered messages from many threads, and takes them back now and then.
struct Canceling : CmObject {
    Canceling(FMessenger& home, uint32_t period) : messenger(home), cancelPeriod(period) {}
    int32_t handleMessage(FMessage* message) override {
        const int64_t number = message->getInt("Number");
        hearing = number;
        faults += number <= cancelledUpTo;
        if (++heard % cancelPeriod == 0)
            takeBack();
        hearing = 0;
        return handled;
    }
    void post() {
        const Ref<FMessage> message = make<FMessage>("Tick");
        const FGuard guard(lock);
        message->setInt("Number", ++lastPosted);
        messenger.post(this, message);
    }
    /// The number of the last message that can't be heard any more.
    int64_t takeBack() {
        int64_t last = 0;
        {
            const FGuard guard(lock);
            last = lastPosted;
        }
        messenger.cancelAll(this);
        int64_t old = cancelledUpTo;
        while (old < last && !cancelledUpTo.compare_exchange_weak(old, last)) {}
        return last;
    }
    void takeBackFromOutside() {
        const int64_t last = takeBack();
        const int64_t number = hearing;
        faults += number != 0 && number <= last;
    }

    FMessenger& messenger;
    uint32_t cancelPeriod;
    FLock lock; ///< Held over a number and its post.
    int64_t lastPosted = 0;
    std::atomic<int64_t> cancelledUpTo{0};
    std::atomic<int64_t> hearing{0};
    std::atomic<uint32_t> faults{0};
    uint32_t heard = 0; ///< By the delivering thread alone.
};

TEST_F(FMessengerTest, NothingTakenBackIsHeardWhileAllThreadsPost) {
    constexpr uint32_t threadCount = 8;
    constexpr uint32_t perThread = 300;
    constexpr uint32_t never = threadCount * perThread + 1;
    for (const bool fromOutside : {false, true}) {
        SCOPED_TRACE(fromOutside ? "taken back by a posting thread" : "taken back in the delivery");
        Canceling targets[] = {
            {messenger, fromOutside ? never : 3}, {messenger, fromOutside ? never : 7}, {messenger, never}};
        Canceling& steady = targets[2];
        std::atomic<uint32_t> finished{0};
        std::vector<std::thread> threads;
        for (uint32_t t = 0; t < threadCount; ++t)
            threads.emplace_back([&] {
                for (uint32_t i = 1; i <= perThread; ++i) {
                    for (Canceling& target : targets)
                        target.post();
                    if (fromOutside && i % 10 == 0)
                        targets[i / 10 % 2].takeBackFromOutside();
                    if (i % 10 == 5)
                        messenger.cancel(&steady, FMessage::named("Other").get());
                }
                ++finished;
            });
        while (finished < threadCount || messenger.hasPending())
            messenger.deliverPending();
        for (std::thread& thread : threads)
            thread.join();
        for (const Canceling& target : targets)
            EXPECT_EQ(target.faults, 0u);
        EXPECT_EQ(steady.heard, threadCount * perThread) << "nothing of another target is lost";
        EXPECT_GT(targets[0].cancelledUpTo, 0);
    }
}

struct Canceller : CmObject {
    explicit Canceller(FMessenger& messenger, CmObject* target) : messenger_(messenger), target_(target) {}
    ~Canceller() override { messenger_.cancelAll(target_); }
    FMessenger& messenger_;
    CmObject* target_;
};

TEST_F(FMessengerTest, WhatACancelledMessageHeldMayCancelOthers) {
    const auto postHolder = [&](CmObject* to, CmObject* cancelled) {
        const Ref<FMessage> message = make<FMessage>("Holder");
        message->setObject("object", make<Canceller>(messenger, cancelled).get());
        messenger.post(to, message);
    };
    postHolder(&a, &b);
    messenger.post(&b, "One");
    messenger.post(&a, "Two");
    messenger.post(&b, "Three");
    messenger.cancelAll(&a);
    EXPECT_EQ(deliver(), Log{});

    postHolder(&a, &a);
    messenger.post(&a, "Later");
    EXPECT_EQ(deliver(), (Log{"a:Holder"})) << "the entry goes before the next one is delivered";
}

struct OwnTarget : Target {
    OwnTarget(Log& log, FMessenger& messenger) : Target(log, "own"), messenger_(messenger) {}
    ~OwnTarget() override { messenger_.cancelAll(this); }
    FMessenger& messenger_;
};

TEST_F(FMessengerTest, ATargetMayGoInTheMiddleOfItsOwnMessage) {
    Ref<OwnTarget> target = make<OwnTarget>(log, messenger);
    target->reaction = [&](FMessage&) {
        target.reset();
        log.push_back("left");
    };
    messenger.post(target.get(), "One");
    messenger.post(target.get(), "Two");
    messenger.post(&a, "Three");
    EXPECT_EQ(deliver(), (Log{"own:One", "left", "a:Three"}));
}

TEST_F(FMessengerTest, KeepsNothingOfAPostThatFoundNoMemory) {
    int rounds = 0;
    failEachAllocation([&](FailingAllocation& allocation) {
        ++rounds;
        const Ref<FMessage> message = make<FMessage>("Foo");
        const bool isPosted = allocation.during([&] {
            return messenger.post(static_cast<FInterface*>(static_cast<CmObject*>(&a)),
                                  static_cast<CmObject*>(message.get()));
        });
        EXPECT_EQ(isPosted, !allocation.hasFailed());
        if (isPosted)
            message->addRef();
        EXPECT_EQ(deliver(), isPosted ? Log{"a:Foo"} : Log{});
        EXPECT_EQ(referencesOn(message.get()), 1u) << "the reference stays with the caller of a failed post";
    });
    EXPECT_EQ(rounds, 3) << "two allocations, then none that fails";
}

TEST_F(FMessengerTest, ReleasesWhatIsQueuedWhenItGoes) {
    const Ref<FMessage> message = make<FMessage>("Kept");
    {
        FMessenger passing;
        passing.post(&a, message);
    }
    EXPECT_EQ(referencesOn(message.get()), 1u);
    EXPECT_EQ(log, Log{});
}

TEST_F(FMessengerTest, WhatIsPostedBehindTheTeardownIsNotDeliveredByTheNextStart) {
    FMessenger* shared = FMessenger::instance();
    shared->post(&a, "Early");
    FMessenger::connect();
    EXPECT_TRUE(shared->hasPending()) << "what is posted before the first start waits for it";
    FMessenger::disconnect();
    EXPECT_FALSE(shared->hasPending());
    FMessenger::connect();
    a.reaction = [](FMessage&) { FMessenger::disconnect(); };
    shared->post(&a, "Last");
    shared->post(&b, "Left of the pass");
    shared->deliverPending();
    EXPECT_EQ(log, Log{"a:Last"});
    // As a thread does that asked for the messenger in time.
    shared->post(&a, "Late");
    FMessenger::connect();
    EXPECT_EQ(FMessenger::instance(), shared);
    shared->deliverPending();
    EXPECT_EQ(log, Log{"a:Last"}) << "the target may have gone, without a messenger to take it back from";
}

} // namespace
} // namespace qorl
