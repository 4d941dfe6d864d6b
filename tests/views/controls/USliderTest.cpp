#include "views/controls/USlider.h"

#include "binding/IntValue.h"
#include "foundation/messages/FMessage.h"
#include "schemes/UScheme.h"
#include "support/EditRecorder.h"
#include "support/HeadlessShell.h"
#include "support/PoisonedView.h"
#include "views/controls/ControlStyle.h"
#include "windows/UWindow.h"

#include <gtest/gtest.h>
#include <utility>

namespace qorl {
namespace {

using testing::EditRecorder;
using testing::HeadlessShell;

/// The track of a slider of 200 pixels without its handle of 11: values from 0 to 189 stand for pixels.
std::string sliderSkin(const std::string& style) {
    const bool isVertical = style.find("vertical") != std::string::npos;
    return "<slider name='level' style='" + style + "' size='0,0," + (isVertical ? "20,200" : "200,20") +
           "'/>";
}
constexpr const char* handleFrom50 = "level = 50 in 0..189";

TEST(USlider, TakesPressesAndDragsByItsMode) {
    const struct {
        const char* style;
        int32_t press;
        int32_t dragTo;
        const char* edits;
        uint32_t modifiers = platform::noModifier;
    } cases[] = {
        {"horizontal jump", 105, 115, "begin 100 110 end"},
        {"horizontal jump", 58, 68, "begin 60 end"},
        {"horizontal touch", 105, 115, ""},
        {"horizontal touch", 58, 68, "begin 60 end"},
        {"horizontal touch", 105, 115, "begin 100 110 end", platform::ctrl},
        {"horizontal relative", 105, 115, "begin 60 end"},
        {"horizontal relative", 58, 68, "begin 60 end"},
        {"horizontal", 105, 115, "begin 100 110 end"},
        {"horizontal jump", 105, 500, "begin 100 189 end"},
        {"horizontal jump", 105, -50, "begin 100 0 end"},
        {"horizontal ramp", 105, 115, "begin 100 110 end", platform::ctrl},
        {"horizontal touch border", 105, 115, "begin 100 110 end"},
        {"horizontal touch border", 3, 10, ""},
        {"horizontal jump mousetransparent", 105, 115, ""},
        {"horizontal jump mousetransparent", 58, 68, "begin 60 end"},
        {"horizontal jump message-loop", 105, 115, "begin 100 110 end"},
        {"horizontal touch message-loop", 105, 115, ""},
        {"horizontal jump invert", 105, 115, "begin 89 79 end"},
        {"vertical jump", 105, 115, "begin 89 79 end"},
        {"vertical jump invert", 105, 115, "begin 100 110 end"},
        {"vertical relative", 20, 30, "begin 40 end"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.style << ", press at " << c.press << ", drag to " << c.dragTo
                                          << ", modifiers " << c.modifiers);
        HeadlessShell shell{sliderSkin(c.style), handleFrom50};
        EditRecorder edits;
        const bool isVertical = shell.view<USlider>(0).isVertical();
        const auto at = [&](int32_t place) { return isVertical ? CmPoint{10, place} : CmPoint{place, 10}; };
        shell.hold(c.modifiers);
        shell.postPress(at(c.press));
        shell.postMove(at(c.dragTo));
        shell.postRelease();
        shell.settle();
        EXPECT_EQ(edits.take(), c.edits);
    }
}

TEST(USlider, FollowsTheGlobalModeWithoutOneOfItsOwn) {
    HeadlessShell shell{sliderSkin("horizontal"), handleFrom50};
    setGlobalSliderMode(SliderMode::touch);
    shell.click({105, 10});
    setGlobalSliderMode(SliderMode::jump);
    EXPECT_EQ(shell.value("level").getValue(), 50);
}

TEST(USlider, MovesATenthWithShiftFromWhereShiftWasPressed) {
    HeadlessShell shell{sliderSkin("horizontal jump"), handleFrom50};
    shell.press({55, 10});
    shell.move({75, 10});
    EXPECT_EQ(shell.value("level").getValue(), 70);
    shell.hold(platform::shift);
    shell.move({125, 10});
    EXPECT_EQ(shell.value("level").getValue(), 75);
    shell.hold(platform::noModifier);
    shell.move({126, 10});
    EXPECT_EQ(shell.value("level").getValue(), 121);
}

TEST(USlider, GivesTheDefaultAPixelOfItsOwn) {
    HeadlessShell shell{sliderSkin("horizontal jump"), "level = 700 in 0..1000"};
    shell.value("level").setDefault(500);
    // The track's 189 pixels step over 500: 497 at one, 503 at the next.
    shell.press({99, 10});
    EXPECT_EQ(shell.value("level").getValue(), 500);
    shell.move({100, 10});
    EXPECT_EQ(shell.value("level").getValue(), 503);
    shell.move({98, 10});
    EXPECT_EQ(shell.value("level").getValue(), 492);
}

TEST(USlider, TurnsAReversedKindRound) {
    HeadlessShell shell{sliderSkin("horizontal jump"), handleFrom50};
    shell.value("level").setKind(Binding::ValueKind::reversedNumber);
    shell.click({105, 10});
    EXPECT_EQ(shell.value("level").getValue(), 89);
    EditRecorder edits;
    shell.click({105, 10});
    EXPECT_EQ(edits.take(), "begin end") << "the handle is under the mouse";
}

TEST(USlider, TravelsTowardTheMouseInSteps) {
    const struct {
        const char* style;
        bool isReversedKind;
        int32_t mouse;
        const char* first;
        const char* later;
    } cases[] = {
        {"horizontal ramp", false, 150, "begin 4", "5 6 7 8 end"},
        {"horizontal ramp", false, 1, "begin 2", "1 0 end"},
        {"horizontal ramp message-loop", false, 150, "begin 4", "5 6 7 8 end"},
        {"horizontal ramp invert", false, 1, "begin 4", "5 6 7 8 9 10 end"},
        {"horizontal ramp", true, 1, "begin 4", "5 6 7 8 9 10 end"},
        {"vertical ramp", false, 50, "begin 4", "5 6 7 8 end"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message() << c.style << ", mouse at " << c.mouse);
        HeadlessShell shell{sliderSkin(c.style), "level = 3 in 0..10"};
        if (c.isReversedKind)
            shell.value("level").setKind(Binding::ValueKind::reversedNumber);
        const bool isVertical = shell.view<USlider>(0).isVertical();
        EditRecorder edits;
        std::string first;
        shell.postPress(isVertical ? CmPoint{10, c.mouse} : CmPoint{c.mouse, 10});
        shell.platform().postPause(490);
        shell.platform().postCall([&] { first = edits.take(); });
        shell.platform().postPause(1010);
        shell.postRelease();
        shell.advance(2000);
        EXPECT_EQ(first, c.first);
        EXPECT_EQ(edits.take(), c.later);
    }
}

TEST(USlider, WaitsHalfASecondAfterTheFirstStepOfTheRamp) {
    HeadlessShell shell{sliderSkin("horizontal ramp"), "level = 0 in 0..10"};
    shell.press({195, 10});
    const std::pair<int64_t, int32_t> steps[] = {{0, 1}, {490, 1}, {20, 2}, {30, 2}, {30, 3}, {50, 4}};
    int64_t passed = 0;
    for (const auto& [wait, expected] : steps) {
        shell.advance(wait);
        passed += wait;
        EXPECT_EQ(shell.value("level").getValue(), expected) << "after " << passed << " ms";
    }
}

TEST(USlider, EndsAGestureThatLosesTheMouse) {
    HeadlessShell shell{sliderSkin("horizontal jump"), handleFrom50};
    EditRecorder edits;
    shell.press({105, 10});
    shell.window().captureLost();
    shell.move({150, 10});
    EXPECT_EQ(edits.take(), "begin 100 end");
    shell.release();
    shell.press({55, 10});
    const Ref<UView> removed = shell.content().removeSubView(&shell.view(0));
    EXPECT_EQ(edits.take(), "begin 50 end");
    shell.release();
    EXPECT_EQ(edits.take(), "");
}

TEST(USlider, EndsTheEditOfTheValueThatItBeganOn) {
    HeadlessShell shell{sliderSkin("horizontal jump"), handleFrom50};
    const auto other = make<Binding::IntValue>(0, 189);
    shell.press({105, 10});
    shell.view<USlider>(0).setValue(other.get());
    shell.move({150, 10});
    EXPECT_EQ(other->getValue(), 0) << "of which no edit began";
    shell.release();
    EXPECT_FALSE(shell.value("level").isEditing());
    EXPECT_FALSE(other->isEditing());
}

TEST(USlider, IgnoresPressesOfADisabledValue) {
    HeadlessShell shell{sliderSkin("horizontal jump"), handleFrom50};
    EditRecorder edits;
    shell.value("level").bound()->setEnabled(false);
    shell.settle();
    shell.drag({105, 10}, {115, 10});
    shell.desktop().setFocus(&shell.view(0));
    shell.key("Right Arrow");
    shell.wheel({105, 10}, 1);
    EXPECT_EQ(edits.take(), "");
}

TEST(USlider, StepsByKeys) {
    HeadlessShell shell{sliderSkin("horizontal"), "level = 50 in 0..100"};
    shell.desktop().setFocus(&shell.view(0));
    const std::pair<const char*, int32_t> keys[] = {
        {"Right Arrow", 51},
        {"Up Arrow", 52},
        {"Left Arrow", 51},
        {"Down Arrow", 50},
        {"PgUp", 60},
        {"PgDown", 50},
        {"Home", 100},
        {"PgUp", 100},
        {"PgDown", 90},
        {"End", 0},
        {"PgDown", 0},
        {"Space", 50},
        {"Ctrl+Right Arrow", 50},
    };
    for (const auto& [key, expected] : keys) {
        shell.key(key);
        EXPECT_EQ(shell.value("level").getValue(), expected) << "after " << key;
    }
}

TEST(USlider, TurnsTheWheelRoundWhenItIsShownReversed) {
    const std::pair<const char*, int32_t> cases[] = {
        {"horizontal", 51},
        {"horizontal-small-reversed", 49},
        {"vertical-small-reversed", 49},
        {"vertical-small-reversed no-reverse", 51},
    };
    for (const auto& [style, expected] : cases) {
        SCOPED_TRACE(style);
        HeadlessShell shell{sliderSkin(style), "level = 50 in 0..100"};
        shell.wheel({10, 10}, 1);
        EXPECT_EQ(shell.value("level").getValue(), expected);
    }
}

TEST(USlider, LooksTheSameInStylesThatAreNotOfItsLook) {
    const auto pictureOf = [](const char* style) {
        HeadlessShell shell{sliderSkin(style), "level = 25 in 0..100"};
        return shell.screenshot(shell.view(0));
    };
    EXPECT_EQ(pictureOf("horizontal volume"), pictureOf("horizontal"));
    EXPECT_EQ(pictureOf("horizontal-small-reversed"), pictureOf("horizontal-small"));
}

TEST(USlider, LetsGoOfAGestureThatEndsAsItBegins) {
    /// Hides the slider when the edit begins.
    class Hider : public CmObject {
    public:
        UView* view = nullptr;
        int32_t handleMessage(FMessage*) override { return view->hide(), handled; }
    };
    HeadlessShell shell{sliderSkin("horizontal jump"), handleFrom50};
    const auto hider = make<Hider>();
    hider->view = &shell.view(0);
    shell.value("level").setTarget(hider.get(), 0, false);
    shell.value("level").setFlag(Binding::Value::targetTakesEdits, true);
    EditRecorder edits;
    shell.press({105, 10});
    EXPECT_EQ(edits.take(), "begin end");
    EXPECT_EQ(shell.window().getMouseCapture(), nullptr);
    shell.release();
    shell.value("level").setTarget(nullptr, 0, false);
}

TEST(USlider, MayGoWhenTheGestureEndsThatItsPanelTakesAlong) {
    class Remover : public CmObject {
    public:
        UView* leaving = nullptr;
        int32_t handleMessage(FMessage*) override {
            if (UView* view = std::exchange(leaving, nullptr))
                view->getParent()->removeSubView(view);
            return handled;
        }
    };
    HeadlessShell shell;
    const auto value = make<Binding::IntValue>(0, 189);
    const auto panel = make<UView>(CmRect{0, 0, 200, 20});
    Ref<UView> slider = make<testing::Poisoned<USlider>>(CmRect{0, 0, 200, 20}, ConstString(), value.get(),
                                                         SliderStyle::jump);
    UView* leaving = slider.get();
    panel->addSubView(std::move(slider));
    shell.window().addSubView(panel);
    shell.press({105, 10});
    const auto remover = make<Remover>();
    remover->leaving = leaving;
    value->setTarget(remover.get(), 0, false);
    value->setFlag(Binding::Value::targetTakesEdits, true);
    shell.window().removeSubView(panel.get());
    EXPECT_EQ(panel->getSubViewCount(), 0);
    EXPECT_FALSE(value->isEditing());
    value->setTarget(nullptr, 0, false);
}

TEST(USlider, TakesTheSidewaysWheelOnlyWhenItLies) {
    for (const bool isVertical : {false, true}) {
        HeadlessShell shell{sliderSkin(isVertical ? "vertical" : "horizontal"), "level = 50 in 0..100"};
        shell.wheel({10, 10}, 0, 1);
        EXPECT_EQ(shell.value("level").getValue() == 50, isVertical);
    }
}

TEST(USlider, PaintsItsPartsInTheirColours) {
    HeadlessShell shell{"<slider name='level' style='horizontal' size='0,0,100,20' handlesize='20,10' "
                        "bgcolor='#FF0000' fgcolor='#00FF00' handlecolor='#0000FF'/>",
                        "level = 50 in 0..100"};
    const auto picture = shell.screenshot(shell.view(0));
    EXPECT_EQ(picture.at(10, 10), 0xFF00FF00u) << "below the value";
    EXPECT_EQ(picture.at(90, 10), 0xFFFF0000u) << "above it";
    EXPECT_EQ(picture.at(50, 10), 0xFF0000FFu);
    EXPECT_EQ(picture.at(43, 10), 0xFF0000FFu) << "as long as it is told to be";
    EXPECT_EQ(picture.at(50, 2), picture.at(10, 2)) << "and no broader";
    shell.drag({44, 10}, {4, 10});
    EXPECT_EQ(shell.value("level").getValue(), 0);
}

TEST(USlider, LightsAStripFromWhereItsStyleSays) {
    constexpr uint32_t strip = 0xFF00FF00;
    const struct {
        const char *style, *value;
        int32_t lit, dark;
    } cases[] = {
        {"horizontal lightstriplinear", "level = 50 in 0..100", 2, 80},
        {"horizontal lightstriplinearmax", "level = 50 in 0..100", 98, 20},
        {"horizontal lightstripbilinear", "level = 100 in 0..100", 60, 40},
        {"horizontal lightstripauto", "level = 75 in -25..75", 35, 20},
        {"horizontal lightstripauto", "level = 50 in 0..100", 2, 80},
        {"horizontal lightstriplinear invert", "level = 25 in 0..100", 98, 40},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.style);
        HeadlessShell shell{"<slider name='level' size='0,0,100,20' handlesize='10,0' stripcolor='#00FF00' "
                            "style='" +
                                std::string(c.style) + "'/>",
                            c.value};
        const auto picture = shell.screenshot(shell.view(0));
        EXPECT_EQ(picture.at(c.lit, 10), strip);
        EXPECT_NE(picture.at(c.dark, 10), strip);
    }
}

/// Draws tracks of its own thickness.
class BroadScheme : public UScheme {
    QORL_CLASS(BroadScheme, UScheme)

public:
    CmRect track;

    void drawSliderTrack(UDrawDevice&, const CmRect& rect, bool) override { track = rect; }
};

TEST(USlider, LeavesTheThicknessOfItsTrackToTheScheme) {
    HeadlessShell shell{"<slider name='level' style='horizontal' size='0,0,100,20'/>"};
    const auto scheme = make<BroadScheme>();
    shell.window().setScheme(scheme.get());
    shell.settle();
    EXPECT_EQ(scheme->track, (CmRect{0, 0, 100, 20}));
    shell.window().setScheme(nullptr);
}

} // namespace
} // namespace qorl
