#include "binding/IntValue.h"
#include "foundation/messages/FMessage.h"
#include "support/HeadlessShell.h"
#include "support/PoisonedView.h"
#include "support/ProbeView.h"
#include "views/UCursorView.h"
#include "views/controls/UControl.h"
#include "views/controls/UTextButton.h"
#include "windows/UDocWindow.h"
#include "windows/UModalDialog.h"
#include "windows/UPopupWindow.h"
#include "windows/UToolTipHandler.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace qorl {
namespace {

using testing::CallLog;
using ::testing::Contains;
using ::testing::ElementsAre;
using testing::HeadlessShell;
using testing::ProbeController;
using testing::ProbeView;

class PopupTest : public ::testing::Test {
protected:
    PopupTest() {
        under = make<ProbeView>(CmRect{0, 0, 400, 300}, "under", &log);
        shell.window().addSubView(under);
        shell.settle();
    }

    Ref<UPopupWindow> open(uint32_t flags) {
        auto popup = make<UPopupWindow>(CmRect{600, 100, 700, 200}, 0U, ConstString());
        popup->addSubView(make<ProbeView>(CmRect{0, 0, 100, 100}, "inside", &log));
        popup->setWindowFlag(flags, true);
        shell.open(*popup);
        log.clear();
        return popup;
    }

    static CallLog clickOf(const std::string& name) {
        return {name + ".mouseDown 20,20", name + ".mouseUp 20,20", name + ".click 20,20"};
    }

