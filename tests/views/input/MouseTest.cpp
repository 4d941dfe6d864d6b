#include "support/HeadlessShell.h"
#include "support/PoisonedView.h"
#include "support/ProbeView.h"
#include "views/GeometryAttributes.h"
#include "windows/UDocWindow.h"
#include "windows/UModalDialog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace qorl {
namespace {

using testing::CallLog;
using ::testing::ElementsAre;
using testing::HeadlessShell;
using ::testing::IsEmpty;
using testing::PoisonedView;
using testing::ProbeView;

/// A back view with a front view over its right half, in a window of 400 x 300.
class MouseTest : public ::testing::Test {
protected:
    MouseTest() {
        back = make<ProbeView>(CmRect{10, 20, 210, 120}, "back", &log);
        front = make<ProbeView>(CmRect{110, 20, 310, 120}, "front", &log);
        shell.window().addSubView(back);
        shell.window().addSubView(front);
        shell.settle();
        log.clear();
    }

    /// Lets the view take the mouse at a press.
    void captureAtPress(ProbeView& view) {
        view.during = [this, &view](const std::string& call) {
            if (call == "mouseDown")
                shell.window().captureMouse(&view);
        };
    }
    Ref<UWindow> openSecond(Ref<ProbeView> content) {
        Ref<UWindow> second =
            make<UDocWindow>(CmRect{600, 100, 700, 200}, styleWindowPreset, ConstString("Second"));
        second->addSubView(std::move(content));
        shell.open(*second);
        shell.aim(*second);
        log.clear();
        return second;
    }

