#include "foundation/messages/FMessage.h"
#include "support/HeadlessShell.h"
#include "support/PoisonedView.h"
#include "support/ProbeView.h"
#include "views/FocusPolicy.h"
#include "views/UBaseView.h"
#include "windows/UDocWindow.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace qorl {
namespace {

using testing::CallLog;
using ::testing::Contains;
using ::testing::ElementsAre;
using testing::HeadlessShell;
using ::testing::Not;
using testing::ProbeView;

TEST(FocusDirection, ComesFromTabAndArrowsOnly) {
    const std::pair<const char*, FocusDirection> cases[] = {
        {"Tab", FocusDirection::forward},     {"Shift+Tab", FocusDirection::back},
        {"Ctrl+Tab", FocusDirection::none},   {"Ctrl+Shift+Tab", FocusDirection::none},
        {"Left Arrow", FocusDirection::left}, {"Right Arrow", FocusDirection::right},
        {"Up Arrow", FocusDirection::up},     {"Down Arrow", FocusDirection::down},
        {"Return", FocusDirection::none},     {"A", FocusDirection::none},
    };
    for (const auto& [text, direction] : cases) {
        SCOPED_TRACE(text);
        UKeyCode key;
        ASSERT_TRUE(UKeyCode::fromText(text, key));
        EXPECT_EQ(focusDirectionOf(key), direction);
    }
}

TEST(UBaseView, SaysWhoHasTheKeyboardFirst) {
    HeadlessShell shell{platform::HeadlessSettings{}};
    const std::pair<const char*, const char*> cases[] = {{"", "a"}, {"b", "b"}, {"c", "a"}, {"gone", "a"}};
    for (const auto& [wanted, expected] : cases) {
        SCOPED_TRACE(wanted);
        auto content = make<UBaseView>(CmRect{0, 0, 100, 100});
        content->setFirstFocus(wanted);
        for (const char* name : {"a", "b", "c"}) {
            auto view = make<UView>(CmRect{10, 10, 60, 40});
            view->getItem().setName(name);
            view->setFocusable(true);
            view->setEnabled(*name != 'c');
            content->addSubView(view);
        }
        const auto window = make<UDocWindow>(CmRect{0, 0, 100, 100}, 0xFDu, ConstString());
        window->addSubView(content);
        shell.open(*window);
        shell.desktop().chooseFocus(window.get());
        ASSERT_TRUE(window->getFocusView());
        EXPECT_EQ(window->getFocusView()->getItem().name(), expected);
        shell.desktop().setFocus(content->getSubView(0));
        window->setFocusView(nullptr);
        shell.desktop().chooseFocus(window.get());
        EXPECT_EQ(window->getFocusView()->getItem().name(), "a") << "only as long as nobody had it";
    }
}

/// Four focusable views as a grid of two rows, and below them a fifth that is wider:
///
///     a b
///     c d
///     eee
class FocusTest : public ::testing::Test {
protected:
    FocusTest() {
        auto content = make<UBaseView>(CmRect{0, 0, 400, 300});
        const CmRect frames[] = {
            {10, 10, 60, 40}, {110, 10, 160, 40}, {10, 60, 60, 90}, {110, 60, 160, 90}, {10, 120, 160, 150}};
        for (size_t i = 0; i < std::size(frames); ++i) {
            views.push_back(make<ProbeView>(frames[i], std::string(1, static_cast<char>('a' + i)), &log));
            views.back()->setFocusable(true);
            content->addSubView(views.back());
        }
        shell.window().addSubView(content);
        shell.settle();
        shell.desktop().setFocus(views[0].get());
        log.clear();
    }

    std::string focus() {
        for (size_t i = 0; i < views.size(); ++i)
            if (shell.desktop().getFocus() == views[i].get())
                return std::string(1, static_cast<char>('a' + i));
        return shell.desktop().getFocus() ? "?" : "none";
    }

