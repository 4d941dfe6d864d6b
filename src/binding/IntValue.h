#pragma once

#include "binding/Value.h"

namespace qorl::Binding {

/// A whole number in a range. Text input is a small calculator: `12` sets, `12+` adds, `12-` subtracts, `2*`,
/// `2/`.
class IntValue : public Value {
    QORL_CLASS_NAMED(IntValue, Value, "Binding::IntValue")
    QORL_CLONE(IntValue)
    QORL_RECORD(IntValue)

public:
    /// Starts at `min`.
    explicit IntValue(int32_t min = 0, int32_t max = 1);

    void setValue(int32_t value) override;
    int32_t getValue() override { return value_; }
    int32_t getMin() override { return min_; }
    /// Raises the maximum with it if need be; the value is lifted into the range.
    void setMin(int32_t min) override;
    int32_t getMax() override { return max_; }
    /// The minimum stays as it is; the value is lowered into the range.
    void setMax(int32_t max) override;
    void decrement() override;
    void increment() override;
    void setWrapAround(bool on) override;
    void toString(String& text) override;
    float getFloat() override { return static_cast<float>(value_); }

    void setValueText(const char16_t* text) override;

protected:
    IntValue(int32_t min, int32_t max, ValueKind kind);

    int32_t value_;
    int32_t min_;
    int32_t max_;
};

/// An `IntValue` that knows its default.
class IntDefValue : public IntValue {
    QORL_CLASS_NAMED(IntDefValue, IntValue, "Binding::IntDefValue")
    QORL_CLONE(IntDefValue)
    QORL_RECORD(IntDefValue)

public:
    IntDefValue() : IntDefValue(0, 1, 0) {}
    /// Starts at `min`, as its base does.
    IntDefValue(int32_t min, int32_t max, int32_t defaultValue)
        : IntValue(min, max), defaultValue_(defaultValue) {}

    bool getDefault(int32_t& value) override;
    void setDefault(int32_t value) override { defaultValue_ = value; }

protected:
    int32_t defaultValue_;
};

} // namespace qorl::Binding
