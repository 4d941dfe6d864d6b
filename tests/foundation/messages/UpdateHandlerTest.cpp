#include "UpdateHandlerTest.h"

#include "foundation/CmDelegatingUnknown.h"
#include "foundation/messages/EventLoop.h"
#include "foundation/messages/FMessage.h"
#include "foundation/messages/RootIdentity.h"
#include "support/FailingAllocation.h"

#include <qorl/Ref.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <functional>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <thread>
#include <utility>

namespace qorl {
namespace {

using testing::Listener;
using testing::UpdateHandlerTest;
using Log = UpdateHandlerTest::Log;

/// In a process of its own, where nobody has asked for the handler yet.
TEST(UpdateHandler, IsWhatObjectsForwardToFromItsFirstUseOn) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto isAsPromised = [] {
        Log log;
        Listener subject("subject", log);
        Listener early("early", log);
        Listener late("late", log);
        subject.addDependent(&early);
        subject.removeDependent(&late);
        subject.changed(5);
        subject.deferUpdate(6);
        for (const auto change : {&FObject::changed, &FObject::deferUpdate})
            (subject.*change)(FDependent::objectDestroyed);
        const bool hadNone = !FUpdateRegistry::current();
        UpdateHandler* handler = UpdateHandler::instance();
        subject.addDependent(&late);
        subject.changed(7);
        subject.removeDependent(&late);
        return hadNone && handler && FUpdateRegistry::current() == handler &&
               log == Log{"subject done:5", "subject done:6", "late:7", "subject done:7"};
    };
    EXPECT_EXIT(std::_Exit(isAsPromised() ? 42 : 43), ::testing::ExitedWithCode(42), "");
}

TEST_F(UpdateHandlerTest, IsUsedByModulesThroughItsTwoFaces) {
    Ref<FUpdateRegistry> registry;
    Ref<FUpdateQueue> queue;
    ASSERT_EQ(handler->queryInterface(FUpdateRegistry::iid, registry.out()), Result::ok);
    ASSERT_EQ(registry->queryInterface(FUpdateQueue::iid, queue.out()), Result::ok);
    FInterface* face = static_cast<FDependent*>(&subject);
    EXPECT_EQ(registry->addDependent(face, &a), 0);
    EXPECT_EQ(registry->triggerUpdates(face, 3), 0);
    EXPECT_EQ(take(), "a:3, subject done:3");
    for (const int32_t message : {4, 5}) {
        EXPECT_EQ(registry->deferUpdates(face, message), 0);
        EXPECT_EQ(message == 4 ? queue->triggerDeferredUpdates(face) : queue->cancelUpdates(face), 0);
    }
    queue->triggerDeferredUpdates(nullptr);
    EXPECT_EQ(take(), "a:4, subject done:4");
    EXPECT_EQ(registry->removeDependent(face, &a), 0);
    EXPECT_EQ(registry->triggerUpdates(face, 3), 1);
    EXPECT_EQ(take(), "subject done:3");
}

TEST_F(UpdateHandlerTest, TellsDependentsInOrderAndThenIsDone) {
    connect(a);
    connect(b);
    connect(a);
    subject.changed(5);
    EXPECT_EQ(take(), "a:5, b:5, a:5, subject done:5") << "who stands twice hears twice";
    subject.removeDependent(&a);
    subject.changed();
    EXPECT_EQ(take(), "b:1, subject done:1");
}

TEST_F(UpdateHandlerTest, IsDoneWithoutDependentsButNeverForDestruction) {
    subject.changed(1);
    EXPECT_EQ(take(), "subject done:1");
    connect(a);
    subject.changed(2);
    EXPECT_EQ(take(), "a:2");
    EXPECT_EQ(handler->triggerUpdates(&subject, 3, UpdateDone::suppress), 0);
    EXPECT_EQ(take(), "a:3");
    EXPECT_EQ(handler->triggerUpdates(static_cast<FObject*>(nullptr), 1), 1);
    EXPECT_EQ(handler->triggerUpdates(&b, 1), 1) << "nobody to tell";
}

TEST_F(UpdateHandlerTest, SkipsWhoIsRemovedDuringTheNotification) {
    const struct {
        const char* what;
        std::function<void()> remove; ///< What `b`, the one in the middle, does when it hears.
        std::string expected, afterwards;
    } cases[] = {
        {"itself", [&] { subject.removeDependent(&b); }, "a:1, b:1, c:1", "a:1, c:1"},
        {"a later one", [&] { subject.removeDependent(&c); }, "a:1, b:1", "a:1, b:1"},
        {"an earlier one", [&] { subject.removeDependent(&a); }, "a:1, b:1, c:1", "b:1, c:1"},
        {"a later one everywhere", [&] { handler->removeDependent(nullptr, &c); }, "a:1, b:1", "a:1, b:1"},
        {"a later one of another object", [&] { other.removeDependent(&c); }, "a:1, b:1, c:1",
         "a:1, b:1, c:1"},
        // Without a name nobody is taken out of the notification that runs.
        {"all", [&] { subject.removeDependent(nullptr); }, "a:1, b:1, c:1", ""},
        {"a later one, and adds it again",
         [&] {
             subject.removeDependent(&c);
             connect(c);
         },
         "a:1, b:1", "a:1, b:1, c:1"},
    };
    for (const Neighbours& neighbours : allNeighbours)
        for (const auto& row : cases) {
            SCOPED_TRACE(::testing::Message() << row.what << ", " << neighbours.before << " in front, "
                                              << neighbours.behind << " behind");
            connectAll(neighbours);
            other.addDependent(&c);
            b.reaction = row.remove;
            handler->triggerUpdates(&subject, 1, UpdateDone::suppress);
            EXPECT_EQ(take(), row.expected);
            EXPECT_EQ(std::exchange(bystander.heard, 0), neighbours.before + neighbours.behind);
            b.reaction = nullptr;
            handler->triggerUpdates(&subject, 1, UpdateDone::suppress);
            EXPECT_EQ(take(), row.afterwards);
            EXPECT_EQ(std::exchange(bystander.heard, 0),
                      row.afterwards.empty() ? 0 : neighbours.before + neighbours.behind);
            subject.removeDependent(nullptr);
            other.removeDependent(nullptr);
        }
}

TEST_F(UpdateHandlerTest, ARemovalReachesAllNotificationsThatAreNested) {
    for (const Neighbours& neighbours : allNeighbours) {
        SCOPED_TRACE(::testing::Message() << neighbours.before << " in front, " << neighbours.behind);
        connectAll(neighbours);
        other.addDependent(&a);
        other.addDependent(&c);
        int depth = 0;
        a.reaction = [&] {
            switch (depth++) {
            case 0: return subject.changed(5);
            case 1: return other.changed(7);
            default: handler->removeDependent(nullptr, &c);
            }
        };
        subject.changed(1);
        EXPECT_EQ(take(), "a:1, a:5, a:7, other done:7, b:5, subject done:5, b:1, subject done:1");
        EXPECT_EQ(std::exchange(bystander.heard, 0), 2 * (neighbours.before + neighbours.behind));
        subject.removeDependent(nullptr);
        other.removeDependent(nullptr);
    }
}

TEST_F(UpdateHandlerTest, WhoIsAddedDuringTheNotificationHearsTheNextOne) {
    connect(a);
    a.reaction = [&] {
        a.reaction = nullptr;
        connect(b);
    };
    subject.changed();
    EXPECT_EQ(take(), "a:1, subject done:1");
    subject.changed();
    EXPECT_EQ(take(), "a:1, b:1, subject done:1");
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
    EXPECT_EQ(take(), "a:1, owned done:1, owned done:0");

    c.reaction = [&] { owned.reset(); };
    connectNew({&b, &c});
    b.reaction = [&] {
        b.reaction = nullptr;
        owned->changed(3);
    };
    owned->changed(1);
    EXPECT_EQ(take(), "b:1, b:3, c:3, owned done:3, c:1, owned done:1, owned done:0")
        << "also out of a nested notification";

    connectNew({&c});
    owned->deferUpdate(4);
    runDeferred();
    EXPECT_EQ(take(), "c:4, owned done:4, owned done:0") << "also when the change was deferred";
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
        {"a message", [&](Going* object) { handler->tellMessage(object, message); }}};
    for (const auto& [name, tell] : tellings) {
        SCOPED_TRACE(name);
        throwing.object = make<Going>("owned", log);
        throwing.object->addDependent(&throwing);
        const FInterface* const root = RootIdentity(throwing.object.get()).get();
        EXPECT_THROW(tell(throwing.object.get()), std::bad_alloc);
        EXPECT_EQ(take(), "owned done:0") << "it lost its last reference meanwhile";
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
    EXPECT_EQ(take(), "a:1");
    runDeferred();
    EXPECT_EQ(take(), "a:7, subject done:7") << "what was held back waits again";
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
            std::string expected;
            for (Listener* listener : model[&objects[i]])
                expected += (expected.empty() ? "" : ", ") + listener->name() + ":" + std::to_string(message);
            objects[i].changed(message);
            ASSERT_EQ(take(), expected) << "object " << i;
        }
    };
    expectModel(1);
    handler->removeDependent(nullptr, &b);
    for (auto& [object, heard] : model)
        std::erase(heard, &b);
    expectModel(3);
    for (size_t i = 0; i < count; ++i)
        objects[i].removeDependent(nullptr);
    objects[0].changed();
    EXPECT_EQ(take(), "");
}