    CallLog log;
    HeadlessShell shell;
    std::vector<Ref<ProbeView>> views;
};

TEST_F(FocusTest, WalksByKeysThroughTheViews) {
    const std::pair<std::vector<const char*>, const char*> cases[] = {
        {{"Tab"}, "b"},
        {{"Tab", "Tab", "Tab", "Tab"}, "e"},
        {{"Shift+Tab"}, "e"},
        {{"Tab", "Tab", "Tab", "Tab", "Tab"}, "a"},
        {{"Right Arrow"}, "b"},
        {{"Down Arrow"}, "c"},
        {{"Left Arrow"}, "a"},
        {{"Up Arrow"}, "a"},
        {{"Right Arrow", "Down Arrow"}, "d"},
        {{"Right Arrow", "Right Arrow"}, "b"},
        {{"Down Arrow", "Down Arrow"}, "e"},
        {{"Down Arrow", "Down Arrow", "Up Arrow"}, "c"},
        {{"Ctrl+Tab"}, "a"},
    };
    for (const auto& [keys, expected] : cases) {
        shell.desktop().setFocus(views[0].get());
        for (const char* key : keys)
            shell.key(key);
        EXPECT_EQ(focus(), expected) << ::testing::PrintToString(keys);
    }
}

TEST_F(FocusTest, LeavesOutWhatCannotTakeTheFocus) {
    views[1]->hide();
    views[2]->setEnabled(false);
    views[3]->setFocusable(false);
    shell.key("Tab");
    EXPECT_EQ(focus(), "e");
    shell.key("Tab");
    EXPECT_EQ(focus(), "a");
}

TEST_F(FocusTest, TellsTheOldViewBeforeTheNewOne) {
    shell.key("Tab");
    EXPECT_THAT(log, ElementsAre("a.key Tab", "a.focusLost", "b.focusGained"));
    EXPECT_TRUE(views[1]->hasState(stateFocused));
    EXPECT_FALSE(views[0]->hasState(stateFocused));
}

TEST_F(FocusTest, FollowsThePress) {
    shell.click({120, 70});
    EXPECT_EQ(focus(), "d");
    shell.click({300, 200});
    EXPECT_EQ(focus(), "d") << "a press on nothing keeps the focus";
    shell.click({20, 70}, platform::rightButton);
    EXPECT_EQ(focus(), "c") << "the right button focuses, too";
}

TEST_F(FocusTest, KeepsTheFocusOfAViewInsideTheOneThatIsPressed) {
    auto inner = make<ProbeView>(CmRect{0, 0, 20, 20}, "inner", &log);
    inner->setFocusable(true);
    inner->takesMouse = false;
    views[4]->takesMouse = false;
    views[4]->addSubView(inner);
    shell.desktop().setFocus(inner.get());
    log.clear();
    shell.press({15, 125});
    EXPECT_EQ(shell.desktop().getFocus(), inner.get());
    EXPECT_THAT(log, ElementsAre("e.mouseDown 5,5", "inner.mouseDown 5,5"));
}

TEST_F(FocusTest, PassesOnToTheNearestViewWhenTheFocusedOneGoes) {
    shell.desktop().setFocus(views[3].get());
    views[3]->hide();
    EXPECT_EQ(shell.desktop().getFocus(), nullptr);
    EXPECT_EQ(shell.window().getFocusView(), nullptr);
    shell.key("Ctrl+X");
    EXPECT_EQ(focus(), "b") << "the nearest to where the focus was";
}

TEST_F(FocusTest, FollowsWhatTheWindowIsTold) {
    shell.window().setFocusView(nullptr);
    EXPECT_EQ(focus(), "none");
    EXPECT_FALSE(views[0]->hasState(stateFocused));
    shell.window().setFocusView(views[2].get());
    EXPECT_EQ(focus(), "c");
    log.clear();
    shell.key("X");
    EXPECT_THAT(log, ElementsAre("c.key X"));
}

TEST_F(FocusTest, IsNotLeftOnAHiddenViewThatIsTakenOut) {
    auto inner = make<ProbeView>(CmRect{0, 0, 20, 20}, "inner", &log);
    views[3]->hide();
    views[3]->addSubView(inner);
    shell.desktop().setFocus(inner.get());
    log.clear();
    views[3]->getParent()->removeSubView(views[3].get());
    EXPECT_EQ(shell.window().getFocusView(), nullptr);
    EXPECT_EQ(focus(), "none");
    EXPECT_THAT(log, ElementsAre("inner.focusLost"));
}

TEST_F(FocusTest, IsNotGivenBackToAViewThatLeaves) {
    const struct {
        bool isHidden;
        void (*give)(ProbeView& view);
    } cases[] = {
        {false, [](ProbeView& view) { UDesktop::instance()->setFocus(&view); }},
        {false, [](ProbeView& view) { UDesktop::instance()->chooseFocus(view.getWindow()); }},
        {true, [](ProbeView& view) { view.getWindow()->captureMouse(&view); }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(&c - cases);
        const auto gone = make<ProbeView>(CmRect{200, 200, 250, 250}, "gone");
        gone->setFocusable(true);
        gone->during = [&](const std::string& call) {
            if (call == "focusLost")
                c.give(*gone);
        };
        UView* content = shell.window().getFirstSubView();
        content->addSubView(gone);
        if (c.isHidden)
            gone->hide();
        shell.desktop().setFocus(gone.get());
        content->removeSubView(gone.get());
        EXPECT_EQ(shell.window().getFocusView(), nullptr);
        EXPECT_EQ(shell.window().getMouseCapture(), nullptr);
    }
}

TEST_F(FocusTest, SpendsThePressOnAViewThatGoesWithTheFocusOfAnother) {
    views[0]->during = [this](const std::string& call) {
        if (call == "focusLost")
            views[1]->getParent()->removeSubView(views[1].get());
    };
    shell.press({120, 20});
    EXPECT_THAT(log, Not(Contains("b.mouseDown 10,10")));
}

TEST_F(FocusTest, SendsReturnAndSpaceToTheFocusViewThatDoesNotTakeTheKey) {
    views[0]->messageAnswer = CmObject::handled;
    shell.key("Space");
    shell.key("Return");
    shell.key("Enter");
    shell.key("Ctrl+Return");
    EXPECT_THAT(log, ElementsAre("a.key Space", "a.FocusHit", "a.key Return", "a.FocusHit", "a.key Enter",
                                 "a.FocusHit", "a.key Ctrl+Return"));
    views[0]->takesKeys = true;
    log.clear();
    shell.key("Space");
    EXPECT_THAT(log, ElementsAre("a.key Space"));
}

TEST_F(FocusTest, PressesTheKeyWhenNobodyAnswersTheCommand) {
    EXPECT_TRUE(shell.window().focusCommand("Fore"));
    EXPECT_EQ(focus(), "b");
    EXPECT_TRUE(shell.window().focusCommand("Back"));
    EXPECT_EQ(focus(), "a");
    EXPECT_TRUE(shell.window().focusCommand("Down"));
    EXPECT_EQ(focus(), "c");
    log.clear();
    views[2]->messageAnswer = CmObject::handled;
    EXPECT_TRUE(shell.window().focusCommand("Escape"));
    EXPECT_THAT(log, ElementsAre("c.FocusEscape"));
    log.clear();
    views[2]->messageAnswer = CmObject::notHandled;
    shell.window().focusCommand("Hit");
    EXPECT_THAT(log, ElementsAre("c.FocusHit")) << "the key asks the view again";
    EXPECT_FALSE(shell.window().focusCommand("Sideways"));
}

TEST_F(FocusTest, ComesBackWithTheWindow) {
    shell.desktop().setFocus(views[3].get());
    Ref<UWindow> second =
        make<UDocWindow>(CmRect{600, 100, 800, 200}, styleWindowPreset, ConstString("Second"));
    shell.open(*second);
    EXPECT_TRUE(second->isActive());
    EXPECT_EQ(focus(), "none");
    second->closeDeferred();
    shell.settle();
    EXPECT_TRUE(shell.window().isActive());
    EXPECT_EQ(focus(), "d");
}

TEST_F(FocusTest, StaysAwayFromWindowsThatMustNotBeActivated) {
    Ref<UWindow> tool = make<UDocWindow>(CmRect{600, 100, 800, 200}, styleWindowPreset | styleNoActivate,
                                         ConstString("Tool"));
    auto field = make<ProbeView>(CmRect{0, 0, 100, 50}, "field", &log);
    field->setFocusable(true);
    tool->addSubView(field);
    shell.open(*tool);
    EXPECT_EQ(focus(), "a");
    tool->willClose(false);
}

/// A policy that always goes to one view.
class FixedPolicy : public FocusPolicy {
public:
    explicit FixedPolicy(UView* target) : target_(target) {}
    UView* nextFocus(UView*, UView*, FocusDirection, std::span<UView* const>) override { return target_; }

private:
    UView* target_;
};

TEST_F(FocusTest, AsksThePolicyOfTheNearestViewThatHasOne) {
    views[0]->getParent()->setFocusPolicy(make<FixedPolicy>(views[3].get()));
    shell.key("Tab");
    EXPECT_EQ(focus(), "d");
    views[3]->setFocusPolicy(make<FixedPolicy>(nullptr));
    log.clear();
    shell.key("Tab");
    EXPECT_EQ(focus(), "d") << "a policy with nothing to offer leaves the key alone";
}

/// Takes the keys that the test names.
class KeyTaker : public CmObject, public IFocusDelegate {
    QORL_CLASS(KeyTaker, CmObject)
    QORL_FACES(KeyTaker, CmObject, IFocusDelegate)

public:
    std::vector<std::string> heard;

    bool handleKey(UView*, const UKeyCode& key) override {
        heard.push_back(key.normalised().toText());
        return heard.back() == "a";
    }
};

TEST_F(FocusTest, AsksTheFocusControllerBeforeTheViews) {
    const auto taker = make<KeyTaker>();
    shell.desktop().setFocus(views[0].get());
    shell.window().setControllerFocus(taker.get());
    log.clear();
    shell.key("a");
    shell.key("b");
    EXPECT_THAT(taker->heard, ElementsAre("a", "b"));
    EXPECT_THAT(log, ElementsAre("a.key b"));
}

TEST_F(FocusTest, LetsItsHelpersLeaveInTheirOwnCalls) {
    class LeavingTaker : public KeyTaker {
    public:
        bool handleKey(UView* view, const UKeyCode& key) override {
            view->setFocusDelegate({});
            return KeyTaker::handleKey(view, key);
        }
    };
    class LeavingPolicy : public FocusPolicy {
    public:
        UView* nextFocus(UView* scope, UView*, FocusDirection, std::span<UView* const>) override {
            scope->setFocusPolicy({});
            return target;
        }
        UView* target = nullptr;
    };
    views[0]->setFocusDelegate(make<testing::Poisoned<LeavingTaker>>());
    shell.key("a");
    EXPECT_EQ(views[0]->getFocusDelegate(), nullptr);
    auto policy = make<testing::Poisoned<LeavingPolicy>>();
    policy->target = views[3].get();
    views[0]->setFocusPolicy(std::move(policy));
    shell.key("Tab");
    EXPECT_EQ(focus(), "d");
}

} // namespace
} // namespace qorl
