#include "binding/BoundValueFace.h"

#include "binding/UPlugTarget.h"
#include "binding/Value.h"
#include "foundation/text/TranslationTable.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <string>
#include <utility>

namespace qorl::Binding {

namespace {

/// Copies at most `capacity` - 1 characters and terminates.
void copyText(const std::u16string& text, char16_t* buffer, int32_t capacity) {
    const size_t count = std::min(text.size(), static_cast<size_t>(capacity) - 1);
    std::copy_n(text.data(), count, buffer);
    buffer[count] = 0;
}

/// Empty when there is no memory for it.
std::u16string wideTextOf(Value& value) try {
    String text;
    value.toString(text);
    return text.toUtf16();
} catch (const std::bad_alloc&) {
    return {};
}

} // namespace

/// Takes the target away from a value for the length of a scope. One that is set meanwhile stays.
class Value::TargetAside {
public:
    explicit TargetAside(Value& value)
        : value_(value), target_(std::exchange(value.target_, nullptr)), isOwned_(value.has(ownsTarget)) {
        value_.setFlag(ownsTarget, false);
    }
    TargetAside(const TargetAside&) = delete;
    TargetAside& operator=(const TargetAside&) = delete;
    ~TargetAside() {
        if (!value_.target_) {
            value_.target_ = target_;
            value_.setFlag(ownsTarget, isOwned_);
        } else if (isOwned_) {
            target_->release();
        }
    }

private:
    Value& value_;
    CmObject* target_;
    bool isOwned_;
};

int32_t truncateToInt(double value) {
    constexpr double low = std::numeric_limits<int32_t>::min();
    constexpr double high = std::numeric_limits<int32_t>::max();
    if (std::isnan(value))
        return 0;
    return static_cast<int32_t>(std::clamp(value, low, high));
}

Value& BoundValueFace::self() {
    return static_cast<Value&>(*this);
}

void BoundValueFace::getValueText(char16_t* buffer) {
    copyText(wideTextOf(self()), buffer, valueTextCapacity);
}

void BoundValueFace::getValueTextSized(char16_t* buffer, int32_t& size) {
    const std::u16string text = wideTextOf(self());
    if (!buffer)
        size = static_cast<int32_t>(text.size()) + 1;
    else if (size > 0)
        copyText(text, buffer, size);
}

void BoundValueFace::setValueText(const char16_t* text) try {
    if (self().parseByFormatter(text))
        return;
    setValueAndPerform(ConstString(text) == translate("On") ? 1 : 0);
} catch (const std::bad_alloc&) {
    // The value stays as it is.
}

void BoundValueFace::setValueTextQuiet(const char16_t* text, bool notifyTarget) {
    if (!text)
        return;
    if (notifyTarget) {
        setValueText(text);
        return;
    }
    const auto keptAlive = retain(&self());
    const Value::TargetAside aside(self());
    setValueText(text);
}

void BoundValueFace::setValueAndPerform(int32_t value) {
    const auto keptAlive = retain(&self());
    self().setValue(value);
    self().performUpdate();
}

void BoundValueFace::setValueMaybePerform(int32_t value, bool perform) {
    const auto keptAlive = retain(&self());
    self().setValue(value);
    if (perform)
        self().performUpdate();
}

void BoundValueFace::setTargetInterface(FInterface* target, int32_t tag) try {
    if (!target) {
        self().setTarget(nullptr, tag, false);
        return;
    }
    const auto wrapper = make<UPlugTarget>(static_cast<IValueTarget*>(target));
    Ref<IValueEditTarget> editTarget;
    if (target->queryInterface(IValueEditTarget::iid, editTarget.out()) == Result::ok)
        self().setFlag(Value::targetTakesEdits, true);
    self().setTarget(wrapper.get(), tag, true);
} catch (const std::bad_alloc&) {
    // The target of before stays.
}

void FormatHostFace::setFormatter(IValueFormatter* formatter) {
    formatter_ = retain(formatter);
    static_cast<Value*>(this)->changed(valueChanged);
}

int32_t BoundValueFace::getTag() {
    return self().tag();
}

void BoundValueFace::setEnabled(bool enabled) {
    if (isEnabled() == enabled)
        return;
    self().setFlag(Value::enabled, enabled);
    self().changed(valueChanged);
}

bool BoundValueFace::isEnabled() {
    return self().has(Value::enabled);
}

void BoundValueFace::setEditBracket(bool begin) try {
    if (begin)
        self().beginEdit();
    else
        self().endEdit(true);
} catch (const std::bad_alloc&) {
    // The bracket stands, and the target may not have heard of it.
}

float BoundValueFace::getValueFloat() {
    return self().getFloat();
}
void BoundValueFace::setValueFloat(float value) {
    self().setValue(truncateToInt(value));
}
float BoundValueFace::getMinFloat() {
    return static_cast<float>(getMin());
}
float BoundValueFace::getMaxFloat() {
    return static_cast<float>(getMax());
}
void BoundValueFace::setMinFloat(float min) {
    setMin(truncateToInt(min));
}
void BoundValueFace::setMaxFloat(float max) {
    setMax(truncateToInt(max));
}

float BoundValueFace::getNormalized() {
    const float min = getMinFloat();
    const float range = getMaxFloat() - min;
    return range == 0.0F ? 0.0F : (getValueFloat() - min) / range;
}

void BoundValueFace::setNormalizedMaybePerform(float normalized, bool perform) {
    const auto keptAlive = retain(&self());
    self().setNormalized(normalized);
    if (perform)
        self().performUpdate();
}

CmObject* BoundValueFace::getTarget() {
    return self().target();
}

bool BoundValueFace::resetToDefault() {
    int32_t value = 0;
    if (!self().getDefault(value))
        return false;
    const auto keptAlive = retain(&self());
    const bool bracket = self().isPerformOnEdit();
    if (bracket)
        self().beginEdit();
    setValueAndPerform(value);
    if (bracket)
        self().endEdit(true);
    return true;
}

void BoundValueFace::setDefaultFloat(float value) {
    self().setDefault(truncateToInt(std::round(value)));
}

bool BoundValueFace::getDefaultFloat(float& value) {
    int32_t number = 0;
    if (!self().getDefault(number))
        return false;
    value = static_cast<float>(number);
    return true;
}

int32_t BoundValueFace::getProperty(int32_t id) {
    switch (id) {
    case performOnEditProperty: return self().isPerformOnEdit();
    case property2: return self().has(Value::plainProperty2);
    case property4: return self().has(Value::plainProperty4);
    case property8: return self().has(Value::plainProperty8);
    case wrapAroundProperty: return self().isWrapAround();
    case flagUser25Property: return self().isFlagUser25();
    default: return 0;
    }
}

void BoundValueFace::setProperty(int32_t id, bool on) {
    switch (id) {
    case performOnEditProperty: self().setPerformOnEdit(on); break;
    case property2: self().setFlag(Value::plainProperty2, on); break;
    case wrapAroundProperty: self().setWrapAround(on); break;
    default: break;
    }
}

} // namespace qorl::Binding
