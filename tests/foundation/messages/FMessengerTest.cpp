#include "foundation/messages/FMessenger.h"

#include "foundation/messages/FMessage.h"
#include "foundation/text/CmString.h"

#include <qorl/IPlugMessageTarget.h>

#include <functional>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <vector>

namespace qorl {
namespace {

using Log = std::vector<std::string>;

struct Target : CmObject {
    explicit Target(Log& log, std::string name = "") : log_(log), name_(std::move(name)) {}
    int32_t handleMessage(FMessage* message) override {
        log_.push_back(name_ + message->getName().text8());
        if (reaction)
            reaction();
        return handled;
    }
    std::function<void()> reaction;
    Log& log_;
    std::string name_;
};

class FMessengerTest : public ::testing::Test {
protected:
    Log deliver() {
        log.clear();
        messenger.deliverPending();
        return log;
    }

    Log log;
    FMessenger messenger;
    Target a{log, "a:"};
    Target b{log, "b:"};
};

TEST_F(FMessengerTest, DeliversInOrderAndKeepsWhatIsPostedMeanwhile) {
    messenger.post(&a, "One");
    messenger.post(&b, "Two");
    messenger.post(&a, "Three");
    a.reaction = [&] {
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
    EXPECT_EQ(second->addRef(), 2u) << "the dropped message is released";
    second->release();
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
    b.reaction = [&] { messenger.cancelAll(&a); };
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
    a.reaction = [&] {
        a.reaction = nullptr;
        messenger.post(&a, "Three");
        messenger.deliverPending();
        log.push_back("end of One");
    };
    EXPECT_EQ(deliver(), (Log{"a:One", "b:Two", "a:Three", "end of One"}));
}

TEST_F(FMessengerTest, TakesOnlyItsOwnMessagesThroughTheInterface) {
    Ref<IMessenger> face;
    ASSERT_EQ(messenger.queryInterface(IMessenger::iid, face.out()), Result::ok);
    CmObject noMessage;
    EXPECT_FALSE(face->post(&a, &noMessage));
    EXPECT_EQ(noMessage.addRef(), 2u) << "the reference stays with the caller";
    noMessage.release();
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

TEST_F(FMessengerTest, TakesPostsFromAllThreads) {
    constexpr size_t perThread = 500;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&] {
            for (size_t i = 0; i < perThread; ++i)
                messenger.post(&a, "Tick");
        });
    while (log.size() < 4 * perThread)
        messenger.deliverPending();
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(log.size(), 4 * perThread);
}

TEST_F(FMessengerTest, ReleasesWhatIsQueuedWhenItGoes) {
    const Ref<FMessage> message = make<FMessage>("Kept");
    {
        FMessenger passing;
        passing.post(&a, message);
    }
    EXPECT_EQ(message->addRef(), 2u);
    message->release();
    EXPECT_EQ(log, Log{});
}

TEST(FMessage, ReadsBackItsAttributesAndNothingForMissingKeys) {
    FMessage message("Test");
    EXPECT_TRUE(message.isNamed("Test"));
    EXPECT_FALSE(message.isNamed("test"));
    EXPECT_FALSE(message.hasAttributes());
    EXPECT_EQ(message.getInt("no"), 0);
    EXPECT_EQ(message.getFloat("no"), 0);
    EXPECT_TRUE(message.getString("no").isEmpty());
    EXPECT_EQ(message.getObject("no"), nullptr);
    EXPECT_FALSE(message.contains("no"));
    EXPECT_FALSE(message.hasAttributes()) << "reading makes no list";

    const Ref<CmString> object = make<CmString>("object");
    message.setInt("int", INT64_MIN);
    message.setFloat("float", 0.5);
    message.setString("string", ConstString(u"text"));
    message.setObject("object", object.get());
    EXPECT_EQ(message.getInt("int"), INT64_MIN);
    EXPECT_EQ(message.getFloat("float"), 0.5);
    EXPECT_EQ(message.getString("string").toUtf8(), "text");
    EXPECT_EQ(message.getObject("object"), object.get());
    EXPECT_EQ(object->addRef(), 3u);
    object->release();

    const Ref<CmObject> copy = Ref<CmObject>::adopt(message.clone());
    message.remove("int");
    message.setObject("object", nullptr);
    EXPECT_FALSE(message.contains("int"));
    EXPECT_FALSE(message.contains("object"));
    EXPECT_EQ(static_cast<FMessage*>(copy.get())->getInt("int"), INT64_MIN) << "a copy has a list of its own";
}

TEST(FMessage, ShowsItsAttributesToOtherModules) {
    const Ref<FMessage> message = make<FMessage>("Test");
    Ref<IMessageAttributes> face;
    ASSERT_EQ(message->queryInterface(IMessageAttributes::iid, face.out()), Result::ok);
    CmObject object;
    EXPECT_EQ(face->setInt16(u"int", 3), Result::ok);
    EXPECT_EQ(face->setFloat8("float", 1.5), Result::ok);
    EXPECT_EQ(face->setString16(u"string", u"tschüß"), Result::ok);
    EXPECT_EQ(face->setObject8("object", &object), Result::ok);
    EXPECT_EQ(message->getInt("int"), 3);
    EXPECT_EQ(message->getObject("object"), &object);

    double number = 0;
    EXPECT_EQ(face->getFloat16(u"float", &number), Result::ok);
    EXPECT_EQ(number, 1.5);
    CmString text;
    EXPECT_EQ(face->getString8("string", &text), Result::ok);
    EXPECT_EQ(text.string().toUtf8(), "tschüß");
    FInterface* found = nullptr;
    EXPECT_EQ(face->getObject16(u"object", &found), Result::ok);
    EXPECT_EQ(castToCmObject(found), &object);

    int64_t missing = 9;
    EXPECT_EQ(face->getInt8("missing", &missing), Result::no);
    EXPECT_EQ(missing, 0);
    EXPECT_EQ(face->getInt8(nullptr, &missing), Result::invalidArgument);
    EXPECT_EQ(face->contains8("int"), Result::ok);
    EXPECT_EQ(face->remove8("int"), Result::ok);
    EXPECT_EQ(face->contains8("int"), Result::no);
    face->remove8("object");
}

} // namespace
} // namespace qorl
