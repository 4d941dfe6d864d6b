#include "foundation/messages/UpdateHandler.h"

#include "foundation/CmDelegatingUnknown.h"
#include "foundation/Listener.h"
#include "foundation/messages/EventLoop.h"
#include "foundation/messages/FMessage.h"
#include "foundation/messages/RootIdentity.h"
#include "support/FailingAllocation.h"

#include <qorl/Ref.h>

#include <atomic>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <thread>

namespace qorl {
namespace {

using testing::Listener;
using Log = std::vector<std::string>;

class UpdateHandlerTest : public ::testing::Test {
protected:
    void connect(Listener& listener) { subject.addDependent(&listener); }
    void runDeferred() { UpdateHandler::instance()->triggerDeferredUpdates(nullptr); }
    Log take() { return std::exchange(log, {}); }

    void SetUp() override { ASSERT_NE(UpdateHandler::instance(), nullptr); }
    void TearDown() override {
        for (Listener* object : {&subject, &other, &a, &b, &c}) {
            object->removeDependent(nullptr);
            UpdateHandler::instance()->removeDependent(nullptr, object);
        }
    }

    Log log;
    Listener subject{"subject", log};
    Listener other{"other", log};
    Listener a{"a", log};
    Listener b{"b", log};
    Listener c{"c", log};
};

TEST_F(UpdateHandlerTest, TellsDependentsInOrderAndThenIsDone) {
    connect(a);
    connect(b);
    connect(a);
    subject.changed(5);
    EXPECT_EQ(take(), (Log{"a:5", "b:5", "a:5", "subject done:5"})) << "who stands twice hears twice";
    subject.removeDependent(&a);
    subject.changed();
    EXPECT_EQ(take(), (Log{"b:1", "subject done:1"}));
}

TEST_F(UpdateHandlerTest, IsDoneWithoutDependentsButNeverForDestruction) {
    subject.changed(1);
    EXPECT_EQ(take(), (Log{"subject done:1"}));
    connect(a);
    subject.changed(2);
    EXPECT_EQ(take(), (Log{"a:2"}));
    EXPECT_EQ(UpdateHandler::instance()->triggerUpdates(&subject, 3, UpdateDone::suppress), 0);
    EXPECT_EQ(take(), (Log{"a:3"}));
    EXPECT_EQ(UpdateHandler::instance()->triggerUpdates(static_cast<FObject*>(nullptr), 1), 1);
    EXPECT_EQ(UpdateHandler::instance()->triggerUpdates(&b, 1), 1) << "nobody to tell";
}

TEST_F(UpdateHandlerTest, SkipsWhoIsRemovedDuringTheNotification) {
    struct Case {
        const char* what;
        std::function<void()> remove; ///< What `b`, the one in the middle, does when it hears.
        Log expected;
        Log afterwards;
    };
    UpdateHandler* handler = UpdateHandler::instance();
    const Case cases[] = {
        {"itself", [&] { subject.removeDependent(&b); }, {"a:1", "b:1", "c:1"}, {"a:1", "c:1"}},
        {"a later one", [&] { subject.removeDependent(&c); }, {"a:1", "b:1"}, {"a:1", "b:1"}},
        {"an earlier one", [&] { subject.removeDependent(&a); }, {"a:1", "b:1", "c:1"}, {"b:1", "c:1"}},
        {"a later one everywhere",
         [&] { handler->removeDependent(nullptr, &c); },
         {"a:1", "b:1"},
         {"a:1", "b:1"}},
        {"a later one of another object",
         [&] { other.removeDependent(&c); },
         {"a:1", "b:1", "c:1"},
         {"a:1", "b:1", "c:1"}},
        // Without a name nobody is taken out of the notification that runs.
        {"all", [&] { subject.removeDependent(nullptr); }, {"a:1", "b:1", "c:1"}, {}},
        {"a later one, and adds it again",
         [&] {
             subject.removeDependent(&c);
             connect(c);
         },
         {"a:1", "b:1"},
         {"a:1", "b:1", "c:1"}},
    };
    for (const Case& row : cases) {
        SCOPED_TRACE(row.what);
        for (Listener* listener : {&a, &b, &c})
            connect(*listener);
        other.addDependent(&c);
        b.reaction = row.remove;
        handler->triggerUpdates(&subject, 1, UpdateDone::suppress);
        EXPECT_EQ(take(), row.expected);
        b.reaction = nullptr;
        handler->triggerUpdates(&subject, 1, UpdateDone::suppress);
        EXPECT_EQ(take(), row.afterwards);
        subject.removeDependent(nullptr);
        other.removeDependent(nullptr);
    }
}

TEST_F(UpdateHandlerTest, ARemovalReachesAllNotificationsThatAreNested) {
    for (Listener* listener : {&a, &b, &c})
        connect(*listener);
    other.addDependent(&a);
    other.addDependent(&c);
    int depth = 0;
    a.reaction = [&] {
        switch (depth++) {
        case 0: return subject.changed(5);
        case 1: return other.changed(7);
        default: UpdateHandler::instance()->removeDependent(nullptr, &c);
        }
    };
    subject.changed(1);
    EXPECT_EQ(take(),
              (Log{"a:1", "a:5", "a:7", "other done:7", "b:5", "subject done:5", "b:1", "subject done:1"}));
}

TEST_F(UpdateHandlerTest, WhoIsAddedDuringTheNotificationHearsTheNextOne) {
    connect(a);
    a.reaction = [&] {
        a.reaction = nullptr;
        connect(b);
    };
    subject.changed();
    EXPECT_EQ(take(), (Log{"a:1", "subject done:1"}));
    subject.changed();
    EXPECT_EQ(take(), (Log{"a:1", "b:1", "subject done:1"}));
}

TEST_F(UpdateHandlerTest, CollapsesDeferredChangesAndKeepsTheirOrder) {
    connect(a);
    subject.deferUpdate(1);
    subject.deferUpdate(5);
    for (int i = 0; i < 1000; ++i)
        subject.deferUpdate(1);
    EXPECT_EQ(take(), Log{});
    EXPECT_TRUE(UpdateHandler::instance()->hasDeliverable());
    runDeferred();
    EXPECT_EQ(take(), (Log{"a:1", "subject done:1", "a:5", "subject done:5"}));
    runDeferred();
    EXPECT_EQ(take(), Log{});
}

TEST_F(UpdateHandlerTest, DefersNothingThatNobodyHears) {
    subject.deferUpdate(4);
    EXPECT_EQ(take(), (Log{"subject done:4"})) << "at once";
    connect(a);
    subject.deferUpdate(4);
    subject.removeDependent(&a);
    connect(a);
    runDeferred();
    EXPECT_EQ(take(), Log{}) << "the last dependent takes the queued change with it";
}

TEST_F(UpdateHandlerTest, WhoLeavesEverywhereTakesTheChangesThatNobodyElseHears) {
    const EventLoop loop;
    connect(a);
    connect(b);
    other.addDependent(&a);
    c.deferUpdate(2);
    for (Listener* object : {&subject, &other})
        object->deferUpdate(7);
    UpdateHandler::instance()->removeDependent(nullptr, &a);
    other.deferUpdate(7);
    EXPECT_EQ(take(), Log{"other done:7"}) << "nobody is left to hear it, so it is done at once";
    c.addDependent(&b);
    runDeferred();
    EXPECT_EQ(take(), (Log{"b:2", "b:7", "subject done:7"}));
}

TEST_F(UpdateHandlerTest, NoObjectIsNoChangeThatWaitsAlready) {
    const EventLoop loop;
    connect(a);
    subject.deferUpdate(0);
    runDeferred();
    take();
    // What the GUI thread remembers of its newest change is the number now, and no object.
    EXPECT_EQ(UpdateHandler::instance()->deferUpdates(static_cast<FObject*>(nullptr), 0), 1);
}

TEST_F(UpdateHandlerTest, HoldsBackTheChangeOfAnObjectThatIsBeingNotified) {
    connect(a);
    b.addDependent(&a);
    int depth = 0;
    a.reaction = [&] {
        if (depth++ > 0)
            return;
        subject.deferUpdate(7);
        b.deferUpdate(8);
        EXPECT_TRUE(UpdateHandler::instance()->hasDeliverable());
        runDeferred();
        EXPECT_FALSE(UpdateHandler::instance()->hasDeliverable()) << "a loop that waits for this would spin";
    };
    subject.changed(1);
    EXPECT_EQ(take(), (Log{"a:1", "a:8", "b done:8", "subject done:1"}));
    runDeferred();
    EXPECT_EQ(take(), (Log{"a:7", "subject done:7"}));
}

TEST_F(UpdateHandlerTest, AnObjectThatLeavesWhileHeldBackIsForgotten) {
    auto gone = std::make_unique<Listener>("gone", log);
    gone->addDependent(&a);
    connect(b);
    a.reaction = [&] {
        gone->deferUpdate(9);
        subject.deferUpdate(3);
        runDeferred();
    };
    b.reaction = [&] { gone->removeDependent(&a); };
    gone->changed(1);
    EXPECT_EQ(take(), (Log{"a:1", "b:3", "subject done:3", "gone done:1"}));
    gone.reset();
    runDeferred();
    EXPECT_EQ(take(), Log{});
}

TEST_F(UpdateHandlerTest, DeliversTheChangesOfOneObjectAlone) {
    connect(a);
    b.addDependent(&a);
    subject.deferUpdate(1);
    b.deferUpdate(3);
    UpdateHandler::instance()->triggerDeferredUpdates(&b);
    EXPECT_EQ(take(), (Log{"a:3", "b done:3"}));
    UpdateHandler::instance()->cancelUpdates(&subject);
    runDeferred();
    EXPECT_EQ(take(), Log{});
}

struct Going : Listener {
    using Listener::Listener;
    ~Going() override {
        updateDone(0);
        removeDependent(nullptr);
    }
};

TEST_F(UpdateHandlerTest, AnObjectThatLosesItsLastReferenceWhileItIsToldGoesWhenAllHaveHeard) {
    Ref<Going> owned;
    const auto connectNew = [&](std::initializer_list<Listener*> listeners) {
        owned = make<Going>("owned", log);
        for (Listener* listener : listeners)
            owned->addDependent(listener);
    };
    a.reaction = [&] {
        owned->removeDependent(&a);
        EXPECT_EQ(owned.detach()->release(), 0u) << "it is the caller's no more";
    };
    connectNew({&a});
    owned->changed(1);
    EXPECT_EQ(take(), (Log{"a:1", "owned done:1", "owned done:0"}));

    c.reaction = [&] { owned.reset(); };
    connectNew({&b, &c});
    b.reaction = [&] {
        b.reaction = nullptr;
        owned->changed(3);
    };
    owned->changed(1);
    EXPECT_EQ(take(), (Log{"b:1", "b:3", "c:3", "owned done:3", "c:1", "owned done:1", "owned done:0"}))
        << "also out of a nested notification";

    connectNew({&c});
    owned->deferUpdate(4);
    runDeferred();
    EXPECT_EQ(take(), (Log{"c:4", "owned done:4", "owned done:0"})) << "also when the change was deferred";
}

TEST_F(UpdateHandlerTest, AnExceptionOfADependentLeavesNothingBehind) {
    struct Throwing : CmObject {
        void notify(CmObject*, int32_t) override { leave(); }
        int32_t handleMessage(FMessage*) override { return leave(), handled; }
        void leave() {
            object.reset();
            throw std::bad_alloc();
        }
        Ref<Going> object;
    } throwing;
    FMessage message("Foo");
    const std::pair<const char*, std::function<void(Going*)>> tellings[] = {
        {"told at once", [](Going* object) { object->changed(1); }},
        {"deferred",
         [&](Going* object) {
             object->deferUpdate(1);
             runDeferred();
         }},
        {"a message", [&](Going* object) { UpdateHandler::instance()->tellMessage(object, message); }}};
    for (const auto& [name, tell] : tellings) {
        SCOPED_TRACE(name);
        throwing.object = make<Going>("owned", log);
        throwing.object->addDependent(&throwing);
        const FInterface* const root = RootIdentity(throwing.object.get()).get();
        EXPECT_THROW(tell(throwing.object.get()), std::bad_alloc);
        EXPECT_EQ(take(), Log{"owned done:0"}) << "it lost its last reference meanwhile";
        EXPECT_EQ(UpdateHandler::findBeingTold(root), nullptr);
    }

    connect(a);
    other.addDependent(&throwing);
    a.reaction = [&] {
        a.reaction = nullptr;
        subject.deferUpdate(7);
        other.deferUpdate(8);
        runDeferred();
    };
    EXPECT_THROW(subject.changed(1), std::bad_alloc);
    EXPECT_EQ(take(), Log{"a:1"});
    runDeferred();
    EXPECT_EQ(take(), (Log{"a:7", "subject done:7"})) << "what was held back waits again";
}

TEST_F(UpdateHandlerTest, AChangeThatIsHeldBackStillCollapsesAndCanBeCancelled) {
    connect(a);
    other.addDependent(&b);
    a.reaction = [&] { runDeferred(); };
    for (const bool isCancelled : {false, true}) {
        subject.deferUpdate(7);
        other.deferUpdate(8);
        b.reaction = [&] {
            if (isCancelled)
                UpdateHandler::instance()->cancelUpdates(&subject);
            else
                subject.deferUpdate(7);
        };
        subject.changed(1);
        EXPECT_EQ(take(), (Log{"a:1", "b:8", "other done:8", "subject done:1"}));
        runDeferred();
        EXPECT_EQ(take(), isCancelled ? Log{} : (Log{"a:7", "subject done:7"}));
    }
}

TEST_F(UpdateHandlerTest, DestructionIsDeferredForAnObjectThatNobodyHearsYet) {
    subject.deferUpdate(2);
    EXPECT_EQ(take(), Log{});
    connect(a);
    runDeferred();
    EXPECT_EQ(take(), (Log{"a:2"}));
    subject.removeDependent(&a);
    subject.deferUpdate(2);
    subject.removeDependent(&a);
    connect(a);
    runDeferred();
    EXPECT_EQ(take(), (Log{"a:2"})) << "a removal that removes nobody leaves it alone";
    subject.deferUpdate(2);
    UpdateHandler::instance()->removeDependent(&subject, nullptr);
    connect(a);
    runDeferred();
    EXPECT_EQ(take(), Log{}) << "an object that left the table is in the queue no more";
}

TEST_F(UpdateHandlerTest, AChangeIsQueuedAgainOnceItsNotificationHasBegun) {
    const EventLoop loop; // this is the GUI thread now, which knows the newest change without a look-up
    connect(a);
    int left = 2;
    a.reaction = [&] {
        if (left-- > 0)
            subject.deferUpdate(4);
    };
    for (const Log& expected :
         {Log{"a:4", "subject done:4", "a:4", "subject done:4", "a:4", "subject done:4"},
          Log{"a:4", "subject done:4"}}) {
        subject.deferUpdate(4);
        subject.deferUpdate(4);
        runDeferred();
        EXPECT_EQ(take(), expected);
    }
    subject.deferUpdate(4);
    UpdateHandler::instance()->cancelUpdates(&subject);
    subject.deferUpdate(4);
    runDeferred();
    EXPECT_EQ(take(), (Log{"a:4", "subject done:4"})) << "after it was cancelled";
    runDeferred();
    EXPECT_EQ(take(), Log{});
}

/// Against a plain model, with so many objects in one page's map that places move up and the map grows.
TEST_F(UpdateHandlerTest, KnowsTheDependentsOfThousandsOfObjects) {
    constexpr size_t count = 3000;
    const auto objects = std::make_unique<CmObject[]>(count);
    std::map<CmObject*, std::vector<Listener*>> model;
    uint32_t state = 1;
    const auto draw = [&state](uint32_t below) {
        state = state * 1664525 + 1013904223;
        return (state >> 8) % below;
    };
    Listener* const listeners[] = {&a, &b, &c};
    for (int step = 0; step < 40000; ++step) {
        CmObject* object = &objects[draw(count)];
        Listener* listener = listeners[draw(3)];
        if (draw(2) == 0) {
            object->addDependent(listener);
            model[object].push_back(listener);
        } else {
            object->removeDependent(listener);
            std::erase(model[object], listener);
        }
    }
    const auto expectModel = [&](int32_t message) {
        for (size_t i = 0; i < count; ++i) {
            Log expected;
            for (Listener* listener : model[&objects[i]])
                expected.push_back(listener->name() + ":" + std::to_string(message));
            objects[i].changed(message);
            ASSERT_EQ(take(), expected) << "object " << i;
        }
    };
    expectModel(1);
    UpdateHandler::instance()->removeDependent(nullptr, &b);
    for (auto& [object, heard] : model)
        std::erase(heard, &b);
    expectModel(3);
    for (size_t i = 0; i < count; ++i)
        objects[i].removeDependent(nullptr);
    objects[0].changed();
    EXPECT_EQ(take(), Log{});
}

TEST_F(UpdateHandlerTest, TellsOfMissingMemoryAndLosesNothing) {
    failEachAllocation([&](FailingAllocation& allocation) {
        const Ref<CmObject> fresh = make<CmObject>();
        const int32_t added =
            allocation.during([&] { return UpdateHandler::instance()->addDependent(fresh.get(), &a); });
        EXPECT_EQ(added, allocation.hasFailed() ? 1 : 0);
        fresh->changed(3);
        EXPECT_EQ(take(), allocation.hasFailed() ? Log{} : Log{"a:3"});
        fresh->removeDependent(nullptr);
    });

    const EventLoop loop;
    connect(a);
    UpdateHandler::instance()->removeDependent(nullptr, &b);
    failEachAllocation([&](FailingAllocation& allocation) {
        std::vector<Ref<CmObject>> others; // they take what is kept in store
        for (int i = 0; i < 100; ++i) {
            others.push_back(make<CmObject>());
            others.back()->addDependent(&a);
            others.back()->deferUpdate(6);
        }
        const Ref<CmObject> fresh = make<CmObject>();
        fresh->addDependent(&b);
        EXPECT_EQ(allocation.during([&] { return UpdateHandler::instance()->deferUpdates(fresh.get(), 5); }),
                  0);
        EXPECT_EQ(take(), allocation.hasFailed() ? Log{"b:5"} : Log{}) << "told at once rather than never";
        for (const Ref<CmObject>& waiting : others)
            waiting->removeDependent(&a);
        runDeferred();
        EXPECT_EQ(take(), allocation.hasFailed() ? Log{} : Log{"b:5"});
        fresh->removeDependent(&b);
    });
}

struct Counting : CmObject {
    explicit Counting(uint32_t& count) : count_(count) {}
    void notify(CmObject*, int32_t) override { ++count_; }
    uint32_t& count_;
};

TEST_F(UpdateHandlerTest, TellsTheFirstOnesWhenThereIsNoMemoryForMore) {
    constexpr uint32_t all = UpdateHandler::stackSnapshot + 5;
    uint32_t count = 0;
    Counting counting(count);
    for (uint32_t i = 0; i < all; ++i)
        subject.addDependent(&counting);
    failEachAllocation([&](FailingAllocation& allocation) {
        count = 0;
        allocation.during(
            [&] { UpdateHandler::instance()->triggerUpdates(&subject, 1, UpdateDone::suppress); });
        EXPECT_EQ(count, allocation.hasFailed() ? UpdateHandler::stackSnapshot : all);
    });
    subject.removeDependent(&counting);
}

TEST_F(UpdateHandlerTest, TellsAtMostAsManyAsTheLargestSnapshotHolds) {
    for (const uint32_t number : {UpdateHandler::stackSnapshot, UpdateHandler::stackSnapshot + 1,
                                  UpdateHandler::largestSnapshot, UpdateHandler::largestSnapshot + 1}) {
        SCOPED_TRACE(number);
        uint32_t count = 0;
        Counting listener(count);
        for (uint32_t i = 0; i < number; ++i)
            subject.addDependent(&listener);
        subject.changed();
        EXPECT_EQ(count, std::min(number, UpdateHandler::largestSnapshot));
        subject.removeDependent(&listener);
        count = 0;
        subject.changed();
        EXPECT_EQ(count, 0u);
    }
}

class FaceOnly : public FDependent {
public:
    Result queryInterface(const InterfaceId& id, void** out) override {
        const bool known = id == FInterface::iid || (id == FDependent::iid && !isGoing);
        *out = known ? this : nullptr;
        return known ? Result::ok : Result::noInterface;
    }
    uint32_t addRef() override { return 1; }
    uint32_t release() override { return 1; }
    void update(FInterface* changed, int32_t message) override { heard = {changed, message}; }

