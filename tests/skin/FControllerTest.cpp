#include "skin/FController.h"

#include "WizardFixture.h"
#include "support/Poisoned.h"

namespace qorl::testing {
namespace {

class FControllerTest : public WizardFixture {};

/// Changes the lists of its owner by its own end.
struct Leaving : FController {
    explicit Leaving(UValueContainer& owner) : owner_(owner) {}
    ~Leaving() override {
        for (const char* name : {"a", "b"}) {
            owner_.setSubController(name, nullptr, false);
            owner_.setValue(name, nullptr);
        }
    }
    UValueContainer& owner_;
};

TEST_F(FControllerTest, TheEndOfWhatItHeldMayChangeItsLists) {
    for (const bool isReplaced : {false, true}) {
        auto owner = make<Poisoned<UValueContainer>>();
        const auto stays = make<FController>();
        const auto other = make<FController>();
        owner->setSubController("a", new Leaving(*owner), true);
        for (const char* name : {"b", "c", "d"}) {
            owner->setSubController(name, stays.get(), false);
            owner->setValue(name, make<Binding::IntValue>());
        }
        auto value = make<Binding::IntValue>();
        value->setTarget(Ref<FController>::adopt(new Leaving(*owner)).get(), 0, true);
        owner->setValue("a", std::move(value));
        owner->setValue("a", isReplaced ? make<Binding::IntValue>() : nullptr);
        EXPECT_FALSE(owner->getValue("a"));
        EXPECT_FALSE(owner->getValue("b"));
        EXPECT_TRUE(owner->getValue("c") && owner->getValue("d"));

        owner->setSubController("a", new Leaving(*owner), true);
        owner->setSubController("b", stays.get(), false);
        owner->setSubController("a", isReplaced ? other.get() : nullptr, false);
        EXPECT_FALSE(owner->getSubController("a"));
        EXPECT_FALSE(owner->getSubController("b"));
        EXPECT_EQ(owner->getSubController("c"), stays.get());
        EXPECT_EQ(owner->getSubController("d"), stays.get());
    }
}

/// Has another sub-controller each time that it is asked.
class Renewing : public TestController {
public:
    IController* getSubController(const char* name) override {
        setSubController(name, new Poisoned<TestController>, true);
        return TestController::getSubController(name);
    }
};

TEST_F(FControllerTest, ABuildKeepsTheControllersThatItStandsIn) {
    controller_ = make<Renewing>();
    const Ref<UView> view =
        build("<controller name='in'><slider name='../in/x'/><slider name='y'/></controller>");
    EXPECT_EQ(view->getSubViewCount(), 2);
}

/// Lets go of itself at the first view.
class Fleeting : public TestController {
public:
    UView* viewCreated(UView* view, const ViewElement*) override {
        last.reset();
        return view;
    }
    Ref<Fleeting> last;
};

TEST_F(FControllerTest, ABuildKeepsTheControllerThatItIsFor) {
    controller_ = nullptr;
    load("<template name='T'><view/><slider name='x'/></template>");
    auto fleeting = make<Poisoned<Fleeting>>();
    fleeting->last = fleeting;
    Fleeting* const controller = fleeting.get();
    fleeting.reset();
    EXPECT_EQ(wizard().createView("T", controller, nullptr)->getSubViewCount(), 2);
}

/// Keeps the question for the range of a loop, and answers with numbers beyond 32 bits.
class Pondering : public TestController {
public:
    int32_t handleMessage(FMessage* message) override {
        message->setInt("first", int64_t{1} << 40);
        message->setInt("final", (int64_t{1} << 40) + 3);
        question = retain(message);
        return handled;
    }
    Ref<FMessage> question;
};

TEST_F(FControllerTest, TheQuestionForARangeMayBeKept) {
    const auto pondering = make<Pondering>();
    controller_ = pondering;
    EXPECT_EQ(built("<for data='rows' variable='[i]'><label titleNT='[i]'/></for>"), "2147483647@0,0");
    EXPECT_EQ(pondering->question->getString("data").toUtf8(), "rows");
}

} // namespace
} // namespace qorl::testing
