#include "binding/IntValue.h"

#include "binding/NumberText.h"
#include "foundation/ClassRecord.h"

#include <new>

namespace qorl::Binding {

QORL_REGISTER(IntValue, "UIntValue", Value, 0)
QORL_REGISTER(IntDefValue, "UIntDefValue", IntValue, 0)

IntValue::IntValue(int32_t min, int32_t max) : IntValue(min, max, ValueKind::number) {}

IntValue::IntValue(int32_t min, int32_t max, ValueKind kind)
    : Value(uint32_t(kind) | enabled), value_(min), min_(min), max_(max) {}

void IntValue::setValue(int32_t value) {
    value = limitValue(value);
    if (value == value_)
        return;
    value_ = value;
    changed(valueChanged);
}

void IntValue::setMin(int32_t min) {
    if (min == min_)
        return;
    min_ = min;
    if (max_ < min)
        max_ = min;
    if (value_ >= min)
        changed(valueChanged);
    else
        setValue(value_);
}

void IntValue::setMax(int32_t max) {
    if (max == max_)
        return;
    max_ = max;
    if (value_ <= max)
        changed(valueChanged);
    else
        setValue(value_);
}

void IntValue::decrement() {
    setValueAndPerform(truncateToInt(double(getValue()) - 1));
}

void IntValue::increment() {
    setValueAndPerform(truncateToInt(double(getValue()) + 1));
}

void IntValue::setWrapAround(bool on) {
    setFlag(wrapAround, on);
}

void IntValue::toString(String& text) {
    if (!formatByFormatter(text))
        text.printInt64(getValue());
}

void IntValue::setValueText(const char16_t* text) try {
    if (!parseByFormatter(text))
        setValueAndPerform(truncateToInt(calculateFromText(text, getValue())));
} catch (const std::bad_alloc&) {
    // The value stays as it is.
}

bool IntDefValue::getDefault(int32_t& value) {
    value = defaultValue_;
    return true;
}

} // namespace qorl::Binding