    CallLog log;
    HeadlessShell shell;
    Ref<ProbeView> back;
    Ref<ProbeView> front;
};

TEST_F(MouseTest, GivesThePressToTheViewInFrontInItsOwnCoordinates) {
    shell.press({120, 30});
    shell.release();
    EXPECT_THAT(log, ElementsAre("front.mouseDown 10,10", "front.mouseUp 10,10", "front.click 10,10"));
    log.clear();
    shell.press({11, 119});
    EXPECT_THAT(log, ElementsAre("back.mouseDown 1,99"));
}

TEST_F(MouseTest, GoesOnToTheViewBehindWhenTheFrontDeclines) {
    front->takesMouse = false;
    shell.press({120, 30});
    EXPECT_THAT(log, ElementsAre("front.mouseDown 10,10", "back.mouseDown 110,10"));
}

TEST_F(MouseTest, SkipsHiddenAndDisabledViews) {
    front->hide();
    shell.press({120, 30});
    EXPECT_THAT(log, ElementsAre("back.mouseDown 110,10"));
    shell.release();
    back->setEnabled(false);
    log.clear();
    shell.press({120, 30});
    EXPECT_THAT(log, IsEmpty());
}

TEST_F(MouseTest, KeepsTheRightButtonFromViewsThatDoNotTakeIt) {
    shell.click({120, 30}, platform::rightButton);
    EXPECT_THAT(log, ElementsAre("front.click 10,10"))
        << "only the base's handling runs for the press and its release";
    front->setFlag(viewTakesRightClick, true);
    log.clear();
    shell.press({120, 30}, platform::rightButton);
    EXPECT_THAT(log, ElementsAre("front.mouseDown 10,10"));
}

TEST_F(MouseTest, SurvivesAClickThatDestroysTheClickedView) {
    front->during = [&](const std::string& call) {
        if (call == "mouseDown") {
            shell.window().removeSubView(front.get());
            front.reset();
        }
    };
    front->takesMouse = false;
    shell.press({120, 30});
    EXPECT_THAT(log, ElementsAre("front.mouseDown 10,10")) << "the press is spent on the view that left";
    EXPECT_EQ(shell.window().getSubViewCount(), 1);
}

TEST_F(MouseTest, SurvivesAClickThatClosesTheWindow) {
    auto closer = make<ProbeView>(CmRect{0, 0, 100, 100}, "closer", &log);
    closer->during = [view = closer.get()](const std::string& call) {
        if (call == "mouseDown")
            view->getWindow()->willClose(false);
    };
    UWindow* window = openSecond(std::move(closer)).get();
    shell.press({50, 50});
    EXPECT_TRUE(window->hasWindowFlag(UWindow::closed));
    shell.release();
}

TEST_F(MouseTest, GivesTheMouseToOthersWhenTheWindowIsDisabledWithinAPress) {
    front->during = [&](const std::string& call) {
        if (call != "mouseDown")
            return;
        shell.window().captureMouse(front.get());
        shell.window().setEnabled(false);
    };
    shell.press({120, 30});
    EXPECT_THAT(log, ElementsAre("front.mouseDown 10,10", "front.captureLost"));
    shell.release();

    const Ref<UWindow> second = openSecond(make<ProbeView>(CmRect{0, 0, 100, 100}, "other", &log));
    shell.press({50, 50});
    EXPECT_THAT(log, ElementsAre("other.mouseDown 50,50"));
    second->willClose(false);
}

TEST_F(MouseTest, TellsTheHolderWhenAnotherViewTakesTheMouse) {
    for (const Ref<ProbeView>& view : {front, back}) {
        view->setFlag(viewTakesRightClick, true);
        captureAtPress(*view);
    }
    shell.press({120, 30});
    shell.press({20, 30}, platform::rightButton);
    EXPECT_THAT(log, ElementsAre("front.mouseDown 10,10", "back.mouseDown 10,10", "front.captureLost"));
}

TEST_F(MouseTest, HoldsTheMouseUntilTheLastButtonIsUp) {
    captureAtPress(*front);
    shell.press({120, 30});
    shell.press({130, 30}, platform::rightButton);
    shell.release(platform::rightButton);
    EXPECT_EQ(shell.window().getMouseCapture(), front.get());
    EXPECT_TRUE(shell.platform().isCapturing());
    shell.move({20, 30});
    shell.release();
    EXPECT_THAT(log, ElementsAre("front.mouseDown 10,10", "front.mouseUp -90,10"));
    EXPECT_FALSE(shell.platform().isCapturing());
}

TEST_F(MouseTest, EndsAGestureThatADialogCameOver) {
    captureAtPress(*front);
    for (const bool isMoved : {true, false}) {
        SCOPED_TRACE(isMoved ? "found by a move" : "found by the release");
        log.clear();
        shell.press({120, 30});
        const Ref<UWindow> dialog = make<UModalDialog>(CmRect{600, 100, 700, 200}, 0U, ConstString("Dialog"));
        shell.open(*dialog);
        if (isMoved)
            shell.move({125, 30});
        else
            shell.release();
        EXPECT_THAT(log, ElementsAre("front.mouseDown 10,10", "front.captureLost"));
        EXPECT_EQ(shell.window().getMouseCapture(), nullptr);
        if (isMoved) {
            shell.release();
            EXPECT_THAT(log, ElementsAre("front.mouseDown 10,10", "front.captureLost")) << "by the release";
        }
        dialog->willClose(false);
        shell.settle();
    }
}

TEST_F(MouseTest, SaysWhichClickIsADoubleClick) {
    front->takesHover = true;
    shell.doubleClick({120, 30});
    EXPECT_THAT(log, ElementsAre("front.mouseEnter 10,10", "front.mouseDown 10,10", "front.mouseUp 10,10",
                                 "front.click 10,10", "front.mouseDown 10,10", "front.mouseUp 10,10",
                                 "front.doubleClick 10,10"));
}

TEST_F(MouseTest, HoversOneViewAtATimeAndTellsItWhenTheMouseGoes) {
    front->takesHover = back->takesHover = true;
    shell.move({120, 30});
    shell.move({125, 30});
    shell.move({20, 30});
    shell.move({20, 250});
    EXPECT_THAT(log, ElementsAre("front.mouseEnter 10,10", "front.mouseLeave -90,10", "back.mouseEnter 10,10",
                                 "back.mouseLeave 10,230"));
    CmPoint last;
    EXPECT_TRUE(getPoint(*shell.window().peekAttributes(), "mouseLoc", last));
    EXPECT_EQ(last, (CmPoint{20, 250}));
    EXPECT_EQ(shell.window().getHoverView(), nullptr);
}

TEST_F(MouseTest, HoversTheDeepestViewThatWantsTo) {
    auto inner = make<ProbeView>(CmRect{0, 0, 50, 50}, "inner", &log);
    front->addSubView(inner);
    front->takesHover = true;
    shell.move({120, 30});
    EXPECT_EQ(shell.window().getHoverView(), front.get()) << "the deeper view declines";
    inner->takesHover = true;
    shell.move({350, 290});
    shell.move({120, 30});
    EXPECT_EQ(shell.window().getHoverView(), inner.get());
}

TEST_F(MouseTest, HoversOverABorderAndNotOverWhatTheBorderHides) {
    auto inner = make<ProbeView>(CmRect{-10, -10, 50, 50}, "inner", &log);
    front->setClientInsets({10, 10, 10, 10}, true);
    front->addSubView(inner);
    front->takesHover = inner->takesHover = true;
    for (const CmPoint point : {CmPoint{112, 22}, CmPoint{113, 22}, CmPoint{308, 118}}) {
        shell.move(point);
        EXPECT_EQ(shell.window().getHoverView(), front.get()) << point.x;
    }
    EXPECT_THAT(log, ElementsAre("front.mouseEnter -8,-8")) << "one stay";
}

TEST_F(MouseTest, ForgetsAHoveredViewThatIsRemoved) {
    front->takesHover = true;
    shell.move({120, 30});
    shell.window().removeSubView(front.get());
    EXPECT_EQ(shell.window().getHoverView(), nullptr);
    front.reset();
    shell.move({122, 30});
    EXPECT_EQ(shell.window().getHoverView(), nullptr);
}

/// Takes a view out of its window as soon as it hears that the mouse is there.
class RemovingListener : public CmObject, public IViewMoveListener {
    QORL_CLASS(RemovingListener, CmObject)
    QORL_FACES(RemovingListener, CmObject, IViewMoveListener)

public:
    enum class At : uint8_t { enter, firstOver, laterOver };

