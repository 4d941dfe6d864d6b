#include "views/controls/UControl.h"

#include "binding/IntValue.h"
#include "foundation/messages/FMessage.h"
#include "foundation/text/CmString.h"
#include "support/EditRecorder.h"
#include "support/HeadlessShell.h"
#include "support/ProbeView.h"
#include "support/Slots.h"
#include "views/GeometryAttributes.h"
#include "windows/UWindow.h"

#include <gtest/gtest.h>

namespace qorl {
namespace {

using testing::EditRecorder;
using testing::HeadlessShell;

constexpr CmRect frame{0, 0, 50, 20};

/// Counts what it is asked to do.
class CountingControl : public UControl {
public:
    using UControl::UControl;

    int32_t redraws = 0;
    int32_t styleSets = 0;

    void update() override {
        ++redraws;
        UControl::update();
    }
    void setStyle(uint32_t style) override {
        ++styleSets;
        UControl::setStyle(style);
    }
};

TEST(UControl, AddsItsOperationsInTheirPublishedOrder) {
    const testing::SlotRow update{testing::slotOf(static_cast<void (UControl::*)()>(&UControl::update)),
                                  "update"};
    testing::expectConsecutive(
        testing::slotOf(&UControl::setValue), SLOT(UControl, setValue), update,
        SLOT(UControl, getValueObject), SLOT(UControl, setStyle), SLOT(UControl, setControlValue),
        SLOT(UControl, getControlValue), SLOT(UControl, getControlMin), SLOT(UControl, setControlMin),
        SLOT(UControl, getControlMax), SLOT(UControl, setControlMax), SLOT(UControl, limitControlValue),
        SLOT(UControl, getNormalized), SLOT(UControl, setNormalizedValue), SLOT(UControl, getStyle),
        SLOT(UControl, addStyle), SLOT(UControl, setTarget), SLOT(UControl, setTag), SLOT(UControl, getTag),
        SLOT(UControl, setContentColor), SLOT(UControl, getContentColor), SLOT(UControl, setSecondValue),
        SLOT(UControl, getSecondValue), SLOT(UControl, swapValueReference), SLOT(UControl, onDefaultChanged),
        SLOT(UControl, onValueAttached));
}

/// The wheel over a control whose value starts in the middle of its range.
TEST(UControl, TurnsTheWheelIntoStepsOrShares) {
    using enum Binding::ValueKind;
    const struct {
        int32_t max;
        double distance;
        int32_t expected;
        bool stepped = false;
        uint32_t modifiers = platform::noModifier;
        Binding::ValueKind kind = Binding::ValueKind::number;
        bool inverted = false;
    } cases[] = {
        {100, 1, 51},
        {100, -1, 49},
        {100, 3.5, 51},
        {100, 0, 50},
        {148, 1, 75},
        {1000, 1, 510},
        {1000, -2, 480},
        {1000, 60, 1000},
        {1000, -60, 0},
        {1000, 1, 502, false, platform::shift},
        {1000, 1, 510, false, platform::ctrl},
        {1000, 5, 501, true},
        {1000, -5, 499, true},
        {100, 1, 49, false, platform::noModifier, reversedNumber},
        {1000, 1, 490, false, platform::noModifier, reversedNumber},
        {1000, 1, 510, false, platform::noModifier, reversedNumber, true},
        {100, 1, 51, false, platform::noModifier, list},
    };
    HeadlessShell shell;
    for (const auto& c : cases) {
        SCOPED_TRACE(::testing::Message()
                     << "0.." << c.max << " by " << c.distance << (c.stepped ? " stepped" : "")
                     << " modifiers " << c.modifiers << " kind " << int(c.kind));
        const auto value = make<Binding::IntValue>(0, c.max);
        value->setValue(c.max / 2);
        value->setWheelStepped(c.stepped);
        value->setKind(c.kind);
        const auto control = make<UControl>(frame, ConstString(), value.get(), 0);
        const auto message = make<FMessage>("Wheel");
        message->setFloat("Distance", c.distance);
        message->setInt("Inverted", c.inverted);
        shell.hold(c.modifiers);
        EXPECT_EQ(control->handleMessage(message.get()), CmObject::handled);
        EXPECT_EQ(value->getValue(), c.expected);
        EXPECT_FALSE(value->isEditing());
    }
}

class ControlTest : public ::testing::Test {
protected:
    int32_t tell(FMessage& message) { return control->handleMessage(&message); }
    void showControl() {
        shell.window().addSubView(control);
        shell.settle();
        control->redraws = 0;
    }
    /// How often the control is drawn when `changed` goes on by one.
    int32_t redrawsBy(Binding::Value& changed) {
        shell.settle();
        control->redraws = 0;
        changed.setValue(changed.getValue() + 1);
        shell.settle();
        return control->redraws;
    }
    static void destroy(Binding::Value& value) {
        value.setImmediateUpdates(true);
        value.changed(Binding::valueDestroyed);
    }

