#include "foundation/messages/UpdateHandler.h"

#include "foundation/Listener.h"

#include <qorl/Ref.h>

#include <atomic>
#include <gtest/gtest.h>
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
        for (CmObject* object :
             {static_cast<CmObject*>(&subject), static_cast<CmObject*>(&a), static_cast<CmObject*>(&b)}) {
            object->removeDependent(nullptr);
            UpdateHandler::instance()->removeDependent(nullptr, object);
        }
    }

    Log log;
    Listener subject{"subject", log};
    Listener a{"a", log};
    Listener b{"b", log};
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
    EXPECT_EQ(UpdateHandler::instance()->triggerUpdates(nullptr, 1), 1);
    EXPECT_EQ(UpdateHandler::instance()->triggerUpdates(&b, 1), 1) << "nobody to tell";
}

TEST_F(UpdateHandlerTest, SkipsWhoIsRemovedDuringTheNotification) {
    connect(a);
    connect(b);
    struct Case {
        const char* what;
        std::function<void()> remove;
    };
    const Case cases[] = {
        {"from the object", [&] { subject.removeDependent(&b); }},
        {"from everywhere", [&] { UpdateHandler::instance()->removeDependent(nullptr, &b); }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        a.reaction = c.remove;
        subject.changed();
        EXPECT_EQ(take(), (Log{"a:1", "subject done:1"}));
        a.reaction = nullptr;
        connect(b);
    }
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

TEST_F(UpdateHandlerTest, AnObjectMayLoseItsLastReferenceWhileItIsTold) {
    Ref<Listener> owned = make<Listener>("owned", log);
    owned->addDependent(&a);
    a.reaction = [&] {
        owned->removeDependent(&a);
        owned.reset();
    };
    owned->changed(1);
    EXPECT_EQ(take(), (Log{"a:1", "owned done:1"}));
}

struct Counting : CmObject {
    explicit Counting(uint32_t& count) : count_(count) {}
    void notify(CmObject*, int32_t) override { ++count_; }
    uint32_t& count_;
};

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
        const bool known = id == FInterface::iid || id == FDependent::iid;
        *out = known ? this : nullptr;
        return known ? Result::ok : Result::noInterface;
    }
    uint32_t addRef() override { return 1; }
    uint32_t release() override { return 1; }
    void update(FInterface* changed, int32_t message) override { heard = {changed, message}; }

    std::pair<FInterface*, int32_t> heard;
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
    EXPECT_EQ(UpdateHandler::instance()->addDependent(nullptr, &foreign), 1);
    EXPECT_EQ(UpdateHandler::instance()->addDependent(&foreign, nullptr), 1);
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
