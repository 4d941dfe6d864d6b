#include "views/controls/UControl.h"

#include "binding/IClickTarget.h"
#include "binding/IntValue.h"
#include "foundation/Cast.h"
#include "foundation/messages/FMessage.h"
#include "foundation/text/CmString.h"
#include "persistence/attributes/FAttributes.h"
#include "platform/DesktopServices.h"
#include "platform/Platform.h"
#include "schemes/UScheme.h"
#include "views/GeometryAttributes.h"
#include "views/ViewDevice.h"
#include "windows/UWindow.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace qorl {

namespace {

constexpr std::string_view categoryKey = "commandCategory";
constexpr std::string_view nameKey = "commandName";
constexpr std::string_view defaultControlKey = "StdDefControl";

/// From this range on the wheel moves a value by a share of the range instead of by steps.
constexpr int64_t wideRange = 150;
constexpr float wheelShare = 0.01F;
constexpr float fineWheelShare = 0.002F;

Ref<Binding::Value> freshValue() {
    return make<Binding::IntValue>(0, 100);
}

/// The number that a float stands for: the whole one, where the value has that.
double exact(int32_t whole, float number) {
    return static_cast<float>(whole) == number ? double(whole) : double(number);
}

bool isShiftHeld() {
    auto* desktop = platform::desktop();
    return desktop && (desktop->eventModifiers() & platform::shift);
}

} // namespace

UControl::UControl() : value_(freshValue()) {}

UControl::UControl(const CmRect& frame, const ConstString& title, Binding::Value* value, uint32_t style)
    : UView(frame, title), value_(value ? retain(value) : freshValue()), style_(style) {
    value_->addDependent(this);
    if (!isValueEnabled())
        setFlag(viewDisabled, true);
}

UControl::~UControl() {
    value_->removeDependent(this);
    if (secondValue_)
        secondValue_->removeDependent(this);
}

void UControl::follow(Binding::Value* value) {
    // One object in both places is followed once.
    if (value_ != secondValue_)
        value_->removeDependent(this);
    value_ = value ? retain(value) : freshValue();
    if (value_ != secondValue_)
        value_->addDependent(this);
}

void UControl::setValue(Binding::Value* value) {
    const Ref<UView> keep = retain(this);
    const Ref<Binding::Value> old = value_;
    follow(value);
    refresh();
    onValueAttached();
    if (isAttached())
        value_->changed();
}

void UControl::loseValue() {
    if (secondValue_ == value_)
        secondValue_.reset();
    follow(nullptr);
    refresh();
    update();
}

void UControl::update() {
    invalidateAll();
}

Binding::Value* UControl::getValueObject() const {
    return value_.get();
}

void UControl::setStyle(uint32_t style) {
    style_ = style;
}

void UControl::setControlValue(int32_t value) {
    value_->setValue(value);
}

int32_t UControl::getControlValue() const {
    return value_->getValue();
}

int32_t UControl::getControlMin() const {
    return value_->getMin();
}

void UControl::setControlMin(int32_t min) {
    value_->setMin(min);
}

int32_t UControl::getControlMax() const {
    return value_->getMax();
}

void UControl::setControlMax(int32_t max) {
    value_->setMax(max);
}

int32_t UControl::limitControlValue(int32_t value) const {
    return value_->limitValue(value);
}

float UControl::getNormalized() const {
    return bound()->getNormalized();
}

void UControl::setNormalizedValue(float normalized, bool perform) {
    bound()->setNormalizedMaybePerform(normalized, perform);
}

uint32_t UControl::getStyle() const {
    return style_;
}

void UControl::addStyle(uint32_t bits) {
    if ((style_ | bits) != style_)
        setStyle(style_ | bits);
}

void UControl::setTarget(CmObject* target, int32_t tag) {
    value_->setTarget(target, tag, false);
}

void UControl::setTag(int32_t tag) {
    value_->setTag(tag);
}

int32_t UControl::getTag() const {
    return value_->tag();
}

void UControl::setContentColor(uint32_t color) {
    contentColor_ = color;
    update();
}

bool UControl::getContentColor(uint32_t& color) const {
    color = contentColor_;
    return contentColor_ != 0;
}

void UControl::setSecondValue(Binding::Value* value) {
    swapValueReference(secondValue_, value);
}

Binding::Value* UControl::getSecondValue() const {
    return secondValue_.get();
}

void UControl::swapValueReference(Ref<Binding::Value>& slot, Binding::Value* value) {
    // A slot that holds the control's own value never added a dependency of its own.
    if (slot && slot != value_)
        slot->removeDependent(this);
    slot = retain(value);
    if (slot && slot != value_)
        slot->addDependent(this);
}

void UControl::onDefaultChanged() {}

void UControl::onValueAttached() {}

void UControl::refresh() {
    const bool enabled = isValueEnabled();
    if (hasFlag(viewDisabled) == enabled)
        setEnabled(enabled);
    if (enabled)
        return;
    if (UWindow* window = getWindow(); window && window->getFocusView() == this)
        window->setFocusView(nullptr);
}

void UControl::notify(CmObject* changedObject, int32_t message) {
    // Who hears that it is disabled may take it away.
    const Ref<UView> keep = retain(this);
    if (changedObject == value_.get()) {
        if (message == Binding::valueDestroyed)
            loseValue();
        else if (message == Binding::valueChanged) {
            refresh();
            update();
        }
    } else if (changedObject && changedObject == secondValue_.get()) {
        if (message == Binding::valueDestroyed)
            setSecondValue(nullptr);
        else if (message == Binding::valueChanged)
            update();
    }
}

