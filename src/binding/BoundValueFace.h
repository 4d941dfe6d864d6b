#pragma once

#include <qorl/IBoundValue.h>
#include <qorl/Ref.h>

namespace qorl::Binding {

class Value;

/// The `IBoundValue` face that every value carries, told in terms of the value's own operations.
///
/// It stands as a base of its own so that the value's table of operations holds the published ones alone.
/// Value classes with another rule (fractions, text) override single operations here.
class BoundValueFace : public IBoundValue {
public:
    void getValueText(char16_t* buffer) override;
    void setValueText(const char16_t* text) override;
    void setValueAndPerform(int32_t value) override;
    void setTargetInterface(FInterface* target, int32_t tag) override;
    int32_t getExtra() override { return 0; }
    int32_t getTag() override;
    void setEnabled(bool enabled) override;
    bool isEnabled() override;
    void setEditBracket(bool begin) override;
    void getValueTextSized(char16_t* buffer, int32_t& size) override;
    void setValueTextQuiet(const char16_t* text, bool notifyTarget) override;
    void setValueMaybePerform(int32_t value, bool perform) override;
    float getValueFloat() override;
    void setValueFloat(float value) override;
    float getMinFloat() override;
    float getMaxFloat() override;
    void setMinFloat(float min) override;
    void setMaxFloat(float max) override;
    float getNormalized() override;
    void setNormalizedMaybePerform(float normalized, bool perform) override;
    CmObject* getTarget() override;
    bool resetToDefault() override;
    void setDefaultFloat(float value) override;
    bool getDefaultFloat(float& value) override;
    int32_t getProperty(int32_t id) override;
    void setProperty(int32_t id, bool on) override;

private:
    Value& self();
};

/// The `IValueFormatHost` face of a value, apart for the same reason.
class FormatHostFace : public IValueFormatHost {
public:
    void setFormatter(IValueFormatter* formatter) override;
    IValueFormatter* getFormatter() override { return formatter_.get(); }

protected:
    Ref<IValueFormatter> formatter_;
};

/// A float as the whole number that integer values take for it: truncated toward zero, bounded to 32 bits.
int32_t truncateToInt(double value);

} // namespace qorl::Binding
