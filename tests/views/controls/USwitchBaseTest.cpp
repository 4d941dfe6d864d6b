#include "binding/IntValue.h"
#include "foundation/messages/FMessage.h"
#include "support/EditRecorder.h"
#include "support/HeadlessShell.h"
#include "support/ProbeView.h"
#include "views/controls/USwitch.h"
#include "windows/UWindow.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace qorl {
namespace {

using testing::EditRecorder;
using testing::HeadlessShell;

std::string switchSkin(const std::string& style) {
    return "<switch name='v' style='" + style + "' size='0,0,60,20'/>";
}

std::string numberIn(int32_t number, int32_t max) {
    return "v = " + std::to_string(number) + " in 0.." + std::to_string(max);
}

constexpr CmPoint inside{30, 10};
constexpr CmPoint outside{200, 200};

TEST(USwitchBase, DoesWhatItsBehaviourSays) {
    const struct {
        const char* style;
        int32_t max;
        int32_t before;
        const char* releasedInside;
        const char* releasedOutside;
    } cases[] = {
        {"push", 1, 0, "1 0", ""},
        {"push", 3, 1, "2", ""},
        {"push", 3, 3, "0", ""},
        {"button", 1, 0, "1", ""},
        {"onoff", 1, 0, "1", ""},
        {"onoff", 1, 1, "0", ""},
        {"onoff", 10, 4, "0", ""},
        {"on", 1, 0, "1", ""},
        {"off", 1, 1, "0", "0"},
        {"increment", 1, 0, "1", ""},
        {"increment", 1, 1, "0", ""},
        {"increment", 5, 2, "3", ""},
        {"decrement", 5, 2, "1", ""},
        {"decrement", 5, 0, "5", ""},
        {"multiple", 2, 1, "2", ""},
        {"multiple", 2, 2, "0", ""},
        {"repeat", 1, 0, "1 0", "1 0"},
        {"repeat", 5, 2, "5 0", "5 0"},
        {"onoff immediate", 1, 0, "1", "1"},
        {"push immediate", 1, 0, "1 0", "1 0"},
        {"push firecommand", 1, 0, "1", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.style << " at " << c.before << " of " << c.max);
        for (const CmPoint release : {inside, outside}) {
            HeadlessShell shell{switchSkin(c.style), numberIn(c.before, c.max)};
            EditRecorder edits;
            shell.drag(inside, release);
            EXPECT_EQ(edits.take(), release == inside ? c.releasedInside : c.releasedOutside)
                << (release == inside ? "released inside" : "released outside");
            EXPECT_FALSE(shell.view<USwitch>(0).isPressed());
        }
    }
}

TEST(USwitchBase, TakesTheReleaseWhereItWasThoughTheMouseHasGoneOn) {
    HeadlessShell shell{switchSkin("onoff"), numberIn(0, 1)};
    // The mouse is there at once; that it moved is told behind the release.
    shell.clickWhile(inside,
                     [&] { shell.platform().setMousePosition(shell.window().clientToScreen(outside)); });
    EXPECT_EQ(shell.value("v").getValue(), 1);
}

TEST(USwitchBase, ReturnsAButtonToItsMinimumWithoutPerforming) {
    HeadlessShell shell{switchSkin("button"), numberIn(0, 1)};
    shell.click(inside);
    EXPECT_EQ(shell.value("v").getValue(), 0);
}

TEST(USwitchBase, ShowsWhetherTheReleaseWouldCount) {
    HeadlessShell shell{switchSkin("onoff"), numberIn(0, 1)};
    const auto& view = shell.view<USwitch>(0);
    std::string looks;
    const auto look = [&] { looks += view.isPressed() ? "down " : "up "; };
    shell.postPress(inside);
    for (const CmPoint point : {inside, outside, inside}) {
        shell.postMove(point);
        shell.platform().postCall(look);
    }
    shell.postRelease();
    shell.platform().postCall(look);
    shell.settle();
    EXPECT_EQ(looks, "down up down up ");
    EXPECT_EQ(shell.value("v").getValue(), 1);
}

TEST(USwitchBase, RepeatsAfter650MillisecondsAndThenEvery50) {
    HeadlessShell shell{switchSkin("repeat"), numberIn(0, 1)};
    EditRecorder edits;
    std::vector<std::string> performed;
    shell.postPress(inside);
    for (const int64_t wait : {0, 645, 20, 35, 30, 35}) {
        if (wait)
            shell.platform().postPause(wait);
        shell.platform().postCall([&] { performed.push_back(edits.take()); });
    }
    shell.postRelease();
    shell.advance(2000);
    EXPECT_EQ(performed, (std::vector<std::string>{"1", "", "1", "", "1", "1"}));
    EXPECT_EQ(edits.take(), "0");
}

TEST(USwitchBase, BracketsTheEditWhileTheMouseHoldsIt) {
    HeadlessShell shell{switchSkin("onoff"), numberIn(0, 1)};
    shell.value("v").setPerformOnEdit(true);
    EditRecorder edits;
    std::string held;
    shell.clickWhile(inside, [&] { held = edits.take(); });
    EXPECT_EQ(held, "begin 0 1");
    EXPECT_EQ(edits.take(), "end 1");
}

TEST(USwitchBase, IgnoresPressesOfADisabledValue) {
    HeadlessShell shell{switchSkin("onoff"), numberIn(0, 1)};
    EditRecorder edits;
    shell.value("v").bound()->setEnabled(false);
    shell.click(inside);
    EXPECT_EQ(edits.take(), "");
    shell.value("v").bound()->setEnabled(true);
    shell.settle();
    shell.click(inside);
    EXPECT_EQ(edits.take(), "1");
}

TEST(USwitchBase, TellsItsTarget) {
    for (const char* style : {"notify", "postmessage"}) {
        SCOPED_TRACE(style);
        HeadlessShell shell{switchSkin(style), numberIn(0, 1)};
        const auto target = make<testing::ProbeController>();
        auto& view = shell.view<USwitch>(0);
        view.setTarget(target.get(), 7);
        target->answer = [&](FMessage& message) {
            EXPECT_EQ(message.getInt("Tag"), 7);
            EXPECT_EQ(message.getObject("Control"), &view);
            EXPECT_TRUE(message.getObject("Value"));
            EXPECT_TRUE(view.isPressed());
            return CmObject::handled + 0;
        };
        EditRecorder edits;
        shell.postPress(inside);
        shell.platform().postPause(5);
        shell.postRelease();
        shell.advance(100);
        EXPECT_EQ(edits.take(), "");
        shell.value("v").bound()->setEnabled(false);
        shell.click(inside);
        EXPECT_THAT(target->messages, ::testing::ElementsAre("Switch Mouse Down")) << "none when disabled";
        shell.value("v").setTarget(nullptr, 0, false);
    }
}

TEST(USwitchBase, PassesPressesOnAsItsStyleSays) {
    const struct {
        const char* style;
        uint32_t modifiers;
        bool isDouble;
        int32_t front;
        int32_t behind;
    } cases[] = {
        {"onoff", platform::noModifier, false, 1, 0},
        {"onoff modifiedclick", platform::noModifier, false, 0, 1},
        {"onoff modifiedclick", platform::shift, false, 1, 0},
        {"onoff clickthrough", platform::noModifier, false, 1, 1},
        {"onoff clickthrough modifiedclick", platform::ctrl, false, 1, 0},
        {"onoff doubleclick", platform::noModifier, false, 0, 0},
        {"onoff doubleclick", platform::noModifier, true, 1, 0},
        {"onoff doubleclick clickthrough", platform::noModifier, false, 0, 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.style << ", modifiers " << c.modifiers);
        HeadlessShell shell{"<switch name='behind' style='onoff immediate' size='0,0,60,20'/>" +
                                switchSkin(c.style),
                            "v = 0 in 0..1\nbehind = 0 in 0..1"};
        shell.hold(c.modifiers);
        if (c.isDouble)
            shell.doubleClick(inside);
        else
            shell.click(inside);
        EXPECT_EQ(shell.value("v").getValue(), c.front);
        EXPECT_EQ(shell.value("behind").getValue(), c.behind);
    }
}

TEST(USwitchBase, IsToggledByTheKeyboardWhateverItsBehaviour) {
    for (const char* style : {"onoff", "push", "menu", "off"}) {
        SCOPED_TRACE(style);
        HeadlessShell shell{switchSkin(style), numberIn(1, 3)};
        EditRecorder edits;
        shell.desktop().setFocus(&shell.view(0));
        for (const char* key : {"Space", "Return"})
            shell.key(key);
        EXPECT_EQ(edits.take(), "0 3");
    }
}

TEST(USwitchBase, IsPressedByAssistiveToolsAsByTheMouse) {
    const std::pair<const char*, const char*> cases[] = {
        {"push", "begin 0 1 end 1"},
        {"onoff", "begin 0 2 end 2"},
        {"repeat", "begin 0 2 0 end 0"},
        {"off", "0"},
        {"menu", ""},
    };
    for (const auto& [style, expected] : cases) {
        SCOPED_TRACE(style);
        HeadlessShell shell{switchSkin(style), numberIn(0, 2)};
        shell.value("v").setPerformOnEdit(true);
        EditRecorder edits;
        EXPECT_TRUE(shell.view(0).performAccessibleAction(0));
        EXPECT_EQ(edits.take(), expected);
        EXPECT_FALSE(shell.view<USwitch>(0).isPressed());
    }
}

TEST(USwitchBase, ForgetsAPressWhoseViewGoes) {
    for (const bool isHidden : {false, true}) {
        HeadlessShell shell{switchSkin("onoff"), numberIn(0, 1)};
        EditRecorder edits;
        shell.clickWhile(inside, [&] {
            if (isHidden)
                shell.view(0).hide();
            else
                shell.content().removeSubView(&shell.view(0));
        });
        EXPECT_EQ(edits.take(), "") << (isHidden ? "hidden" : "removed");
    }
}

TEST(USwitchBase, EndsThePressOnTheValueThatItBeganOn) {
    for (const char* style : {"push immediate", "repeat"}) {
        HeadlessShell shell{switchSkin(style), numberIn(0, 1)};
        const auto other = make<Binding::IntValue>(0, 1);
        other->setValue(1);
        shell.postPress(inside);
        shell.platform().postCall([&] { shell.view<USwitch>(0).setValue(other.get()); });
        shell.platform().postPause(800);
        shell.postRelease();
        shell.advance(1000);
        EXPECT_EQ(shell.value("v").getValue(), 0) << style;
        EXPECT_EQ(other->getValue(), 1) << style;
    }
}

TEST(USwitchBase, TakesNoAccountOfASecondButton) {
    HeadlessShell shell{switchSkin("onoff"), numberIn(0, 1)};
    EditRecorder edits;
    shell.postPress(inside);
    shell.postPress(inside, platform::middleButton);
    shell.postRelease();
    shell.postMove(outside);
    shell.postRelease(platform::middleButton);
    shell.settle();
    EXPECT_EQ(edits.take(), "1");
}

} // namespace
} // namespace qorl