    CallLog log;
    HeadlessShell shell;
    Ref<ProbeView> under;
};

TEST_F(PopupTest, ClosesByTheClicksThatItsFlagsName) {
    const struct {
        const char* what;
        uint32_t flag;
        bool isInside;
        bool staysOpen;
        CallLog heard; ///< empty: neither the press nor its release and click
    } cases[] = {
        {"outside, and spent", UPopupWindow::closesOnOutsideClick, false, false, {}},
        {"outside without that flag", 0, false, true, clickOf("under")},
        {"inside", UPopupWindow::closesOnOutsideClick, true, true, clickOf("inside")},
        {"any, and spent", UPopupWindow::closesOnAnyClick, true, false, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        const Ref<UPopupWindow> popup = open(c.flag);
        shell.aim(c.isInside ? static_cast<UWindow&>(*popup) : shell.window());
        if (c.flag == UPopupWindow::closesOnOutsideClick) {
            EXPECT_EQ(shell.desktop().getOpenPopup(), popup.get());
        }
        shell.advance(1000);
        shell.press({20, 20});
        EXPECT_EQ(popup->isOpen(), c.staysOpen) << "by the press";
        shell.release();
        EXPECT_EQ(popup->isOpen(), c.staysOpen);
        EXPECT_EQ(popup->lastClickInside(), c.isInside);
        EXPECT_EQ(log, c.heard);
        popup->willClose(false);
        shell.aim(shell.window());
        log.clear();
        shell.click({20, 20});
        EXPECT_THAT(log, Contains("under.mouseDown 20,20")) << "the next one reaches the view again";
    }
}

TEST_F(PopupTest, GoesAfterAClickUnlessThatBeginsToTrackTheMouse) {
    for (const bool tracks : {false, true}) {
        SCOPED_TRACE(tracks);
        const Ref<UPopupWindow> popup = open(UPopupWindow::closesAfterClick);
        auto* inside = static_cast<ProbeView*>(popup->getFirstSubView());
        inside->during = [&](const std::string& call) {
            if (call == "mouseDown" && tracks)
                popup->captureMouse(popup->getFirstSubView());
        };
        shell.aim(*popup);
        shell.press({20, 20});
        EXPECT_EQ(log.front(), "inside.mouseDown 20,20");
        EXPECT_EQ(popup->isOpen(), tracks);
        shell.release();
        popup->willClose(false);
    }
}

TEST_F(PopupTest, IsTheOpenOneAsLongAsItShows) {
    const Ref<ProbeController> controller = make<ProbeController>();
    controller->answer = [](FMessage& message) { return message.isNamed("MsgCloseRequest") ? 2 : 0; };
    const Ref<UPopupWindow> popup = open(UPopupWindow::closesOnOutsideClick);
    popup->setController(controller.get());
    shell.press({20, 20});
    shell.release();
    EXPECT_TRUE(popup->isOpen());
    EXPECT_EQ(shell.desktop().getOpenPopup(), popup.get()) << "it refused to close";
    popup->hide();
    EXPECT_EQ(shell.desktop().getOpenPopup(), nullptr);
    popup->show();
    EXPECT_EQ(shell.desktop().getOpenPopup(), popup.get());
}

TEST_F(PopupTest, GoesBeforeTheDialogThatItStandsOver) {
    const Ref<UModalDialog> dialog = make<UModalDialog>(CmRect{0, 0, 200, 100}, 0U, ConstString("Ask"));
    const Ref<ProbeController> controller = make<ProbeController>();
    dialog->setController(controller.get());
    Ref<UPopupWindow> popup;
    bool wasOpen = true;
    controller->answer = [&](FMessage& message) {
        if (message.isNamed("MsgCloseRequest"))
            wasOpen = popup->isOpen();
        return 0;
    };
    shell.platform().postCall([&] {
        popup = open(UPopupWindow::closesOnOutsideClick);
        dialog->endModal(7);
    });
    EXPECT_EQ(shell.desktop().runModal(dialog.get()), 7);
    EXPECT_FALSE(wasOpen);
}

TEST_F(PopupTest, GoesByItselfWhenItsLifetimeIsOver) {
    const Ref<UPopupWindow> popup = open(0);
    popup->setLifetime(300);
    shell.advance(299);
    EXPECT_TRUE(popup->isOpen());
    shell.advance(1);
    EXPECT_FALSE(popup->isOpen());

    const Ref<UPopupWindow> lasting = open(0);
    lasting->setLifetime(300);
    lasting->setLifetime(0);
    shell.advance(1000);
    EXPECT_TRUE(lasting->isOpen()) << "less than 1 takes the lifetime back";
    EXPECT_FALSE(lasting->hasWindowFlag(UPopupWindow::lifetimeRunning));
}

class ModalDialogTest : public ::testing::Test {
protected:
    ModalDialogTest() { dialog->setController(controller.get()); }

    /// Its answer, or that it was cancelled.
    int32_t run() { return shell.desktop().runModal(dialog.get()); }

    HeadlessShell shell;
    Ref<ProbeController> controller = make<ProbeController>();
    Ref<UModalDialog> dialog = make<UModalDialog>(CmRect{0, 0, 200, 100}, 0U, ConstString("Ask"));
};

TEST_F(ModalDialogTest, RunsUntilItIsAnsweredAndKeepsInputFromOthers) {
    CallLog log;
    shell.window().addSubView(make<ProbeView>(CmRect{0, 0, 400, 300}, "under", &log));
    auto button = make<ProbeView>(CmRect{0, 0, 50, 50}, "ok", &log);
    button->during = [&](const std::string& call) {
        if (call == "mouseDown")
            dialog->endModal(7);
    };
    dialog->addSubView(button);

    shell.postPress({20, 20});
    shell.postRelease();
    shell.platform().postCall([&] {
        EXPECT_TRUE(shell.desktop().isModal());
        shell.aim(*dialog);
        shell.postPress({10, 10});
        shell.postRelease();
    });
    EXPECT_EQ(run(), 7);
    EXPECT_FALSE(shell.desktop().isModal());
    EXPECT_FALSE(dialog->isOpen());
    ASSERT_FALSE(log.empty());
    EXPECT_EQ(log.front(), "ok.mouseDown 10,10") << "the press on the window behind went nowhere";
}

TEST_F(ModalDialogTest, IsCentredAndCanceledByEscape) {
    CmRect frame;
    shell.platform().postCall([&] { frame = dialog->getFrameRect(); });
    shell.postKey("Esc");
    EXPECT_EQ(run(), UModalDialog::canceledResult);
    EXPECT_NE(frame.origin(), (CmPoint{0, 0}));
    EXPECT_EQ(controller->messages.back(), "Window Canceled");
}

TEST_F(ModalDialogTest, ForgetsAnAnswerWhoseCloseWasRefused) {
    bool refuses = true;
    controller->answer = [&](FMessage& message) {
        return message.isNamed("MsgCloseRequest") && std::exchange(refuses, false) ? 2 : 0;
    };
    shell.platform().postCall([&] { dialog->endModal(7); });
    shell.platform().postCall([&] { shell.postKey("Esc"); });
    EXPECT_EQ(run(), UModalDialog::canceledResult);
    EXPECT_FALSE(refuses);
}

TEST_F(ModalDialogTest, PressesItsDefaultControlByReturn) {
    auto value = make<Binding::IntValue>();
    struct Target : CmObject {
        void notify(CmObject* changed, int32_t) override {
            performed.push_back(static_cast<Binding::IntValue*>(changed)->getValue());
        }
        std::vector<int32_t> performed;
    } target;
    value->setImmediateUpdates(true);
    value->addDependent(&target);
    auto ok = make<UControl>(CmRect{0, 0, 50, 20}, ConstString("OK"), value.get(), 0U);
    auto other = make<ProbeView>(CmRect{60, 0, 100, 20}, "other");
    other->setFocusable(true);
    ok->setDefaultControl(true);
    ok->setFocusable(true);
    dialog->addSubView(other);
    dialog->addSubView(ok);
    shell.platform().postCall(
        [&] { EXPECT_EQ(dialog->getFocusView(), ok.get()) << "the nearest came first"; });
    shell.postKey("Return");
    shell.postKey("Esc");
    run();
    EXPECT_THAT(target.performed, ElementsAre(value->getMax(), value->getMin())) << "pressed and let go";
    value->removeDependent(&target);
}

TEST_F(ModalDialogTest, EndsWhenNothingCanEverComeAnyMore) {
    EXPECT_EQ(run(), UModalDialog::canceledResult);
    EXPECT_FALSE(dialog->isOpen());
}

TEST_F(ModalDialogTest, RunsInsideAPressWithoutHoldingTheMouse) {
    auto opener = make<ProbeView>(CmRect{0, 0, 50, 50}, "opener");
    bool wasCapturing = true;
    opener->during = [&](const std::string& call) {
        if (call != "mouseDown")
            return;
        shell.platform().postCall([&] { wasCapturing = shell.platform().isCapturing(); });
        shell.postKey("Esc");
        run();
    };
    shell.window().addSubView(opener);
    shell.press({10, 10});
    EXPECT_FALSE(dialog->isOpen());
    EXPECT_FALSE(wasCapturing);
}

platform::CursorShape shownIn(HeadlessShell& shell) {
    return static_cast<platform::CursorShape>(shell.platform().getShownCursor());
}

TEST(UCursorView, ShowsItsCursorWhileItIsHovered) {
    HeadlessShell shell;
    shell.window().addSubView(make<UCursorView>(CmRect{10, 10, 50, 50}, retain(UCursor::find("beam"))));
    shell.window().addSubView(make<UView>(CmRect{10, 10, 30, 50}));
    const std::pair<CmPoint, platform::CursorShape> moves[] = {{{40, 20}, platform::CursorShape::beam},
                                                               {{60, 20}, platform::CursorShape::arrow},
                                                               {{20, 20}, platform::CursorShape::beam}};
    for (const auto& [point, shape] : moves) {
        shell.move(point);
        EXPECT_EQ(shownIn(shell), shape) << point.x;
    }
}

/// As a skin puts it there for the attribute `cursor` of a control.
TEST(UCursorView, ShowsItsCursorBehindAControlOfItsSize) {
    HeadlessShell shell;
    const CmRect frame{10, 10, 50, 30};
    shell.window().addSubView(make<UCursorView>(frame, retain(UCursor::find("beam"))));
    shell.window().addSubView(make<UTextButton>(frame, ConstString("x"), nullptr, 0));
    shell.move({20, 20});
    EXPECT_EQ(shownIn(shell), platform::CursorShape::beam);
}

TEST(UDesktop, KeepsTheCursorOfTheHoveredViewUnderTheWaitCursor) {
    HeadlessShell shell;
    UDesktop& desktop = shell.desktop();
    auto view = make<ProbeView>(CmRect{0, 0, 50, 50}, "view");
    shell.window().addSubView(view);

    desktop.setCursor(UCursor::find("beam"), view.get());
    EXPECT_EQ(shownIn(shell), platform::CursorShape::beam);
    desktop.setWaitCursor(true);
    EXPECT_EQ(shownIn(shell), platform::CursorShape::wait);
    desktop.setCursor(UCursor::find("cross"), view.get());
    EXPECT_EQ(shownIn(shell), platform::CursorShape::wait);
    desktop.setWaitCursor(false);
    EXPECT_EQ(shownIn(shell), platform::CursorShape::cross);

    desktop.pushCursor(UCursor::find("movehand"), view.get());
    EXPECT_EQ(shownIn(shell), platform::CursorShape::movingHand);
    EXPECT_TRUE(desktop.popCursor());
    EXPECT_EQ(shownIn(shell), platform::CursorShape::cross);
    EXPECT_FALSE(desktop.popCursor());
    desktop.setCursor(reinterpret_cast<UCursor*>(UINTPTR_MAX), nullptr);
    EXPECT_EQ(shownIn(shell), platform::CursorShape::cross);

    shell.window().removeSubView(view.get());
    EXPECT_EQ(shownIn(shell), platform::CursorShape::arrow) << "the cursor goes with its owner";
    EXPECT_EQ(desktop.getCursorOwner(), nullptr);
    desktop.setCursor(UCursor::find("beam"), nullptr);
    shell.move({200, 200});
    EXPECT_EQ(shownIn(shell), platform::CursorShape::arrow) << "a cursor of nobody stayed where no view is";
}

TEST(UCursor, FindsStandardShapesByName) {
    EXPECT_EQ(UCursor::find("pencil"), UCursor::find("pointhand"));
    EXPECT_EQ(UCursor::find("split-vertical"), UCursor::find("size-vertical"));
    EXPECT_NE(UCursor::find("size-vertical"), UCursor::find("size-horizontal"));
    EXPECT_EQ(UCursor::find("Arrow"), nullptr);
    EXPECT_EQ(UCursor::find(""), nullptr);
    UCursor::releaseStandardCursors();
}

TEST(UToolTipHandler, FollowsTheViewUnderTheMouse) {
    HeadlessShell shell;
    UToolTipHandler& tips = shell.desktop().toolTips();
    auto outer = make<ProbeView>(CmRect{0, 0, 200, 200}, "outer");
    auto inner = make<ProbeView>(CmRect{50, 50, 100, 100}, "inner");
    auto plain = make<ProbeView>(CmRect{0, 0, 20, 20}, "plain");
    outer->setTooltip(ConstString("outer tip"));
    inner->setTooltip(ConstString("inner tip"));
    outer->addSubView(inner);
    inner->addSubView(plain);
    shell.window().addSubView(outer);

    shell.move({10, 10});
    EXPECT_EQ(tips.getView(), outer.get());
    shell.move({60, 60});
    EXPECT_EQ(tips.getView(), inner.get()) << "a view without a tip leaves it to the one below";
    EXPECT_EQ(tips.getText(), ConstString("inner tip"));
    outer->removeSubView(inner.get());
    EXPECT_EQ(tips.getView(), nullptr) << "a tip goes with its view";
    shell.move({300, 250});
    EXPECT_EQ(tips.getView(), nullptr);
    tips.setEnabled(false);
    shell.move({10, 10});
    EXPECT_EQ(tips.getView(), nullptr);
}

/// Is taken out of its parent for good by whoever is asked for its tip.
class FleetingTip : public testing::PoisonedView {
    QORL_CLASS(FleetingTip, UView)

public:
    using Poisoned::Poisoned;

    bool getTooltip(String& text, CmPoint, CmRect&) const override {
        text = String("tip");
        getParent()->removeSubView(const_cast<FleetingTip*>(this));
        return true;
    }
};

TEST(UToolTipHandler, GivesUpAViewThatLeavesWhenItIsAsked) {
    HeadlessShell shell;
    auto view = make<FleetingTip>(CmRect{0, 0, 200, 200});
    view->setTooltip(ConstString("tip"));
    shell.window().addSubView(std::move(view));
    shell.move({10, 10});
    EXPECT_EQ(shell.desktop().toolTips().getView(), nullptr);
    EXPECT_EQ(shell.window().getSubViewCount(), 0);
}

TEST(UToolTipHandler, LetsItsHookTakeTheTipAway) {
    using Take = void (*)(HeadlessShell & shell, UView & view);
    const Take takes[] = {
        [](HeadlessShell& shell, UView& view) { shell.window().removeSubView(&view); },
        [](HeadlessShell& shell, UView&) { shell.window().willClose(false); },
        [](HeadlessShell& shell, UView&) { shell.desktop().toolTips().setEnabled(false); },
        [](HeadlessShell& shell, UView&) { shell.desktop().toolTips().hide(UToolTipHandler::Forget::keep); },
    };
    for (const Take& take : takes) {
        SCOPED_TRACE(&take - takes);
        HeadlessShell shell;
        auto view = make<ProbeView>(CmRect{0, 0, 200, 200}, "view");
        view->setTooltip(ConstString("tip"));
        shell.window().addSubView(std::move(view));
        shell.desktop().toolTips().setTextHook([&](UView& tipped, String&) {
            shell.desktop().toolTips().setTextHook({});
            take(shell, tipped);
        });
        shell.move({10, 10});
        shell.advance(1000);
        EXPECT_EQ(shell.desktop().frontWindow(WindowType::popup), nullptr);
    }
}

TEST(UToolTipHandler, ShowsTheTipWhenTheMouseRestsAndTakesItAwayWithAPress) {
    HeadlessShell shell;
    auto view = make<ProbeView>(CmRect{0, 0, 200, 200}, "view");
    view->setTooltip(ConstString("A tip"));
    shell.window().addSubView(view);
    const auto tip = [&] { return shell.desktop().frontWindow(WindowType::popup); };
    shell.move({10, 10});
    shell.advance(499);
    EXPECT_EQ(tip(), nullptr);
    shell.advance(1);
    ASSERT_NE(tip(), nullptr);
    EXPECT_TRUE(tip()->hasWindowFlag(UPopupWindow::toolTipPopup));
    EXPECT_TRUE(shell.window().isActive()) << "a tip never takes the keyboard";
    EXPECT_FALSE(tip()->getFrameRect().contains(shell.platform().getMousePosition()));
    shell.press({10, 10});
    EXPECT_EQ(tip(), nullptr);
}

TEST(UDesktop, StacksWindowsByActivation) {
    HeadlessShell shell;
    Ref<UWindow> second =
        make<UDocWindow>(CmRect{150, 100, 450, 300}, styleWindowPreset, ConstString("Second"));
    shell.open(*second);
    UDesktop& desktop = shell.desktop();
    EXPECT_EQ(desktop.frontWindow(WindowType::document), second.get());
    EXPECT_EQ(desktop.windowAt({200, 150}), second.get());
    shell.click({5, 5});
    EXPECT_EQ(desktop.activeWindow(), &shell.window());
    EXPECT_EQ(desktop.windowAt({200, 150}), &shell.window());
    EXPECT_EQ(desktop.windowAt({1900, 1000}), nullptr);
}

} // namespace
} // namespace qorl
