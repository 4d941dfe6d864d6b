#include "UpdateHandlerTest.h"
#include "foundation/messages/EventLoop.h"
#include "platform/Platform.h"
#include "platform/headless/HeadlessDesktop.h"

#include <functional>
#include <memory>
#include <utility>

namespace qorl {
namespace {

using testing::Listener;

class DeferredUpdatesTest : public testing::UpdateHandlerTest {};

TEST_F(DeferredUpdatesTest, CollapsesDeferredChangesAndKeepsTheirOrder) {
    connect(a);
    subject.deferUpdate(1);
    subject.deferUpdate(5);
    for (int i = 0; i < 1000; ++i)
        subject.deferUpdate(1);
    EXPECT_EQ(take(), "");
    EXPECT_TRUE(handler->hasDeliverable());
    runDeferred();
    EXPECT_EQ(take(), "a:1, subject done:1, a:5, subject done:5");
    runDeferred();
    EXPECT_EQ(take(), "");
}

TEST_F(DeferredUpdatesTest, DefersNothingThatNobodyHears) {
    subject.deferUpdate(4);
    EXPECT_EQ(take(), "subject done:4") << "at once";
    connect(a);
    subject.deferUpdate(4);
    subject.removeDependent(&a);
    connect(a);
    runDeferred();
    EXPECT_EQ(take(), "") << "the last dependent takes the queued change with it";
}

TEST_F(DeferredUpdatesTest, WhoLeavesEverywhereTakesTheChangesThatNobodyElseHears) {
    const EventLoop loop;
    connect(a);
    connect(b);
    other.addDependent(&a);
    c.deferUpdate(2);
    for (Listener* object : {&subject, &other})
        object->deferUpdate(7);
    handler->removeDependent(nullptr, &a);
    other.deferUpdate(7);
    EXPECT_EQ(take(), "other done:7") << "nobody is left to hear it, so it is done at once";
    c.addDependent(&b);
    runDeferred();
    EXPECT_EQ(take(), "b:2, b:7, subject done:7");
}

TEST_F(DeferredUpdatesTest, NoObjectIsNoChangeThatWaitsAlready) {
    const EventLoop loop;
    connect(a);
    subject.deferUpdate(0);
    runDeferred();
    take();
    // What the GUI thread remembers of its newest change is the number now, and no object.
    EXPECT_EQ(handler->deferUpdates(static_cast<FObject*>(nullptr), 0), 1);
}

TEST_F(DeferredUpdatesTest, HoldsBackTheChangeOfAnObjectThatIsBeingNotified) {
    connect(a);
    b.addDependent(&a);
    int depth = 0;
    a.reaction = [&] {
        if (depth++ > 0)
            return;
        subject.deferUpdate(7);
        b.deferUpdate(8);
        EXPECT_TRUE(handler->hasDeliverable());
        runDeferred();
        EXPECT_FALSE(handler->hasDeliverable()) << "a loop that waits for this would spin";
    };
    subject.changed(1);
    EXPECT_EQ(take(), "a:1, a:8, b done:8, subject done:1");
    runDeferred();
    EXPECT_EQ(take(), "a:7, subject done:7");
}

TEST_F(DeferredUpdatesTest, AnObjectThatLeavesWhileHeldBackIsForgotten) {
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
    EXPECT_EQ(take(), "a:1, b:3, subject done:3, gone done:1");
    gone.reset();
    runDeferred();
    EXPECT_EQ(take(), "");
}

TEST_F(DeferredUpdatesTest, DeliversTheChangesOfOneObjectAlone) {
    connect(a);
    b.addDependent(&a);
    subject.deferUpdate(1);
    b.deferUpdate(3);
    handler->triggerDeferredUpdates(&b);
    EXPECT_EQ(take(), "a:3, b done:3");
    handler->cancelUpdates(&subject);
    runDeferred();
    EXPECT_EQ(take(), "");
}

TEST_F(DeferredUpdatesTest, AChangeThatIsHeldBackStillCollapsesAndCanBeCancelled) {
    connect(a);
    other.addDependent(&b);
    a.reaction = [&] { runDeferred(); };
    for (const bool isCancelled : {false, true}) {
        subject.deferUpdate(7);
        other.deferUpdate(8);
        b.reaction = [&] {
            if (isCancelled)
                handler->cancelUpdates(&subject);
            else
                subject.deferUpdate(7);
        };
        subject.changed(1);
        EXPECT_EQ(take(), "a:1, b:8, other done:8, subject done:1");
        runDeferred();
        EXPECT_EQ(take(), isCancelled ? "" : "a:7, subject done:7");
    }
}

TEST_F(DeferredUpdatesTest, DestructionIsDeferredForAnObjectThatNobodyHearsYet) {
    subject.deferUpdate(2);
    EXPECT_EQ(take(), "");
    connect(a);
    runDeferred();
    EXPECT_EQ(take(), "a:2");
    subject.removeDependent(&a);
    subject.deferUpdate(2);
    subject.removeDependent(&a);
    connect(a);
    runDeferred();
    EXPECT_EQ(take(), "a:2") << "a removal that removes nobody leaves it alone";
    subject.deferUpdate(2);
    handler->removeDependent(&subject, nullptr);
    connect(a);
    runDeferred();
    EXPECT_EQ(take(), "") << "an object that left the table is in the queue no more";
}

TEST_F(DeferredUpdatesTest, AChangeIsQueuedAgainOnceItsNotificationHasBegun) {
    const EventLoop loop; // this is the GUI thread now, which knows the newest change without a look-up
    connect(a);
    int left = 2;
    a.reaction = [&] {
        if (left-- > 0)
            subject.deferUpdate(4);
    };
    for (const char* expected :
         {"a:4, subject done:4, a:4, subject done:4, a:4, subject done:4", "a:4, subject done:4"}) {
        subject.deferUpdate(4);
        subject.deferUpdate(4);
        runDeferred();
        EXPECT_EQ(take(), expected);
    }
    subject.deferUpdate(4);
    handler->cancelUpdates(&subject);
    subject.deferUpdate(4);
    runDeferred();
    EXPECT_EQ(take(), "a:4, subject done:4") << "after it was cancelled";
    runDeferred();
    EXPECT_EQ(take(), "");
}

TEST_F(DeferredUpdatesTest, AnObjectStaysUntilItHasHeardThatAllHaveHeard) {
    /// Acts for another thread at the moment at which the notification has left the stack.
    struct Desktop : platform::HeadlessDesktop {
        void wakeUp() override {
            if (const auto act = std::exchange(next, nullptr))
                act();
        }
        std::function<void()> next;
    };
    auto* desktop = new Desktop;
    ASSERT_TRUE(platform::start(desktop));
    Ref<Listener> gone = make<Listener>("gone", log);
    gone->addDependent(&a);
    gone->deferUpdate(1);
    a.reaction = [&] {
        gone->deferUpdate(7);
        desktop->next = [&] {
            gone->removeDependent(&a);
            gone.reset();
        };
    };
    runDeferred();
    EXPECT_EQ(gone, nullptr);
    EXPECT_EQ(take(), "a:1, gone done:1");
    platform::stop();
}

} // namespace
} // namespace qorl