int32_t UControl::handleMessage(FMessage* message) {
    if (message->isNamed("Wheel")) {
        const bool horizontal = message->getInt("Axis") == 2;
        return !horizontal && stepByWheel(message->getFloat("Distance"), message->getInt("Inverted") != 0);
    }
    if (message->isNamed("FocusHit")) {
        const auto keptAlive = retain(value_.get());
        if (isValueEnabled())
            bound()->setValueAndPerform(getControlValue() != getControlMin() ? getControlMin()
                                                                             : getControlMax());
        return handled;
    }
    return notHandled;
}

bool UControl::stepByWheel(double distance, bool inverted) {
    if (!isValueEnabled() || value_->getKind() == Binding::ValueKind::twoStates)
        return false;
    // The control may get another one meanwhile.
    const Ref<Binding::Value> value = value_;
    value->beginEdit();
    if (!inverted && value->getKind() == Binding::ValueKind::reversedNumber)
        distance = -distance;
    const int64_t range = int64_t{value->getMax()} - value->getMin();
    if (!value->isWheelStepped() && range >= wideRange) {
        float place = value->bound()->getNormalized() +
                      static_cast<float>(distance) * (isShiftHeld() ? fineWheelShare : wheelShare);
        if (!value->isWrapAround())
            place = std::clamp(place, 0.0F, 1.0F);
        value->setNormalized(place);
        value->performUpdate();
    } else if (distance < 0) {
        value->decrement();
    } else if (distance > 0) {
        value->increment();
    }
    value->endEdit(false);
    return true;
}

void UControl::notifyTargetOfClick() {
    CmObject* target = value_->target();
    Ref<Binding::IClickTarget> listener;
    if (!target || target->queryInterface(Binding::IClickTarget::iid, listener.out()) != Result::ok)
        return;
    auto* desktop = platform::desktop();
    listener->valueClicked(bound(), desktop ? desktop->eventModifiers() : 0);
}

bool UControl::hasTooltip() const {
    if (UView::hasTooltip())
        return true;
    // Asked of each view that the mouse goes over: most have no command to be read.
    const FAttributes* attributes = peekAttributes();
    String category;
    String name;
    return attributes && attributes->contains(nameKey) && getCommand(category, name);
}

bool UControl::getTooltipFromController(String& text, CmPoint point) const {
    UWindow* window = getWindow();
    CmObject* controller = window ? window->getController() : nullptr;
    if (!controller)
        controller = value_->target();
    if (!controller)
        return false;
    const auto result = make<CmString>();
    const auto question = make<FMessage>("GetToolTip");
    question->setObject("control", const_cast<UControl*>(this));
    question->setObject("result", result.get());
    setPoint(question->attributes(), "where", point);
    if (controller->handleMessage(question.get()) != handled)
        return false;
    text = result->string();
    return true;
}

bool UControl::getTooltip(String& text, CmPoint point, CmRect& area) const {
    if (!getTooltipFromController(text, point))
        return UView::getTooltip(text, point, area);
    area = {};
    return !text.isEmpty();
}

void UControl::setValuesEnabled(bool enabled) {
    bound()->setEnabled(enabled);
}

void UControl::focusGained() {
    UView::focusGained();
    update();
}

void UControl::focusLost() {
    UView::focusLost();
    update();
}

void UControl::drawFocus(bool focused) {
    if (!focused)
        return;
    ViewDevice device(*this);
    getScheme()->drawFocusFrame(device, getClientBounds());
}

bool UControl::getAccessibleName(String& name) const {
    CmObject* target = value_->target();
    if (UView::getAccessibleName(name) || !target)
        return !name.isEmpty();
    const auto answer = make<CmString>();
    const auto question = make<FMessage>("Get Value Name");
    question->setObject("Value", value_.get());
    question->setObject("String", answer.get());
    target->handleMessage(question.get());
    name = answer->string();
    return !name.isEmpty();
}

bool UControl::getAccessibleValue(String& value) const {
    value_->toString(value);
    return true;
}

bool UControl::getAccessibleRange(AccessibleRange& range) const {
    range.value = exact(value_->getValue(), bound()->getValueFloat());
    range.minimum = exact(value_->getMin(), bound()->getMinFloat());
    range.maximum = exact(value_->getMax(), bound()->getMaxFloat());
    range.step = 1;
    return true;
}

bool UControl::setAccessibleValue(double value) {
    if (!isValueEnabled())
        return false;
    const auto keptAlive = retain(value_.get());
    keptAlive->beginEdit();
    constexpr double most = std::numeric_limits<int32_t>::max();
    // A whole number goes as one: a float has no place for all of its digits.
    if (value == std::floor(value) && std::abs(value) <= most)
        keptAlive->setValue(static_cast<int32_t>(value));
    else
        keptAlive->bound()->setValueFloat(static_cast<float>(value));
    keptAlive->performUpdate();
    keptAlive->endEdit(true);
    return true;
}

bool UControl::getCommand(String& category, String& name) const {
    const FAttributes* attributes = peekAttributes();
    if (!attributes)
        return false;
    category = attributes->getString(categoryKey);
    name = attributes->getString(nameKey);
    return !category.isEmpty() && !name.isEmpty();
}

void UControl::setCommand(const ConstString& category, const ConstString& name) {
    getAttributes().setString(categoryKey, category);
    getAttributes().setString(nameKey, name);
}

void UControl::setDefaultControl(bool isDefault) {
    if (isDefault)
        getAttributes().setInteger(defaultControlKey, 1);
    else if (FAttributes* attributes = peekAttributes())
        attributes->remove(defaultControlKey);
    onDefaultChanged();
}

bool UControl::isDefaultControl() const {
    const FAttributes* attributes = peekAttributes();
    return attributes && attributes->getInteger(defaultControlKey) != 0;
}

} // namespace qorl
