#include "foundation/messages/FMessenger.h"
#include "foundation/messages/Target.h"
#include "support/FailingAllocation.h"
#include "support/Objects.h"

#include <chrono>
#include <future>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace qorl {
namespace {

using NameObserver = FMessenger::NameObserver;
using testing::Target;

class MessengerNamesTest : public testing::MessengerTest {
protected:
    Target observer{log, "observer"};
};

TEST_F(MessengerNamesTest, ReachesWhoHasTheNameAtOnceOrLater) {
    const Ref<FMessage> message = make<FMessage>("Hello");
    EXPECT_TRUE(messenger.registerName("Anna", &a));
    EXPECT_TRUE(messenger.registerName("Bert", &b));
    EXPECT_FALSE(messenger.registerName("Anna", &b)) << "the name is taken";
    EXPECT_FALSE(messenger.registerName("Carl", nullptr));
    a.answer = 7;
    EXPECT_EQ(messenger.sendByName("Anna", message.get()), 7);
    EXPECT_EQ(messenger.sendByName("anna", message.get()), 0) << "names are exact";
    EXPECT_EQ(messenger.sendByName("Anna", nullptr), 0);
    EXPECT_EQ(take(), Log{"a:Hello"});

    EXPECT_TRUE(messenger.postByName("Bert", message));
    EXPECT_EQ(take(), Log{});
    EXPECT_EQ(deliver(), Log{"b:Hello"});

    EXPECT_TRUE(messenger.unregisterName("Bert"));
    EXPECT_FALSE(messenger.unregisterName("Bert"));
    EXPECT_FALSE(messenger.postByName("Bert", message));
    EXPECT_EQ(referencesOn(message.get()), 1u) << "a message to nobody is released";
    EXPECT_TRUE(messenger.registerName("Bert", &a)) << "a name that was given up is free";
}

TEST_F(MessengerNamesTest, TheObserverHearsBeforeTheTargetWhenItIsToBeTold) {
    const Ref<FMessage> message = make<FMessage>("Hello");
    messenger.registerName("Anna", &a);
    messenger.setNameObserver(&observer);
    messenger.sendByName("Anna", message.get());
    EXPECT_EQ(take(), Log{"a:Hello"});
    messenger.sendByName("Anna", message.get(), NameObserver::tell);
    EXPECT_EQ(take(), (Log{"observer:Hello", "a:Hello"}));
    messenger.postByName("Anna", message, NameObserver::tell);
    EXPECT_EQ(take(), Log{"observer:Hello"});
    EXPECT_EQ(deliver(), Log{"a:Hello"});
    messenger.sendByName("Nobody", message.get(), NameObserver::tell);
    EXPECT_EQ(take(), Log{}) << "a message to nobody isn't told";

    observer.reaction = [&](FMessage&) { messenger.unregisterName("Anna"); };
    EXPECT_EQ(messenger.sendByName("Anna", message.get(), NameObserver::tell), 0);
    EXPECT_EQ(take(), Log{"observer:Hello"});
    messenger.setNameObserver(nullptr);
}

TEST_F(MessengerNamesTest, ATargetMayGoWhileItIsSentTo) {
    Ref<Target> own = make<Target>(log, "own");
    messenger.registerName("Own", own.get());
    own->reaction = [&](FMessage&) {
        messenger.unregisterName("Own");
        own.reset();
        log.push_back("left");
    };
    EXPECT_EQ(messenger.sendByName("Own", make<FMessage>("Hello").get()), 1);
    EXPECT_EQ(take(), (Log{"own:Hello", "left"}));
}

/// Delivery holds its lock while a name is looked up from within; senders on other threads call their targets
/// without a lock. Either order would stand still if one of them kept the names' lock.
TEST_F(MessengerNamesTest, SendingFromDeliveryAndFromAThreadDontWaitForEachOther) {
    messenger.registerName("Anna", &a);
    a.reaction = [&](FMessage& message) {
        if (message.isNamed("Outside"))
            messenger.cancelAll(&b);
    };
    b.reaction = [&](FMessage&) { messenger.unregisterName("Nobody"); };
    std::thread other([&] {
        Log unused;
        Target quiet(unused, "");
        messenger.registerName("Quiet", &quiet);
        quiet.reaction = [&](FMessage&) { messenger.cancelAll(&quiet); };
        for (int i = 0; i < 500; ++i)
            messenger.sendByName("Quiet", make<FMessage>("Outside").get());
        messenger.unregisterName("Quiet");
    });
    for (int i = 0; i < 500; ++i) {
        messenger.post(&b, "Tick");
        messenger.deliverPending();
    }
    other.join();
    EXPECT_EQ(take().size(), 500u);
}

/// Looks, as it goes, whether another thread can use the names at that moment.
class NamesProbe : public CmObject {
public:
    NamesProbe(FMessenger& messenger, bool& areFree, std::thread& other) : areFree_(areFree) {
        // It stands ready, since there may be no memory for it in the end.
        other = std::thread([talk = talk_, &messenger] {
            talk->going.get_future().wait();
            messenger.unregisterName("Nobody");
            talk->used.set_value();
        });
    }
    ~NamesProbe() override {
        talk_->going.set_value();
        areFree_ = used_.wait_for(std::chrono::seconds(10)) == std::future_status::ready;
    }

private:
    struct Talk {
        std::promise<void> going, used;
    };