TEST_F(UpdateHandlerTest, TellsOfMissingMemoryAndLosesNothing) {
    failEachAllocation([&](FailingAllocation& allocation) {
        const Ref<CmObject> fresh = make<CmObject>();
        const int32_t added = allocation.during([&] { return handler->addDependent(fresh.get(), &a); });
        EXPECT_EQ(added, allocation.hasFailed() ? 1 : 0);
        fresh->changed(3);
        EXPECT_EQ(take(), allocation.hasFailed() ? "" : "a:3");
        fresh->removeDependent(nullptr);
    });

    const EventLoop loop;
    connect(a);
    handler->removeDependent(nullptr, &b);
    failEachAllocation([&](FailingAllocation& allocation) {
        std::vector<Ref<CmObject>> others; // they take what is kept in store
        for (int i = 0; i < 100; ++i) {
            others.push_back(make<CmObject>());
            others.back()->addDependent(&a);
            others.back()->deferUpdate(6);
        }
        const Ref<CmObject> fresh = make<CmObject>();
        fresh->addDependent(&b);
        EXPECT_EQ(allocation.during([&] { return handler->deferUpdates(fresh.get(), 5); }), 0);
        EXPECT_EQ(take(), allocation.hasFailed() ? "b:5" : "") << "told at once rather than never";
        for (const Ref<CmObject>& waiting : others)
            waiting->removeDependent(&a);
        runDeferred();
        EXPECT_EQ(take(), allocation.hasFailed() ? "" : "b:5");
        fresh->removeDependent(&b);
    });
}

