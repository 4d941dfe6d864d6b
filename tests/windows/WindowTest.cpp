#include "WindowFixture.h"
#include "foundation/messages/FMessage.h"
#include "foundation/messages/FMessenger.h"
#include "persistence/defaults/FDefaultPool.h"
#include "support/PoisonedView.h"
#include "support/WindowRecorder.h"
#include "views/GeometryAttributes.h"
#include "views/RecordingViews.h"
#include "views/UBaseView.h"
#include "windows/UModalDialog.h"
#include "windows/UPopupWindow.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>
#include <string_view>

namespace qorl {
namespace {

using test::WindowRecorder;
using testing::CallLog;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;
using testing::ProbeController;
using testing::ProbeView;

TEST(WindowStyle, NamesEveryWordOfSkinsOnce) {
    uint32_t singleBits = 0;
    std::set<std::string_view> seen;
    for (const WindowStyleWord& word : windowStyleWords()) {
        EXPECT_TRUE(seen.insert(word.word).second) << word.word;
        if ((word.bits & (word.bits - 1)) == 0)
            singleBits |= word.bits;
    }
    EXPECT_EQ(singleBits, 0x1807FEFFU) << "each bit that a word stands for, as stored skins know it";
}

class WindowTest : public testing::WindowFixture {};

TEST_F(WindowTest, TellsItsControllerInOrderFromOpeningToClosing) {
    Ref<UWindow> window = makeWindow();
    controller->answer = [&](FMessage& message) {
        if (message.isNamed("Before Open")) {
            EXPECT_FALSE(window->isOpen());
            EXPECT_NE(window->getPlatformWindow(), nullptr);
        }
        EXPECT_EQ(message.getObject("Window"), window.get());
        return 0;
    };
    shell.open(*window);
    EXPECT_TRUE(window->isOpen());
    EXPECT_TRUE(window->isAttached());
    EXPECT_THAT(controller->messages,
                ElementsAre("Before Open", "MsgWindowOnActivate", "MsgWindowMainWindowChange"));

    controller->messages.clear();
    window->closeDeferred();
    EXPECT_TRUE(window->isOpen()) << "a close waits for the end of the dispatch";
    shell.settle();
    EXPECT_FALSE(window->isOpen());
    EXPECT_FALSE(window->isAttached());
    EXPECT_EQ(window->getPlatformWindow(), nullptr);
    EXPECT_FALSE(window->show()) << "a window that was closed is not opened again";
    EXPECT_TRUE(window->closeRequest());
    EXPECT_THAT(controller->messages, ElementsAre("MsgCloseRequest", "Before Close")) << "asked once";
}

TEST_F(WindowTest, MayBeClosedByWhoeverHearsOfItsOpening) {
    const String section("WindowTest closes");
    for (const char* heard : {"MsgWindowSized", "Before Open", "MsgWindowOnActivate"}) {
        SCOPED_TRACE(heard);
        if (std::string_view(heard) == "MsgWindowSized") {
            FAttributes& stored = FGlobalDefaultPool::instance()->getGroup(section, 1, true)->values();
            setSize(stored, "Size", {333, 222});
            setPoint(stored, "Location", {40, 50});
            setRect(stored, "Placement", {40, 50, 373, 272});
        }
        const Ref<UWindow> window = makeWindow(styleWindowPreset | styleRememberViews);
        window->setStateName(section, 1);
        controller->answer = [&](FMessage& message) {
            if (message.isNamed(heard))
                window->willClose(false);
            return 0;
        };
        EXPECT_FALSE(window->show());
        EXPECT_FALSE(window->isOpen());
        EXPECT_FALSE(window->hasWindowFlag(UWindow::opening));
        EXPECT_EQ(window->getPlatformWindow(), nullptr);
        EXPECT_THAT(shell.desktop().windows(), Not(Contains(window.get())));
        FGlobalDefaultPool::instance()->removeGroup(section);
    }
}

struct ClosingCase {
    /// The notice or message in answer to which the window is closed.
    const char* heard;
    void (*act)(UWindow& window);
};

constexpr ClosingCase closingCases[] = {
    {"MsgWindowMinimized", [](UWindow& window) { window.setMinimized(true); }},
    {"MsgWindowMaximized", [](UWindow& window) { window.setMaximized(true); }},
    {"MsgWindowMaximized",
     [](UWindow& window) {
         FAttributes stored;
         stored.setInteger("Maximized", 1);
         window.restoreAttributes(&stored);
     }},
    {"MsgWindowMaximized",
     [](UWindow& window) {
         window.removeAllSubViews();
         window.addSubView(make<testing::Poisoned<UBaseView>>());
         FAttributes stored;
         stored.setInteger("Maximized", 1);
         window.getFirstSubView()->restoreAttributes(&stored);
     }},
    {"disabled", [](UWindow& window) { window.setEnabled(false); }},
    {"ResetControllerFocus",
     [](UWindow& window) { window.setControllerFocus(make<ProbeController>().get()); }},
    {"focusLost", [](UWindow& window) { window.setFocusView(window.getLastSubView()); }},
    {"focusGained",
     [](UWindow& window) {
         window.setFocusView(nullptr);
         UDesktop::instance()->chooseFocus(&window);
     }},
};

TEST_F(WindowTest, MayBeClosedForGoodByWhoeverHearsWhatIsDoneToIt) {
    for (const ClosingCase& c : closingCases) {
        SCOPED_TRACE(std::to_string(&c - closingCases) + ": " + c.heard);
        // The desktop's reference is the last.
        UWindow* window =
            make<testing::Poisoned<UDocWindow>>(placed, styleWindowPreset, ConstString("Second")).detach();
        for (const int32_t left : {0, 20}) {
            const auto field = make<ProbeView>(CmRect{left, 0, left + 10, 10}, "field");
            field->setFocusable(true);
            window->addSubView(field);
        }
        shell.open(*window);
        window->release();
        qorl::CallLog log;
        LifecycleLog listener(log);
        listener.during = [&](UView&, std::string_view notice) {
            if (notice == c.heard)
                window->willClose(false);
        };
        controller->answer = [&](FMessage& message) {
            if (message.isNamed(c.heard))
                window->willClose(false);
            return 0;
        };
        const auto keys = make<ProbeController>();
        keys->answer = controller->answer;
        window->setController(controller.get());
        window->setControllerFocus(keys.get());
        window->addLifecycleListener(&listener);
        window->getFirstSubView()->addLifecycleListener(&listener);
        c.act(*window);
        EXPECT_THAT(shell.desktop().windows(), Not(Contains(window)));
        EXPECT_EQ(shell.desktop().getFocus(), nullptr);
    }
}

TEST_F(WindowTest, IsForgottenWhateverHappensWhileItCloses) {
    UWindow* window = openWindow().get();
    controller->answer = [&](FMessage& message) {
        if (message.isNamed("Before Close")) {
            // As a dialog does that comes up here.
            shell.window().activate();
            window->activate();
            shell.platform().postMouseMove(window->clientToScreen({10, 10}));
            shell.platform().processEvents();
            EXPECT_EQ(shell.desktop().windowUnderMouse(), window);
            EXPECT_EQ(shell.desktop().activeWindow(), window);
            shell.window().hide();
        }
        return 0;
    };
    window->willClose(false);
    EXPECT_EQ(shell.desktop().windowUnderMouse(), nullptr);
    EXPECT_EQ(shell.desktop().activeWindow(), nullptr);
}

TEST_F(WindowTest, IsNotUnderTheMouseWhenWhatTheMouseLeavesClosesIt) {
    const auto view = make<ProbeView>(CmRect{0, 0, 400, 300}, "view");
    view->takesHover = true;
    shell.window().addSubView(view);
    shell.move({10, 10});
    UWindow* window = openWindow().get();
    view->during = [&](const std::string& call) {
        if (call == "mouseLeave")
            window->willClose(false);
    };
    // With the capture its moves come without the leave of the other before.
    shell.platform().setCapture(*window->getPlatformWindow());
    shell.move({20, 20});
    EXPECT_THAT(shell.desktop().windows(), Not(Contains(window)));
    EXPECT_EQ(shell.desktop().windowUnderMouse(), nullptr);
}

TEST_F(WindowTest, TellsAControllerThatItHearsTheKeysOnlyWhileItDoes) {
    const auto first = make<ProbeController>();
    const auto second = make<ProbeController>();
    const auto third = make<ProbeController>();
    first->answer = [&](FMessage& message) {
        if (message.isNamed("ResetControllerFocus"))
            shell.window().setControllerFocus(third.get());
        return 0;
    };
    shell.window().setControllerFocus(first.get());
    shell.window().setControllerFocus(second.get());
    EXPECT_EQ(shell.window().getFocusController(), third.get());
    EXPECT_THAT(second->messages, ElementsAre("ResetControllerFocus"));
}

TEST_F(WindowTest, LivesAsLongAsItIsOpen) {
    Ref<UWindow> window = openWindow();
    UWindow* kept = window.get();
    window.reset();
    EXPECT_TRUE(kept->isOpen()) << "the desktop owns it";
    int32_t closed = 0;
    kept->addCloseHook([&](UWindow* hooked) { closed += hooked == kept; });
    shell.platform().postClosePress(*kept->getPlatformWindow());
    shell.settle();
    EXPECT_EQ(closed, 1);
    EXPECT_THAT(shell.desktop().windows(), Not(Contains(kept)));
}

TEST_F(WindowTest, StaysWhenAChildRefuses) {
    const Ref<UWindow> parent = openWindow();
    const Ref<UWindow> child = openPanel(parent.get());
    const Ref<ProbeController> childController = make<ProbeController>();
    int32_t answer = 2;
    childController->answer = [&](FMessage& message) {
        return message.isNamed("MsgCloseRequest") ? answer : 0;
    };
    child->setController(childController.get());
    controller->messages.clear();

    EXPECT_FALSE(parent->closeRequest());
    EXPECT_TRUE(parent->isOpen());
    EXPECT_TRUE(child->isOpen());
    EXPECT_THAT(controller->messages, IsEmpty()) << "the child was asked first";

    answer = 1;
    EXPECT_TRUE(parent->closeRequest()) << "1 is an answer, not a refusal";
    EXPECT_FALSE(child->isOpen());
    EXPECT_EQ(parent->childWindows().size(), 0U);
}

TEST_F(WindowTest, AsksOnceWhateverComesWhileItIsAsked) {
    const Ref<UWindow> window = openWindow();
    controller->answer = [&](FMessage& message) {
        if (message.isNamed("MsgCloseRequest")) {
            window->closeDeferred(UWindow::CloseReason::canceled);
            EXPECT_FALSE(window->closeRequest());
        }
        return 0;
    };
    EXPECT_TRUE(window->closeRequest());
    shell.settle();
    EXPECT_THAT(controller->messages, ElementsAre("MsgCloseRequest", "Before Close"));
}

TEST_F(WindowTest, IsNeverBelowItself) {
    const Ref<UWindow> parent = openWindow();
    const Ref<UWindow> child = openPanel(parent.get());
    for (UWindow* below : {parent.get(), child.get()}) {
        below->addChildWindow(parent);
        EXPECT_EQ(parent->getParentWindow(), nullptr) << "it would never go";
    }
}

TEST_F(WindowTest, GoesWithTheParentThatItHasNow) {
    const Ref<UWindow> first = openWindow();
    const Ref<UWindow> second = openWindow();
    const Ref<UWindow> child = openPanel(first.get());
    const Ref<UWindow> freed = openPanel(first.get());
    second->addChildWindow(child);
    first->removeChildWindow(freed.get());

    first->willClose(false);
    for (const Ref<UWindow>& window : {child, freed}) {
        ASSERT_TRUE(window->isOpen());
        EXPECT_TRUE(window->getPlatformWindow()->isVisible()) << "the screen agrees";
    }
    second->willClose(false);
    EXPECT_FALSE(child->isOpen());
    EXPECT_EQ(child->getParentWindow(), nullptr);
    EXPECT_TRUE(freed->isOpen());
    freed->willClose(false);
}

TEST_F(WindowTest, ClosesWithItsOwnerOnTheScreen) {
    const Ref<UWindow> child = openPanel();
    WindowRecorder client;
    platform::WindowDescription description;
    description.frame = placed;
    const Ref<platform::PlatformWindow> owner = shell.platform().createWindow(description, client);
    child->getPlatformWindow()->setOwner(owner.get());
    owner->close(platform::CloseMode::normal);
    EXPECT_FALSE(child->isOpen()) << "a window without one on the screen counts as open";
    EXPECT_THAT(shell.desktop().windows(), Not(Contains(child.get())));
}

TEST_F(WindowTest, KeepsItsLimitOnTheAxisThatIsNotSet) {
    const Ref<UWindow> window = openWindow();
    CmSize smallest;
    CmSize largest;
    window->getSizeLimits(smallest, largest);
    EXPECT_EQ(smallest, (CmSize{80, 20}));
    EXPECT_EQ(largest, (CmSize{0x7FFFFFFF, 0x7FFFFFFF}));
    window->setSizeLimits({120, 0}, {-5, 400});
    window->getSizeLimits(smallest, largest);
    EXPECT_EQ(smallest, (CmSize{120, 20}));
    EXPECT_EQ(largest, (CmSize{0x7FFFFFFF, 400}));
    window->setSize({10, 900});
    EXPECT_EQ(window->getSize(), (CmSize{120, 400}));
}

TEST_F(WindowTest, TellsTheOldSizeWhenTheUserSizesIt) {
    const Ref<UWindow> window = openWindow();
    auto content = make<ProbeView>(CmRect{0, 0, 300, 200}, "content");
    content->setAttach(viewAttachAll);
    window->addSubView(content);
    CmSize old;
    controller->answer = [&](FMessage& message) {
        if (message.isNamed("MsgWindowSized"))
            getSize(message.attributes(), "OldSize", old);
        return 0;
    };
    shell.platform().postUserSize(*window->getPlatformWindow(), {340, 250});
    shell.settle();
    EXPECT_THAT(controller->messages,
                ElementsAre("MsgWindowSizeStart", "MsgWindowSized", "MsgWindowSizeEnd"));
    EXPECT_EQ(old, (CmSize{300, 200}));
    EXPECT_EQ(content->getFrameRect(), (CmRect{0, 0, 340, 250})) << "the views follow by their attach flags";

    controller->messages.clear();
    window->setPosition({520, 130});
    EXPECT_EQ(window->getFrameRect(), (CmRect{520, 130, 860, 380}));
    EXPECT_THAT(controller->messages, IsEmpty()) << "a move is no change of size";
}

TEST_F(WindowTest, AppliesCollectedPlacesOnce) {
    const Ref<UWindow> window = openWindow();
    const auto kept = [&](const char* name) { return window->peekAttributes()->contains(name); };
    window->beginCollectUpdates();
    window->setSize({310, 210});
    window->setPosition({10, 50});
    window->setSize({320, 220});
    EXPECT_EQ(window->getFrameRect(), placed);
    EXPECT_EQ(window->getSize(), (CmSize{320, 220})) << "who asks meanwhile hears what will be";
    EXPECT_TRUE(kept("collectUpdatePosition") && kept("collectUpdateClientSize"));
    window->endCollectUpdates();
    EXPECT_FALSE(kept("collectUpdatePosition") || kept("collectUpdateClientSize"));
    EXPECT_EQ(window->getFrameRect(), (CmRect{10, 50, 330, 270}));
    EXPECT_THAT(controller->messages, ElementsAre("MsgWindowSized"));
}

TEST_F(WindowTest, ComesBackMaximizedAfterItWasMinimizedSo) {
    const Ref<UWindow> window = openWindow();
    window->setMaximized(true);
    window->setMinimized(true);
    EXPECT_EQ(window->getWindowState(), WindowState::minimized);
    controller->messages.clear();
    window->setMinimized(false);
    EXPECT_EQ(window->getWindowState(), WindowState::maximized);
    EXPECT_THAT(controller->messages, Contains("MsgWindowMinimized"));
    window->setMaximized(false);
    EXPECT_EQ(window->getWindowState(), WindowState::normal);
    EXPECT_EQ(window->getFrameRect().size(), (CmSize{300, 200}));
    window->setMinimized(true);
    window->setMinimized(false);
    EXPECT_EQ(window->getWindowState(), WindowState::normal) << "it was not maximized this time";
}

TEST_F(WindowTest, HidesWhatFollowsTheMainWindow) {
    const Ref<UWindow> parent = openWindow();
    const Ref<UWindow> follower = openPanel(parent.get(), stylePanelPreset | styleFollowsMainWindow);
    const Ref<UWindow> other = openPanel(parent.get());
    shell.window().activate();
    shell.settle();
    EXPECT_FALSE(follower->isVisible());
    EXPECT_TRUE(other->isVisible());
    parent->activate();
    shell.settle();
    EXPECT_TRUE(follower->isVisible());
    EXPECT_EQ(shell.desktop().activeWindow(), parent.get()) << "the follower took the keyboard";
}

TEST_F(WindowTest, AttachesWhatIsInsertedWhileItIsHiddenAndForgetsItWhenItGoes) {
    const Ref<UWindow> window = openWindow();
    window->hide();
    auto box = make<UView>(CmRect{0, 0, 100, 100});
    auto inner = make<ProbeView>(CmRect{0, 0, 50, 50}, "inner");
    inner->takesHover = true;
    box->addSubView(inner);
    window->addSubView(box);
    EXPECT_TRUE(inner->isAttached());

    window->show();
    shell.aim(*window);
    shell.move({10, 10});
    ASSERT_EQ(window->getHoverView(), inner.get());
    window->captureMouse(inner.get());
    window->removeSubView(box.get());
    EXPECT_EQ(window->getHoverView(), nullptr);
    EXPECT_EQ(window->getMouseCapture(), nullptr);
}

TEST_F(WindowTest, KeepsWhatWasAskedForUntilThePlatformAnswers) {
    const Ref<UWindow> window = openWindow();
    window->setMaximized(true);
    window->setSize({410, 310});
    window->setPosition({300, 200});
    window->setMaximized(false);
    EXPECT_EQ(window->getFrameRect(), (CmRect{300, 200, 710, 510}));
    shell.platform().postUserSize(*window->getPlatformWindow(), {350, 250});
    shell.settle();
    window->setPosition({310, 210});
    EXPECT_EQ(window->getSize(), (CmSize{350, 250})) << "a wish that was fulfilled came back";
    window->setMaximized(true);
    window->setPosition({320, 220});
    window->setMaximized(false);
    EXPECT_EQ(window->getFrameRect(), (CmRect{320, 220, 670, 470})) << "it kept the size of the screen";
    window->setMaximized(true);
    window->center();
    window->setMaximized(false);
    EXPECT_EQ(window->getFrameRect(), (CmRect{785, 415, 1135, 665}));
}

TEST_F(WindowTest, LeavesWhatItFitsItselfAroundAloneAlsoWhenThePlatformAnswersLater) {
    const Ref<UWindow> window = openWindow();
    auto content = make<UView>(CmRect{0, 0, 300, 200});
    content->setAttach(viewAttachAll);
    window->addSubView(content);
    const auto fitMaximizedAround = [&](CmSize size) {
        window->setMaximized(true);
        content->setFrame(CmRect::ofSize({}, size), true);
        window->resizeToFit(0, 0);
        window->setMaximized(false);
    };
    fitMaximizedAround({410, 310});
    EXPECT_EQ(window->getSize(), (CmSize{410, 310}));
    EXPECT_EQ(content->getFrameRect(), (CmRect{0, 0, 410, 310})) << "the answer stretched it";

    fitMaximizedAround({10, 5});
    EXPECT_EQ(window->getSize(), (CmSize{80, 20})) << "the limit";
    EXPECT_EQ(content->getFrameRect(), (CmRect{0, 0, 80, 20})) << "what the limit adds is left empty";
}

TEST_F(WindowTest, StaysOnThePlatformWhileItsFrameIsFrozen) {
    const Ref<UWindow> window = openWindow();
    window->setFlag(viewFrameFrozen, true);
    EXPECT_FALSE(window->setFrame({10, 60, 200, 200}, true));
    EXPECT_EQ(window->getPlatformWindow()->getPosition(), (CmPoint{500, 100}));
}

TEST_F(WindowTest, AsksItsControllerToCloseBeforeAViewTakesTheKey) {
    CallLog log;
    const Ref<UWindow> window = openWindow(styleWindowPreset | styleCloseOnEscape);
    auto view = make<ProbeView>(CmRect{0, 0, 50, 50}, "view", &log);
    view->setFocusable(true);
    view->takesKeys = true;
    window->addSubView(view);
    shell.desktop().setFocus(view.get());
    shell.key("Esc");
    EXPECT_FALSE(window->isOpen());
    EXPECT_THAT(log, Not(Contains("view.key Esc")));
}

TEST_F(WindowTest, StaysWhenItsCloseButtonIsPressedBehindADialog) {
    const Ref<UModalDialog> dialog = make<UModalDialog>(CmRect{0, 0, 200, 100}, 0U, ConstString("Ask"));
    shell.platform().postCall([&] { shell.platform().postClosePress(*shell.window().getPlatformWindow()); });
    shell.platform().postCall([&] { shell.postKey("Esc"); });
    shell.desktop().runModal(dialog.get());
    shell.settle();
    EXPECT_TRUE(shell.window().isOpen());
}

TEST_F(WindowTest, ClosesByKeysOnlyWhenItsStyleSaysSo) {
    const struct {
        const char* key;
        uint32_t style;
        const char* message; ///< null: stays open
    } cases[] = {
        {"Esc", styleCloseOnEscape, "MsgCloseEscape"},
        {"Esc", styleCloseOnEnter, nullptr},
        {"Return", styleCloseOnEnter, "MsgCloseEnter"},
        {"Enter", styleCloseOnEnter, "MsgCloseEnter"},
        {"Ctrl+Esc", styleCloseOnEscape, nullptr},
        {"Return", styleCloseOnEscape, nullptr},
        {"Esc", 0, nullptr},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.key << " style " << c.style);
        const Ref<UWindow> window = openWindow(styleWindowPreset | c.style);
        int32_t answer = 1;
        controller->answer = [&](FMessage& message) {
            return message.isNamed("MsgCloseRequest") ? 0 : answer;
        };
        shell.key(c.key);
        EXPECT_TRUE(window->isOpen()) << "the answer 1 keeps the window";
        if (c.message) {
            EXPECT_THAT(controller->messages, ElementsAre(c.message));
        }
        answer = 0;
        shell.key(c.key);
        EXPECT_EQ(window->isOpen(), c.message == nullptr);
        controller->answer = nullptr;
        window->willClose(false);
        shell.settle();
    }
}

TEST_F(WindowTest, FollowsTheMouseByItsClientArea) {
    const Ref<UWindow> window = openWindow(styleSkinPreset);
    window->addSubView(make<ProbeView>(CmRect{0, 0, 50, 50}, "button"));
    shell.platform().postMouseMove({600, 200});
    shell.platform().postButtonDown(platform::leftButton);
    shell.platform().postMouseMove({640, 210});
    shell.platform().postMouseMove({650, 250});
    shell.platform().postButtonUp(platform::leftButton);
    shell.platform().postMouseMove({700, 250});
    shell.settle();
    EXPECT_EQ(window->getPosition(), (CmPoint{550, 150}));

    shell.aim(*window);
    shell.drag({10, 10}, {50, 50});
    EXPECT_EQ(window->getPosition(), (CmPoint{550, 150})) << "a press that a view takes drags nothing";
}

TEST_F(WindowTest, TellsTheControllerOfARightPressWithViewAndPlace) {
    const Ref<UWindow> window = openWindow();
    CallLog log;
    auto view = make<ProbeView>(CmRect{10, 10, 60, 60}, "view", &log);
    view->setFlag(viewTakesRightClick, true);
    window->addSubView(view);
    shell.aim(*window);
    int32_t answer = 1;
    CmPoint position;
    CmObject* pressed = nullptr;
    controller->answer = [&](FMessage& message) {
        if (!message.isNamed("RightMouseClick"))
            return 0;
        pressed = message.getObject("MouseView");
        getPoint(message.attributes(), "Position", position);
        return answer;
    };
    shell.click({20, 30}, platform::rightButton);
    EXPECT_EQ(pressed, view.get());
    EXPECT_EQ(position, (CmPoint{20, 30}));
    EXPECT_THAT(log, Not(Contains("view.mouseDown 10,20"))) << "the controller took it";
    answer = 0;
    shell.click({20, 30}, platform::rightButton);
    EXPECT_THAT(log, Contains("view.mouseDown 10,20"));
    shell.click({200, 130}, platform::rightButton);
    EXPECT_EQ(pressed, window.get()) << "beside all views it is the window's own";
}

TEST(WindowFlags, DifferByKind) {
    constexpr uint32_t front = UWindow::firstFrontList | UWindow::secondFrontList;
    const Ref<UWindow> document = make<UDocWindow>(CmRect{}, 0U, ConstString());
    const Ref<UWindow> panel = make<UPanel>(CmRect{}, 0U, ConstString());
    const Ref<UWindow> popup = make<UPopupWindow>(CmRect{}, 0U, ConstString());
    EXPECT_EQ(document->windowFlags() & front, front);
    EXPECT_EQ(panel->windowFlags() & front, UWindow::firstFrontList);
    EXPECT_EQ(popup->windowFlags() & front, 0U);
    EXPECT_EQ(document->getFrameRect(), UDocWindow::defaultFrame) << "an empty frame takes the default one";
}

} // namespace
} // namespace qorl
