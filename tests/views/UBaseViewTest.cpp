#include "views/UBaseView.h"

#include "RecordingViews.h"
#include "foundation/messages/FMessage.h"
#include "persistence/attributes/FAttributes.h"
#include "persistence/defaults/FDefaultPool.h"
#include "support/HeadlessShell.h"
#include "support/PoisonedView.h"
#include "support/ProbeView.h"
#include "windows/UDocWindow.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace qorl {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using testing::HeadlessShell;
using testing::ProbeController;

class UBaseViewTest : public ::testing::Test {
protected:
    UBaseViewTest() {
        base_->setController(controller_.get());
        base_->setWindowTitle(ConstString("Mixer"));
        base_->setWindowStyle(styleWindowPreset);
    }
    ~UBaseViewTest() override { UBaseView::clearWindowizeHooks(); }

    Ref<UWindow> windowize(BaseWindowType type, ShowWindow show = ShowWindow::yes) {
        WindowizePlan plan;
        plan.type = type;
        plan.show = show;
        Ref<UWindow> window = base_->windowize(plan);
        shell_.settle();
        return window;
    }

    HeadlessShell shell_;
    Ref<ProbeController> controller_ = make<ProbeController>();
    Ref<UBaseView> base_ = make<UBaseView>(CmRect{0, 0, 200, 100});
};

TEST_F(UBaseViewTest, GoesFromOneKindOfWindowToAnotherAndKeepsTheFocus) {
    auto field = make<UView>(CmRect{0, 0, 50, 20});
    field->setFocusable(true);
    base_->addSubView(field);
    const Ref<UWindow> document = windowize(BaseWindowType::document);
    ASSERT_TRUE(document);
    EXPECT_EQ(document->getWindowType(), WindowType::document);
    EXPECT_EQ(document->getClientSize(), (CmSize{200, 100}));
    EXPECT_EQ(document->getTitle(), ConstString("Mixer"));
    EXPECT_EQ(document->getController(), controller_.get());
    EXPECT_EQ(base_->getOwnWindow(), document.get());
    EXPECT_EQ(base_->getAttach(), viewAttachAll);
    EXPECT_TRUE(field->isAttached());
    shell_.desktop().setFocus(field.get());
    document->setSize({240, 130});
    shell_.settle();
    EXPECT_EQ(base_->getClientSize(), (CmSize{240, 130}));

    // The window must not open before its controller knows it.
    std::vector<std::string> heard;
    controller_->answer = [&](FMessage& message) {
        for (const char* name : {"MsgWindowTypeChange", "MsgWindowized", "Before Open"})
            if (message.isNamed(name))
                heard.push_back(name + std::to_string(message.getInt("NewType")));
        return 0;
    };
    const Ref<UWindow> panel = windowize(BaseWindowType::panel);
    ASSERT_TRUE(panel);
    EXPECT_EQ(panel->getWindowType(), WindowType::floating);
    EXPECT_FALSE(document->isOpen());
    EXPECT_EQ(panel->getClientSize(), (CmSize{240, 130})) << "the size of the window before was lost";
    EXPECT_EQ(shell_.desktop().getFocus(), field.get());
    EXPECT_THAT(heard, ElementsAre("MsgWindowTypeChange2", "MsgWindowized0", "Before Open0"));
}

TEST_F(UBaseViewTest, ReturnsToItsPlaceWhenItsWindowDissolves) {
    auto host = make<UView>(CmRect{0, 0, 300, 300});
    base_->setFrame({30, 40, 230, 140}, false);
    host->addSubView(base_);
    ASSERT_TRUE(windowize(BaseWindowType::document));
    EXPECT_EQ(host->getSubViewCount(), 0);
    EXPECT_FALSE(windowize(BaseWindowType::none));
    EXPECT_EQ(base_->getParent(), host.get());
    EXPECT_EQ(textOf(base_->getFrameRect()), "30,40,230,140");
    EXPECT_EQ(base_->getOwnWindow(), nullptr);

    ASSERT_TRUE(windowize(BaseWindowType::document));
    host.reset();
    EXPECT_FALSE(windowize(BaseWindowType::none));
    EXPECT_EQ(base_->getParent(), nullptr) << "the view returned to a parent that is gone";
}