    std::pair<FInterface*, int32_t> heard;
    bool isGoing = false;
};

TEST_F(UpdateHandlerTest, ForeignDependentsHearAndForeignChangesStayWithThem) {
    FaceOnly foreign;
    subject.addDependent(&foreign);
    subject.changed(6);
    EXPECT_EQ(foreign.heard, (std::pair<FInterface*, int32_t>(&subject, 6)));
    take();
    UpdateHandler::instance()->addDependent(&foreign, &a);
    UpdateHandler::instance()->triggerUpdates(&foreign, 1);
    EXPECT_EQ(take(), Log{}) << "an object of ours can't be told of a foreign one";
    UpdateHandler::instance()->removeDependent(&foreign, nullptr);
    subject.removeDependent(&foreign);
    EXPECT_EQ(UpdateHandler::instance()->addDependent(static_cast<FObject*>(nullptr), &foreign), 1);
    EXPECT_EQ(UpdateHandler::instance()->addDependent(&foreign, nullptr), 1);

    connect(a);
    foreign.isGoing = true;
    subject.removeDependent(&foreign);
    subject.changed(6);
    EXPECT_EQ(take(), (Log{"a:6", "subject done:6"})) << "one that is a dependent no more isn't everyone";

    auto unheard = std::make_unique<FaceOnly>();
    UpdateHandler::instance()->deferUpdates(unheard.get(), 2);
    unheard.reset();
    runDeferred();
    EXPECT_EQ(take(), Log{}) << "one that nobody hears may be gone by the time that its end is told";
}

TEST_F(UpdateHandlerTest, AWrapperStandsForTheObjectThatItWraps) {
    CmDelegatingUnknown wrapper{retain<FInterface>(&subject)};
    wrapper.addDependent(&a);
    subject.changed(1);
    EXPECT_EQ(take(), (Log{"a:1", "subject done:1"}));
    wrapper.changed(2);
    EXPECT_EQ(take(), Log{"a:2"});
    wrapper.removeDependent(&a);
    subject.changed(3);
    EXPECT_EQ(take(), Log{"subject done:3"});
}

TEST_F(UpdateHandlerTest, ManyThreadsMayConnectTellAndLeave) {
    constexpr int threads = 4;
    constexpr int rounds = 2000;
    std::atomic<uint32_t> told{0};
    struct Atomic : CmObject {
        explicit Atomic(std::atomic<uint32_t>& count) : count_(count) {}
        void notify(CmObject*, int32_t) override { ++count_; }
        std::atomic<uint32_t>& count_;
    };
    Atomic steady(told);
    subject.addDependent(&steady);
    CmObject source;
    source.addDependent(&steady);
    // They outlive all workers: one that is removed may still be hearing of a change on another thread.
    std::vector<Ref<Atomic>> listeners;
    for (int t = 0; t < threads; ++t)
        listeners.push_back(make<Atomic>(told));
    std::vector<std::thread> workers;
    for (const Ref<Atomic>& listener : listeners)
        workers.emplace_back([&] {
            Atomic& own = *listener;
            for (int i = 0; i < rounds; ++i) {
                CmObject passing;
                passing.addDependent(&own);
                source.addDependent(&own);
                source.changed(1);
                source.deferUpdate(i % 3);
                source.removeDependent(&own);
                passing.removeDependent(nullptr);
            }
        });
    for (std::thread& worker : workers)
        worker.join();
    EXPECT_GE(told.load(), 2u * threads * rounds) << "the steady and the own listener heard each change";
    source.removeDependent(nullptr);
    EXPECT_FALSE(UpdateHandler::instance()->hasDeliverable());
}

} // namespace
} // namespace qorl