/// Many dependents of one object, each with its number.
class Crowd {
public:
    Crowd(CmObject& subject, uint32_t size) {
        heard_.reserve(size); // no allocation of its own
        for (uint32_t i = 0; i < size; ++i) {
            members_.push_back(make<Member>(heard_, i));
            subject.addDependent(members_.back().get());
        }
    }
    /// That the first of them heard once each, in their order, and the others did not.
    void expectHeardByFirst(uint32_t count) {
        EXPECT_EQ(heard_.size(), count);
        for (uint32_t i = 0; i < heard_.size(); ++i)
            ASSERT_EQ(heard_[i], i);
        heard_.clear();
    }

private:
    struct Member : CmObject {
        Member(std::vector<uint32_t>& heard, uint32_t number) : heard(heard), number(number) {}
        void notify(CmObject*, int32_t) override { heard.push_back(number); }
        std::vector<uint32_t>& heard;
        uint32_t number;
    };

    std::vector<uint32_t> heard_;
    std::vector<Ref<Member>> members_;
};

TEST_F(UpdateHandlerTest, TellsTheFirst10240) {
    for (const uint32_t number : {1024u, 1025u, 10240u, 10241u}) {
        SCOPED_TRACE(number);
        Crowd crowd(subject, number);
        subject.changed();
        crowd.expectHeardByFirst(std::min(number, 10240u));
        subject.removeDependent(nullptr);
        subject.changed();
        crowd.expectHeardByFirst(0);
    }
}

TEST_F(UpdateHandlerTest, TellsTheFirst1024WithoutMemory) {
    for (const uint32_t number : {1024u, 1025u}) {
        Crowd crowd(subject, number);
        bool hasAllocated = false;
        failEachAllocation([&](FailingAllocation& allocation) {
            allocation.during([&] { handler->triggerUpdates(&subject, 1, UpdateDone::suppress); });
            crowd.expectHeardByFirst(allocation.hasFailed() ? 1024 : number);
            hasAllocated |= allocation.hasFailed();
        });
        EXPECT_EQ(hasAllocated, number > 1024);
        subject.removeDependent(nullptr);
    }
}

class FaceOnly final : public FDependent {
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
    handler->addDependent(&foreign, &a);
    handler->triggerUpdates(&foreign, 1);
    EXPECT_EQ(take(), "") << "an object of ours can't be told of a foreign one";
    handler->removeDependent(&foreign, nullptr);
    subject.removeDependent(&foreign);
    EXPECT_EQ(handler->addDependent(static_cast<FObject*>(nullptr), &foreign), 1);
    EXPECT_EQ(handler->addDependent(&foreign, nullptr), 1);

    connect(a);
    foreign.isGoing = true;
    subject.removeDependent(&foreign);
    subject.changed(6);
    EXPECT_EQ(take(), "a:6, subject done:6") << "one that is a dependent no more isn't everyone";

    auto unheard = std::make_unique<FaceOnly>();
    handler->deferUpdates(unheard.get(), 2);
    unheard.reset();
    runDeferred();
    EXPECT_EQ(take(), "") << "one that nobody hears may be gone by the time that its end is told";
}

TEST_F(UpdateHandlerTest, AWrapperStandsForTheObjectThatItWraps) {
    CmDelegatingUnknown wrapper{retain<FInterface>(&subject)};
    wrapper.addDependent(&a);
    subject.changed(1);
    EXPECT_EQ(take(), "a:1, subject done:1");
    wrapper.changed(2);
    EXPECT_EQ(take(), "a:2");
    wrapper.removeDependent(&a);
    subject.changed(3);
    EXPECT_EQ(take(), "subject done:3");
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
    listeners.reserve(threads);
    for (int t = 0; t < threads; ++t)
        listeners.push_back(make<Atomic>(told));
    std::vector<std::thread> workers;
    workers.reserve(threads);
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
    EXPECT_FALSE(handler->hasDeliverable());
}

} // namespace
} // namespace qorl