TEST_F(UBaseViewTest, LetsHooksChangeThePlanAndRefusesWhatDoesNotStand) {
    UBaseView::addWindowizeHook([](UBaseView&, WindowizePlan& plan) {
        if (plan.type == BaseWindowType::document)
            plan.type = BaseWindowType::panel;
    });
    const Ref<UWindow> window = windowize(BaseWindowType::document);
    ASSERT_TRUE(window);
    EXPECT_EQ(window->getWindowType(), WindowType::floating);
    EXPECT_EQ(base_->getWindowType(), BaseWindowType::panel);
}

TEST_F(UBaseViewTest, TakesADocumentWithoutAStoredStateThatCanBe) {
    base_->setStateName(ConstString("UBaseViewTest"), 1);
    const Ref<UWindow> hidden = windowize(BaseWindowType::stored, ShowWindow::no);
    ASSERT_TRUE(hidden);
    EXPECT_EQ(hidden->getWindowType(), WindowType::document);
    EXPECT_TRUE(base_->hasBaseFlag(UBaseView::baseUsesStoredState));
    EXPECT_FALSE(hidden->isOpen());
    base_->setBaseFlag(UBaseView::baseOffersFullScreen, true);
    FAttributes& stored =
        FGlobalDefaultPool::instance()->getGroup(ConstString("UBaseViewTest"), 1, true)->values();
    for (const int64_t state : {0, 4, 6, 7, 8, -1}) {
        SCOPED_TRACE(state);
        stored.setInteger("State", state);
        const Ref<UWindow> window = windowize(BaseWindowType::stored);
        ASSERT_TRUE(window);
        EXPECT_EQ(window->getWindowType(), WindowType::document);
    }
    FGlobalDefaultPool::instance()->removeGroup(ConstString("UBaseViewTest"));
}

TEST_F(UBaseViewTest, LetsAHookAddHooks) {
    static int32_t calls;
    calls = 0;
    UBaseView::addWindowizeHook([](UBaseView&, WindowizePlan&) {
        for (int32_t i = 0; i < 20; ++i)
            UBaseView::addWindowizeHook([](UBaseView&, WindowizePlan&) { ++calls; });
    });
    ASSERT_TRUE(windowize(BaseWindowType::document));
    EXPECT_EQ(calls, 0) << "a new one is asked from the next time on";
}

TEST_F(UBaseViewTest, ClampsAProposalWhenItIsNotAloneInAWindow) {
    base_->setWindowSizeLimits({50, UBaseView::noLimit, 120, 80});
    const struct {
        CmRect asked;
        const char* answered;
        bool taken;
    } cases[] = {
        {{0, 0, 100, 60}, "0,0,100,60", true},
        {{0, 0, 10, 60}, "0,0,50,60", false},
        {{0, 0, 500, 500}, "0,0,120,80", false},
        {{0, 0, 60, 1}, "0,0,60,1", true},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(textOf(c.asked));
        CmRect rect = c.asked;
        EXPECT_EQ(base_->checkSize(rect), c.taken);
        EXPECT_EQ(textOf(rect), c.answered);
    }
}

TEST_F(UBaseViewTest, FollowsItsOnlySubViewAndPassesItOn) {
    auto host = make<UView>(CmRect{0, 0, 300, 300});
    host->addSubView(base_);
    auto content = make<UView>(CmRect{0, 0, 200, 100});
    base_->addSubView(content);
    base_->subViewFrameRequest(content.get(), {0, 0, 80, 60}, true);
    EXPECT_EQ(textOf(base_->getFrameRect()), "0,0,80,60");
    base_->addSubView(make<UView>(CmRect{0, 0, 10, 10}));
    base_->subViewFrameRequest(content.get(), {0, 0, 90, 70}, true);
    EXPECT_EQ(textOf(base_->getFrameRect()), "0,0,80,60") << "it followed one of two subviews";
    base_->setBaseFlag(UBaseView::baseResizesWindow, true);
    base_->subViewFrameRequest(content.get(), {0, 0, 95, 75}, true);
    EXPECT_EQ(textOf(base_->getFrameRect()), "0,0,95,75");

    host->removeSubView(base_.get());
    const Ref<UWindow> window = windowize(BaseWindowType::document);
    ASSERT_TRUE(window);
    base_->subViewFrameRequest(content.get(), {0, 0, 180, 130}, true);
    EXPECT_EQ(window->getSize(), (CmSize{180, 130}));
    EXPECT_EQ(textOf(base_->getFrameRect()), "0,0,180,130");
    EXPECT_EQ(textOf(content->getFrameRect()), "0,0,180,130");
    window->setMaximized(true);
    base_->subViewFrameRequest(content.get(), {0, 0, 150, 110}, true);
    EXPECT_EQ(base_->getFrameSize(), window->getClientSize()) << "a maximized window shows a hole";
    window->setMaximized(false);
    EXPECT_EQ(textOf(base_->getFrameRect()), "0,0,150,110");
}