    explicit RemovingListener(At at) : at(at) {}

    void viewMouseEnter(const MouseEvent& event) override {
        hasEntered = true;
        if (at == At::enter)
            remove(event);
    }
    void viewMouseOver(const MouseEvent& event) override {
        if (at == (hasEntered ? At::laterOver : At::firstOver))
            remove(event);
    }
    void viewMouseLeave(const MouseEvent&) override {}

private:
    static void remove(const MouseEvent& event) {
        event.head.view->getParent()->removeSubView(event.head.view);
    }

    const At at;
    bool hasEntered = false;
};

TEST_F(MouseTest, ForgetsAViewThatItsListenerRemoves) {
    using At = RemovingListener::At;
    back->takesHover = true;
    for (const At at : {At::enter, At::firstOver, At::laterOver}) {
        SCOPED_TRACE(static_cast<int>(at));
        const auto listener = make<RemovingListener>(at);
        auto gone = make<PoisonedView>(CmRect{10, 20, 210, 120});
        gone->addMoveListener(listener.get());
        shell.window().addSubView(std::move(gone));
        shell.move({20, 30});
        shell.move({21, 30});
        EXPECT_EQ(shell.window().getSubViewCount(), 2);
        EXPECT_EQ(shell.window().getHoverView(), back.get()) << "the next one behind it";
        shell.move({350, 290});
        EXPECT_EQ(shell.window().getHoverView(), nullptr);
    }
}

TEST_F(MouseTest, GivesNothingToAViewThatIsNotInTheWindow) {
    front->setFocusable(true);
    shell.window().removeSubView(front.get());
    shell.window().captureMouse(front.get());
    EXPECT_EQ(shell.window().getMouseCapture(), nullptr);
    shell.window().setFocusView(front.get());
    EXPECT_EQ(shell.window().getFocusView(), nullptr);
    EXPECT_THAT(log, IsEmpty());
}

TEST_F(MouseTest, ClimbsWithTheWheelUntilAViewTakesIt) {
    auto inner = make<ProbeView>(CmRect{0, 0, 50, 50}, "inner", &log);
    front->addSubView(inner);
    front->takesWheel = true;
    shell.wheel({120, 30}, 2);
    EXPECT_THAT(log, ElementsAre("inner.Wheel 1:2.000000", "front.wheel 0.000000,2.000000"));
}

TEST_F(MouseTest, SendsOneWheelMessageForEachAxisThatTurned) {
    back->messageAnswer = CmObject::handled;
    shell.wheel({20, 30}, 0, -1.5);
    EXPECT_THAT(log, ElementsAre("back.Wheel 2:-1.500000"));
    log.clear();
    shell.wheel({20, 30}, 1, 2);
    EXPECT_THAT(log, ElementsAre("back.Wheel 2:2.000000", "back.Wheel 1:1.000000"));
    log.clear();
    back->setEnabled(false);
    shell.wheel({20, 30}, 1);
    EXPECT_THAT(log, IsEmpty());
}

TEST_F(MouseTest, FindsTheSamePointAtAFractionalScale) {
    CallLog scaledLog;
    auto view = make<ProbeView>(CmRect{10, 20, 210, 120}, "view", &scaledLog);
    shell.window().addSubView(view);
    shell.scale(1.5);
    shell.settle();
    ASSERT_EQ(shell.window().getScaleFactor(), 1.5);
    shell.press({13, 27});
    EXPECT_THAT(scaledLog, ElementsAre("view.mouseDown 3,7"));
}

} // namespace
} // namespace qorl
