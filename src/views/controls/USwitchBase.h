#pragma once

#include "views/controls/ControlStyle.h"
#include "views/controls/UControl.h"

namespace qorl {

class PressLoop;

/// What all switches, buttons and check boxes share: the press. What a switch shows is its subclasses'
/// affair.
///
/// Most behaviours follow the mouse until the release, `pressed` while it is inside; a release outside has no
/// effect. `button` and `multiple` step through a range of 2 or more as `push` does, round its end too. The
/// keyboard toggles a switch as it does any control.
class USwitchBase : public UControl {
    QORL_CLASS(USwitchBase, UControl)

public:
    USwitchBase(const CmRect& frame, const ConstString& title, Binding::Value* value, uint32_t style);

    bool mouseDown(CmPoint point) override;
    AccessibleRole getAccessibleRole() const override;
    int32_t countAccessibleActions() const override { return 1; }
    const char* getAccessibleActionName(int32_t index) const override;
    bool performAccessibleAction(int32_t index) override;

    SwitchBehaviour getBehaviour() const { return SwitchBehaviour(getStyle() & switchBehaviourMask); }
    /// The look while the mouse holds the switch.
    bool isPressed() const { return hasFlag(viewHighlighted); }
    /// What a press and an immediate release would do; nothing while the mouse presses.
    void pressShortly();
    bool isOn() const { return getControlValue() != getControlMin(); }

protected:
    /// What the press does, when a style says something else than the behaviour number (check boxes).
    virtual SwitchBehaviour pressBehaviour() const { return getBehaviour(); }
    /// The marks for the scheme: on, pressed, disabled, hovered.
    uint32_t getMarks() const;

private:
    /// Whether the mouse has been followed to its release already.
    enum class Release { pending, done };

    bool filterPress(bool& result) const;
    bool actsAtOnce() const;
    bool hasSteps(Binding::Value& value) const;
    /// False when the gesture ended outside, or was interrupted.
    bool followMouse();
    void perform(Release release);
    void performOnOff(Binding::Value& value, Release release);
    void performPush(Binding::Value& value, SwitchBehaviour behaviour, Release release);
    static void step(Binding::Value& value, SwitchBehaviour behaviour);
    void tellTarget(Binding::Value& value, SwitchBehaviour behaviour);
    void waitForRelease(Release release);
    static void repeatUntilRelease(Binding::Value& value, PressLoop& press);

    bool inPress_ = false;
};

} // namespace qorl