TEST_F(UBaseViewTest, MayGoWhenItsSubViewHearsOfTheSizeThatItTakes) {
    CallLog log;
    LifecycleLog listener(log);
    Ref<UView> base = make<testing::Poisoned<UBaseView>>(CmRect{0, 0, 200, 100});
    const auto content = make<UView>(CmRect{0, 0, 200, 100});
    base->addSubView(content);
    UView& host = shell_.window();
    UView* leaving = base.get();
    host.addSubView(std::move(base));
    listener.during = [&](UView&, std::string_view notice) {
        if (notice == "sized")
            host.removeSubView(leaving);
    };
    content->addLifecycleListener(&listener);
    leaving->subViewFrameRequest(content.get(), {0, 0, 80, 60}, true);
    EXPECT_EQ(host.getSubViewCount(), 0);
    EXPECT_EQ(content->getParent(), nullptr);
}

TEST_F(UBaseViewTest, KeepsItsControllerWhileThatHearsOfAWindow) {
    class Leaving : public CmObject {
    public:
        UBaseView* base = nullptr;
        int32_t* heard = nullptr;
        int32_t handleMessage(FMessage* message) override {
            if (message->isNamed("MsgWindowized")) {
                base->getOwnWindow()->setController(nullptr);
                base->setController(nullptr);
                ++*heard;
            }
            return notHandled;
        }
    };
    int32_t heard = 0;
    auto leaving = make<testing::Poisoned<Leaving>>();
    leaving->base = base_.get();
    leaving->heard = &heard;
    base_->setController(leaving.get());
    leaving.reset();
    windowize(BaseWindowType::document);
    EXPECT_EQ(heard, 1);
}

TEST_F(UBaseViewTest, AnswersForItsOwnSurroundings) {
    auto inner = make<UView>(CmRect{0, 0, 10, 10});
    base_->addSubView(inner);
    const auto context = make<ProbeController>();
    base_->setViewContext(context.get());
    base_->setBackgroundColor(UColor::fromBytes(1, 2, 3));
    base_->setHelpIdentifier(ConstString(u"mixer.help"));
    EXPECT_EQ(inner->getViewContext(), context.get());
    EXPECT_EQ(inner->getBackgroundColor(inner.get()), UColor::fromBytes(1, 2, 3));
    EXPECT_STREQ(base_->getHelpIdentifier(), "mixer.help");
    EXPECT_EQ(inner->getHelpIdentifier(), nullptr);
}

TEST_F(UBaseViewTest, ForwardsItsStateToItsWindowWithoutComingBack) {
    base_->setFlag(viewPersistent, true);
    base_->setWindowStyle(styleWindowPreset | styleRememberViews);
    ASSERT_TRUE(windowize(BaseWindowType::document));
    FAttributes attributes;
    EXPECT_TRUE(base_->storeAttributes(&attributes));
    EXPECT_TRUE(attributes.contains("Size")) << "the window did not store";
    base_->setPosition({11, 22});
    shell_.settle();
    EXPECT_EQ(base_->getPosition(), base_->getOwnWindow()->getPosition());
}

TEST_F(UBaseViewTest, StaysWhereItIsEmbeddedWhenThereIsNoWindowToDissolve) {
    auto host = make<UView>(CmRect{0, 0, 300, 300});
    host->addSubView(base_);
    shell_.window().addSubView(host);
    EXPECT_FALSE(windowize(BaseWindowType::none));
    EXPECT_EQ(base_->getParent(), host.get());
    EXPECT_TRUE(base_->isAttached());
}

TEST_F(UBaseViewTest, TellsItsControllerThatItHearsTheKeysFirst) {
    base_->setBaseFlag(UBaseView::baseControllerFocus, true);
    ASSERT_TRUE(windowize(BaseWindowType::document));
    EXPECT_THAT(controller_->messages, Contains("SetControllerFocus"));
}

} // namespace
} // namespace qorl
