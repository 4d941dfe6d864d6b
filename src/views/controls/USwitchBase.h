#pragma once

#include "views/controls/ControlStyle.h"
#include "views/controls/UControl.h"

namespace qorl {

/// What all switches, buttons and check boxes share: the press. What a switch shows is its subclasses'
/// affair.
///
/// Most behaviours follow the mouse until the release, `pressed` while it is inside; a release outside has no
/// effect.
class USwitchBase : public UControl {
    QORL_CLASS(USwitchBase, UControl)

public:
    USwitchBase(const CmRect& frame, const ConstString& title, Binding::Value* value, uint32_t style);

    bool mouseDown(CmPoint point) override;
    /// "FocusHit" is a short press by the keyboard.
    int32_t handleMessage(FMessage* message) override;
    AccessibleRole getAccessibleRole() const override;
    int32_t countAccessibleActions() const override { return 1; }
    const char* getAccessibleActionName(int32_t index) const override;
    bool performAccessibleAction(int32_t index) override;

    SwitchBehaviour getBehaviour() const { return SwitchBehaviour(getStyle() & switchBehaviourMask); }
    /// The look while the mouse holds the switch.
    bool isPressed() const { return hasFlag(viewHighlighted); }
    /// What a press and an immediate release would do.
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
    bool hasSteps() const;
    /// False when the gesture ended outside, or was interrupted.
    bool followMouse();
    void perform(Release release);
    void performOnOff();
    void performPush(Release release);
    void step(SwitchBehaviour behaviour);
    void returnToMinimum(SwitchBehaviour behaviour);
    void tellTarget(SwitchBehaviour behaviour);
    void waitForRelease();
    void repeatUntilRelease();
};

} // namespace qorl
