#include "views/controls/USwitchBase.h"

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

bool USwitchBase::hasSteps() const {
    using enum SwitchBehaviour;
    const int64_t range = int64_t{getControlMax()} - getControlMin();
    if (standsFor(pressBehaviour(), {increment, decrement}))
        return range >= 1;
    return pressBehaviour() != repeat && range >= 2;
}

bool USwitchBase::mouseDown(CmPoint point) {
    const auto keptAlive = retain(this);
    if (UView::mouseDown(point) || !isValueEnabled())
        return true;
    bool result = true;
    if (filterPress(result))
        return result;
    if (actsAtOnce())
        perform(Release::pending);
    else if (followMouse())
        perform(Release::done);
    setHighlighted(false);
    return !hasStyle(ControlStyle::clickThrough) || hasStyle(ControlStyle::modifiedClick);
}

bool USwitchBase::followMouse() {
    PressLoop press(*this);
    while (press.next())
        setHighlighted(press.isInside());
    return press.isInside() && !press.wasInterrupted();
}

void USwitchBase::perform(Release release) {
    using enum SwitchBehaviour;
    notifyTargetOfClick();
    switch (pressBehaviour()) {
    case onOff: performOnOff(); break;
    case on: bound()->setValueAndPerform(getControlMax()); break;
    case off: bound()->setValueAndPerform(getControlMin()); break;
    case menu:
    case commandMenu: break;
    case SwitchBehaviour::notify:
    case postMessage:
        setHighlighted(true);
        tellTarget(pressBehaviour());
        waitForRelease();
        break;
    default: performPush(release);
    }
}

void USwitchBase::performOnOff() {
    const Ref<Binding::Value> value = retain(getValueObject());
    const bool bracket = value->isPerformOnEdit();
    if (bracket)
        value->beginEdit();
    value->bound()->setValueAndPerform(value->getValue() == value->getMin() ? value->getMax()
                                                                            : value->getMin());
    if (!bracket)
        return;
    update();
    waitForRelease();
    value->endEdit(true);
}

void USwitchBase::performPush(Release release) {
    const SwitchBehaviour behaviour = pressBehaviour();
    const Ref<Binding::Value> value = retain(getValueObject());
    const bool bracket = value->isPerformOnEdit();
    setHighlighted(true);
    if (bracket)
        value->beginEdit();
    const bool steps = hasSteps();
    if (steps)
        step(behaviour);
    else
        value->bound()->setValueAndPerform(value->getMax());
    if (behaviour == SwitchBehaviour::repeat)
        repeatUntilRelease();
    else if (release == Release::pending)
        waitForRelease();
    if (!steps && !hasStyle(ControlStyle::fireCommand))
        returnToMinimum(behaviour);
    if (bracket)
        value->endEdit(true);
}

void USwitchBase::step(SwitchBehaviour behaviour) {
    Binding::Value* value = getValueObject();
    const bool goesDown = behaviour == SwitchBehaviour::decrement;
    const int32_t end = goesDown ? value->getMin() : value->getMax();
    if (value->getValue() == end)
        bound()->setValueAndPerform(goesDown ? value->getMax() : value->getMin());
    else if (goesDown)
        value->decrement();
    else
        value->increment();
}

void USwitchBase::returnToMinimum(SwitchBehaviour behaviour) {
    bound()->setValueMaybePerform(getControlMin(), behaviour != SwitchBehaviour::button);
}

void USwitchBase::tellTarget(SwitchBehaviour behaviour) {
    CmObject* target = getValueObject()->target();
    if (!target || !isValueEnabled())
        return;
    auto message = make<FMessage>("Switch Mouse Down");
    message->setInt("Tag", getTag());
    message->setObject("Value", getValueObject());
    message->setObject("Control", this);
    if (behaviour == SwitchBehaviour::notify)
        target->handleMessage(message.get());
    else if (FMessenger* messenger = FMessenger::instance())
        messenger->post(target, std::move(message));
}

void USwitchBase::waitForRelease() {
    PressLoop press(*this);
    while (press.next()) {}
}

void USwitchBase::repeatUntilRelease() {
    PressLoop press(*this, repeatResolution);
    int64_t due = firstRepeatAfter + 1;
    while (press.next()) {
        if (press.elapsed() < due)
            continue;
        bound()->setValueAndPerform(getControlMax());
        due = press.elapsed() + repeatEvery;
    }
}

void USwitchBase::pressShortly() {
    if (!isValueEnabled())
        return;
    const auto keptAlive = retain(this);
    const SwitchBehaviour behaviour = pressBehaviour();
    if (standsFor(behaviour, {SwitchBehaviour::notify, SwitchBehaviour::postMessage})) {
        tellTarget(behaviour);
        return;
    }
    if (standsFor(behaviour, {SwitchBehaviour::onOff, SwitchBehaviour::on, SwitchBehaviour::off})) {
        perform(Release::done);
        return;
    }
    if (hasSteps()) {
        step(behaviour);
        return;
    }
    bound()->setValueAndPerform(getControlMax());
    if (!hasStyle(ControlStyle::fireCommand))
        returnToMinimum(behaviour);
}

int32_t USwitchBase::handleMessage(FMessage* message) {
    if (!message->isNamed("FocusHit"))
        return UControl::handleMessage(message);
    pressShortly();
    return handled;
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