    HeadlessShell shell;
    Ref<Binding::IntValue> value = make<Binding::IntValue>(0, 10);
    Ref<CountingControl> control = make<CountingControl>(frame, ConstString(), value.get(), 0);
};

TEST_F(ControlTest, LeavesTheWheelToItsParent) {
    const auto message = make<FMessage>("Wheel");
    message->setFloat("Distance", 1);
    value->setKind(Binding::ValueKind::twoStates);
    EXPECT_EQ(tell(*message), CmObject::notHandled) << "two states";
    value->setKind(Binding::ValueKind::number);
    value->bound()->setEnabled(false);
    EXPECT_EQ(tell(*message), CmObject::notHandled) << "disabled";
    value->bound()->setEnabled(true);
    message->setInt("Axis", 2);
    EXPECT_EQ(tell(*message), CmObject::notHandled) << "sideways";
    EXPECT_EQ(value->getValue(), 0);
    message->setInt("Axis", 1);
    EXPECT_EQ(tell(*message), CmObject::handled);
    EXPECT_EQ(value->getValue(), 1);
}

TEST_F(ControlTest, TogglesBetweenTheEndsOnFocusHit) {
    const auto hit = make<FMessage>("FocusHit");
    value->setMin(2);
    EditRecorder edits;
    for (const auto& [before, after] : {std::pair{2, 10}, {10, 2}, {5, 2}}) {
        value->setValue(before);
        EXPECT_EQ(tell(*hit), CmObject::handled);
        EXPECT_EQ(value->getValue(), after) << "from " << before;
    }
    EXPECT_EQ(edits.take(), "10 2 2");
    value->bound()->setEnabled(false);
    EXPECT_EQ(tell(*hit), CmObject::handled);
    EXPECT_EQ(edits.take(), "");
}

TEST_F(ControlTest, RepaintsOnceForManyChangesOfItsValue) {
    showControl();
    for (const int32_t number : {3, 4, 5})
        value->setValue(number);
    EXPECT_EQ(control->redraws, 0);
    shell.settle();
    EXPECT_EQ(control->redraws, 1);
}

TEST_F(ControlTest, GoesOnWithAFreshNumberWhenItsValueGoes) {
    value->setMin(5);
    value->bound()->setEnabled(false);
    showControl();
    EXPECT_FALSE(control->isEnabled());
    destroy(*value);
    EXPECT_NE(control->getValueObject(), value.get());
    EXPECT_EQ(control->getControlMin(), 0);
    EXPECT_EQ(control->getControlMax(), 100);
    EXPECT_TRUE(control->isEnabled());
    value->bound()->setEnabled(true);
    value->setValue(7);
    EXPECT_EQ(control->getControlValue(), 0);
    value.reset();
    control->setControlValue(30);
    EXPECT_EQ(control->getControlValue(), 30);
}

TEST_F(ControlTest, SurvivesTheLastReferenceToAValueThatSaysGoodbyeLater) {
    value->changed(Binding::valueDestroyed);
    value.reset();
    shell.settle();
    EXPECT_EQ(control->getControlMax(), 100);
}

TEST_F(ControlTest, FollowsItsSecondValueUntilItLeavesBothPlaces) {
    const auto other = make<Binding::IntValue>(0, 10);
    showControl();
    control->setSecondValue(other.get());
    EXPECT_EQ(redrawsBy(*other), 1);
    control->setSecondValue(nullptr);
    EXPECT_EQ(redrawsBy(*other), 0) << "the former second value no more";
    control->setSecondValue(value.get());
    EXPECT_EQ(redrawsBy(*value), 1) << "one value in both places";
    control->setSecondValue(nullptr);
    EXPECT_EQ(redrawsBy(*value), 1) << "the own value is still followed";
    control->setSecondValue(value.get());
    control->setValue(other.get());
    EXPECT_EQ(redrawsBy(*value), 1) << "still the second value";
    EXPECT_EQ(redrawsBy(*other), 1);
    control->setSecondValue(other.get());
    EXPECT_EQ(redrawsBy(*value), 0);
    EXPECT_EQ(redrawsBy(*other), 1);
    destroy(*other);
    EXPECT_EQ(control->getSecondValue(), nullptr) << "a value that goes leaves both places";
    EXPECT_NE(control->getValueObject(), other.get());
}

TEST_F(ControlTest, DropsASecondValueThatGoes) {
    const auto other = make<Binding::IntValue>(0, 10);
    control->setSecondValue(other.get());
    destroy(*other);
    EXPECT_EQ(control->getSecondValue(), nullptr);
    EXPECT_EQ(control->getValueObject(), value.get());
}

TEST(UControl, FollowsTheValueThatItMakesUnlessAnotherIsToCome) {
    HeadlessShell shell;
    const auto made = make<CountingControl>(frame, ConstString(), nullptr, 0);
    const auto waiting = make<CountingControl>();
    for (CountingControl* control : {made.get(), waiting.get()}) {
        shell.window().addSubView(retain(control));
        shell.settle();
        control->redraws = 0;
        control->setControlValue(40);
        shell.settle();
    }
    EXPECT_EQ(made->redraws, 1);
    EXPECT_EQ(waiting->redraws, 0);
}

TEST(UControl, SetsItsStyleOnlyForNewBits) {
    HeadlessShell shell;
    const auto control = make<CountingControl>(frame, ConstString(), nullptr, 0x300);
    control->addStyle(0x100);
    EXPECT_EQ(control->styleSets, 0);
    control->addStyle(0x401);
    EXPECT_EQ(control->styleSets, 1);
    EXPECT_EQ(control->getStyle(), 0x701U);
}

TEST(UControl, GivesTheFocusAwayWhenItsValueIsDisabled) {
    HeadlessShell shell{"<slider name='level' style='horizontal' size='0,0,100,20'/>"};
    shell.desktop().setFocus(&shell.view(0));
    EXPECT_EQ(shell.window().getFocusView(), &shell.view(0));
    shell.value("level").bound()->setEnabled(false);
    shell.settle();
    EXPECT_EQ(shell.window().getFocusView(), nullptr);
    EXPECT_EQ(shell.desktop().getFocus(), nullptr);
}

TEST(UControl, AsksTheControllerForItsToolTipFirst) {
    HeadlessShell shell{
        "<slider name='level' tip='Level of the input' style='horizontal' size='0,0,100,20'/>"};
    const auto& control = shell.view<UControl>(0);
    const auto tip = [&] {
        String text;
        CmRect area;
        return control.getTooltip(text, {1, 1}, area) ? text.toUtf8() : "none";
    };
    EXPECT_EQ(tip(), "Level of the input");
    const auto controller = make<testing::ProbeController>();
    controller->answer = [&](FMessage& message) -> int32_t {
        auto* result = cast<CmString>(message.getObject("result"));
        CmPoint where;
        if (!message.isNamed("GetToolTip") || !result || message.getObject("control") != &control ||
            !getPoint(message.attributes(), "where", where) || where != CmPoint{1, 1})
            return CmObject::notHandled;
        result->string() = ConstString("Told by the controller");
        return CmObject::handled;
    };
    shell.value("level").setTarget(controller.get(), 0, false);
    EXPECT_EQ(tip(), "Told by the controller") << "the target stands in for a controller";
    const auto silent = make<testing::ProbeController>();
    shell.window().setController(silent.get());
    EXPECT_EQ(tip(), "Level of the input");
    shell.window().setController(controller.get());
    EXPECT_EQ(tip(), "Told by the controller");
    shell.window().setController(nullptr);
    shell.value("level").setTarget(nullptr, 0, false);
}

TEST_F(ControlTest, TellsAssistiveToolsLargeNumbersExactly) {
    value->setMin(-16'777'219);
    value->setMax(2'147'483'647);
    EXPECT_TRUE(control->setAccessibleValue(16'777'217));
    EXPECT_EQ(value->getValue(), 16'777'217);
    AccessibleRange range;
    ASSERT_TRUE(control->getAccessibleRange(range));
    EXPECT_EQ(range.value, 16'777'217);
    EXPECT_EQ(range.minimum, -16'777'219);
    EXPECT_EQ(range.maximum, 2'147'483'647);
}

TEST(UControl, IsOperatedByAssistiveTools) {
    HeadlessShell shell{"<slider name='level' style='horizontal' size='0,0,100,20'/>"
                        "<checkbox name='mute' title='Mute' size='0,30,100,20'/>",
                        "level = 5 in -10..10\nmute = 0 in 0..1"};
    EditRecorder edits;
    auto& slider = shell.view<UControl>(0);
    EXPECT_TRUE(slider.setAccessibleValue(7));
    EXPECT_EQ(edits.take(), "begin 7 end");
    auto& box = shell.view<UControl>(1);
    EXPECT_STREQ(box.getAccessibleActionName(0), "toggle");
    EXPECT_EQ(box.getAccessibleActionName(1), nullptr);
    EXPECT_TRUE(box.performAccessibleAction(0));
    EXPECT_EQ(edits.take(), "1");
    shell.value("level").bound()->setEnabled(false);
    EXPECT_FALSE(slider.setAccessibleValue(1));
    EXPECT_EQ(edits.take(), "");
}

} // namespace
} // namespace qorl