    std::shared_ptr<Talk> talk_ = std::make_shared<Talk>();
    std::future<void> used_ = talk_->used.get_future();
    bool& areFree_;
};

/// What a message holds may wait in its destructor for a delivery that asks for a name.
TEST_F(MessengerNamesTest, AMessageThatIsNotPostedGoesBehindTheLock) {
    failEachAllocation([&](FailingAllocation& allocation) {
        for (const char* name : {"Anna", "Nobody"}) {
            SCOPED_TRACE(name);
            FMessenger fresh;
            fresh.registerName("Anna", &a);
            std::thread other;
            bool areFree = false;
            Ref<FMessage> message = make<FMessage>("Hello");
            message->setObject("Probe", make<NamesProbe>(fresh, areFree, other).get());
            const bool hasFailed = allocation.hasFailed();
            const bool done = allocation.during([&] { return fresh.postByName(name, std::move(message)); });
            EXPECT_EQ(done, name[0] == 'A' && (hasFailed || !allocation.hasFailed()));
            fresh.cancelAll(&a);
            EXPECT_TRUE(areFree);
            other.join();
        }
    });
}

TEST_F(MessengerNamesTest, AChannelGivesEachSubscriberACopyOfItsOwn) {
    const int32_t first = messenger.createChannel();
    const int32_t second = messenger.createChannel();
    EXPECT_EQ(first, 1);
    EXPECT_EQ(second, 2);
    EXPECT_TRUE(messenger.subscribe(first, &a));
    EXPECT_TRUE(messenger.subscribe(first, &b));
    EXPECT_TRUE(messenger.subscribe(first, &a));
    EXPECT_TRUE(messenger.subscribe(second, &b));
    Ref<FMessage> message = make<FMessage>("News");
    message->setInt("Number", 4);
    std::vector<int64_t> numbers;
    a.reaction = b.reaction = [&](FMessage& copy) {
        numbers.push_back(copy.getInt("Number"));
        copy.setInt("Number", 0);
        EXPECT_NE(&copy, message.get());
    };
    EXPECT_TRUE(messenger.postToChannel(first, message));
    EXPECT_EQ(referencesOn(message.get()), 1u) << "the message itself is released";
    EXPECT_EQ(deliver(), (Log{"a:News", "b:News"}));
    EXPECT_EQ(numbers, (std::vector<int64_t>{4, 4}));

    messenger.unsubscribe(first, &a);
    messenger.postToChannel(first, message);
    EXPECT_EQ(deliver(), Log{"b:News"});
    messenger.releaseChannel(first);
    EXPECT_FALSE(messenger.postToChannel(first, message));
    EXPECT_FALSE(messenger.subscribe(first, &a));
    for (const int32_t unknown : {0, -1, 3})
        EXPECT_FALSE(messenger.postToChannel(unknown, message)) << unknown;
    EXPECT_EQ(deliver(), Log{});
    EXPECT_EQ(messenger.createChannel(), 3) << "an old number never means a new channel";
    EXPECT_EQ(referencesOn(message.get()), 1u);
}

TEST_F(MessengerNamesTest, KeepsNothingHalfDoneWhenMemoryIsShort) {
    failEachAllocation([&](FailingAllocation& allocation) {
        FMessenger fresh;
        const Ref<FMessage> message = make<FMessage>("Hello");
        const bool done = allocation.during([&] { return fresh.registerName("A rather long name", &a); });
        EXPECT_EQ(done, !allocation.hasFailed());
        EXPECT_EQ(fresh.sendByName("A rather long name", message.get()), done ? 1 : 0);
        take();
    });
    failEachAllocation([&](FailingAllocation& allocation) {
        FMessenger fresh;
        const Ref<FMessage> message = make<FMessage>("News");
        const bool done = allocation.during([&] {
            const int32_t channel = fresh.createChannel();
            return channel != 0 && fresh.subscribe(channel, &a) && fresh.subscribe(channel, &b) &&
                   fresh.postToChannel(channel, message);
        });
        EXPECT_EQ(done, !allocation.hasFailed());
    });
}

} // namespace
} // namespace qorl
