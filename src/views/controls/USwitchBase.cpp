#include "views/controls/USwitchBase.h"

#include "foundation/Held.h"
#include "foundation/messages/FMessage.h"
#include "foundation/messages/FMessenger.h"
#include "platform/DesktopServices.h"
#include "platform/Platform.h"
#include "schemes/SchemeKeys.h"
#include "views/controls/PressLoop.h"
#include "windows/UWindow.h"

namespace qorl {

namespace {

constexpr int64_t firstRepeatAfter = 650;
constexpr int64_t repeatEvery = 50;
/// How often a repeating switch looks at the clock.
constexpr int64_t repeatResolution = 10;

constexpr bool standsFor(SwitchBehaviour behaviour, std::initializer_list<SwitchBehaviour> list) {
    for (SwitchBehaviour entry : list)
        if (entry == behaviour)
            return true;
    return false;
}

} // namespace

USwitchBase::USwitchBase(const CmRect& frame, const ConstString& title, Binding::Value* value, uint32_t style)
    : UControl(frame, title, value, style) {
    setFocusable(true);
}

uint32_t USwitchBase::getMarks() const {
    return (isOn() ? MarkState::on : 0) | (isPressed() ? MarkState::pressed : 0) |
           (isEnabled() ? 0 : MarkState::disabled) | (hasState(stateRolloverAny) ? MarkState::hovered : 0);
}

bool USwitchBase::filterPress(bool& result) const {
    auto* desktop = platform::desktop();
    const bool modifierHeld = desktop && desktop->eventModifiers() != platform::noModifier;
    if (hasStyle(ControlStyle::modifiedClick) && !modifierHeld) {
        result = false;
        return true;
    }
    const UWindow* window = getWindow();
    if (hasStyle(ControlStyle::doubleClick) && !(window && window->isDoubleClick())) {
        result = !hasStyle(ControlStyle::clickThrough);
        return true;
    }
    return false;
}

bool USwitchBase::actsAtOnce() const {
    using enum SwitchBehaviour;
    return standsFor(pressBehaviour(),
                     {off, menu, commandMenu, repeat, SwitchBehaviour::notify, postMessage}) ||
           hasStyle(ControlStyle::immediate | ControlStyle::clickThrough) ||
           getValueObject()->isPerformOnEdit();
}

bool USwitchBase::hasSteps(Binding::Value& value) const {
    using enum SwitchBehaviour;
    const int64_t range = int64_t{value.getMax()} - value.getMin();
    if (standsFor(pressBehaviour(), {increment, decrement}))
        return range >= 1;
    return pressBehaviour() != repeat && range >= 2;
}

bool USwitchBase::mouseDown(CmPoint point) {
    const auto keptAlive = retain(this);
    // A second button that comes down is of no account.
    if (UView::mouseDown(point) || inPress_ || !isValueEnabled())
        return true;
    bool result = true;
    if (filterPress(result))
        return result;
    const Held held(inPress_);
    if (actsAtOnce())
        perform(Release::pending);
    else if (followMouse())
        perform(Release::done);
    setHighlighted(false);
    return !hasStyle(ControlStyle::clickThrough) || hasStyle(ControlStyle::modifiedClick);
}

void USwitchBase::pressShortly() {
    if (inPress_ || !isValueEnabled())
        return;
    const auto keptAlive = retain(this);
    const Held held(inPress_);
    perform(Release::done);
    setHighlighted(false);
}

bool USwitchBase::followMouse() {
    PressLoop press(*this);
    while (press.next())
        setHighlighted(press.isInside());
    return press.isInside() && !press.wasInterrupted();
}

void USwitchBase::perform(Release release) {
    using enum SwitchBehaviour;
    // What the press has begun on, the release ends on, whatever the control shows by then.
    const Ref<Binding::Value> value = retain(getValueObject());
    const SwitchBehaviour behaviour = pressBehaviour();
    notifyTargetOfClick();
    switch (behaviour) {
    case onOff: performOnOff(*value, release); break;
    case on: value->bound()->setValueAndPerform(value->getMax()); break;
    case off: value->bound()->setValueAndPerform(value->getMin()); break;
    case menu:
    case commandMenu: break;
    case SwitchBehaviour::notify:
    case postMessage:
        setHighlighted(true);
        tellTarget(*value, behaviour);
        waitForRelease(release);
        break;
    default: performPush(*value, behaviour, release);
    }
}

void USwitchBase::performOnOff(Binding::Value& value, Release release) {
    const bool bracket = value.isPerformOnEdit();
    if (bracket)
        value.beginEdit();
    value.bound()->setValueAndPerform(value.getValue() == value.getMin() ? value.getMax() : value.getMin());
    if (!bracket)
        return;
    update();
    waitForRelease(release);
    value.endEdit(true);
}

void USwitchBase::performPush(Binding::Value& value, SwitchBehaviour behaviour, Release release) {
    const bool repeats = behaviour == SwitchBehaviour::repeat && release == Release::pending;
    // Counts from the press on.
    PressLoop press(*this, repeats ? repeatResolution : 0);
    const bool bracket = value.isPerformOnEdit();
    setHighlighted(true);
    if (bracket)
        value.beginEdit();
    const bool steps = hasSteps(value);
    if (steps)
        step(value, behaviour);
    else
        value.bound()->setValueAndPerform(value.getMax());
    if (repeats)
        repeatUntilRelease(value, press);
    else
        waitForRelease(release);
    if (!steps && !hasStyle(ControlStyle::fireCommand))
        value.bound()->setValueMaybePerform(value.getMin(), behaviour != SwitchBehaviour::button);
    if (bracket)
        value.endEdit(true);
}

void USwitchBase::step(Binding::Value& value, SwitchBehaviour behaviour) {
    const bool goesDown = behaviour == SwitchBehaviour::decrement;
    const int32_t end = goesDown ? value.getMin() : value.getMax();
    if (value.getValue() == end)
        value.bound()->setValueAndPerform(goesDown ? value.getMax() : value.getMin());
    else if (goesDown)
        value.decrement();
    else
        value.increment();
}

void USwitchBase::tellTarget(Binding::Value& value, SwitchBehaviour behaviour) {
    CmObject* target = value.target();
    if (!target || !value.bound()->isEnabled())
        return;
    auto message = make<FMessage>("Switch Mouse Down");
    message->setInt("Tag", value.tag());
    message->setObject("Value", &value);
    message->setObject("Control", this);
    if (behaviour == SwitchBehaviour::notify)
        target->handleMessage(message.get());
    else if (FMessenger* messenger = FMessenger::instance())
        messenger->post(target, std::move(message));
}

void USwitchBase::waitForRelease(Release release) {
    if (release == Release::done)
        return;
    PressLoop press(*this);
    while (press.next()) {}
}

void USwitchBase::repeatUntilRelease(Binding::Value& value, PressLoop& press) {
    int64_t due = firstRepeatAfter + 1;
    while (press.next()) {
        if (press.elapsed() < due)
            continue;
        value.bound()->setValueAndPerform(value.getMax());
        due = press.elapsed() + repeatEvery;
    }
}

AccessibleRole USwitchBase::getAccessibleRole() const {
    return AccessibleRole::switchButton;
}

const char* USwitchBase::getAccessibleActionName(int32_t index) const {
    if (index != 0)
        return nullptr;
    return pressBehaviour() == SwitchBehaviour::onOff ? "toggle" : "press";
}

bool USwitchBase::performAccessibleAction(int32_t index) {
    if (index != 0)
        return false;
    pressShortly();
    return true;
}

} // namespace qorl
