#pragma once

#include <qorl/FInterface.h>

#include <cstdint>

namespace qorl {

class CmObject;

namespace Binding {

/// A bound value as other modules and controls see it: a number in a range, its text, its edit bracket.
///
/// All numbers of integer values are whole; the float forms truncate toward zero on the way in. Text is
/// zero-terminated UTF-16. Threading: the user-interface thread only. No operation fails; a number outside
/// the range is limited, a text that means nothing counts as 0. The order of the operations is the contract
/// between modules.
class IBoundValue : public FInterface {
public:
    /// Three ids that lead to this one interface: modules of different age ask by different ones.
    static constexpr InterfaceId iid = InterfaceId::fromText("{A009BE6E-DD75-4DCA-B927-D8C84A9E5AB5}");
    static constexpr InterfaceId secondIid = InterfaceId::fromText("{2E61B9C2-AB2F-47C9-9CFB-458BDB6E4E1F}");
    static constexpr InterfaceId thirdIid = InterfaceId::fromText("{F9EAE1EF-6373-4416-8560-41B38BF8BB15}");

    /// Capacity in characters, terminator included, of the buffer that `getValueText` fills.
    static constexpr int32_t valueTextCapacity = 128;

    enum Property : int32_t {
        performOnEditProperty = 1,
        property2 = 2,
        property4 = 4,
        property8 = 8,
        wrapAroundProperty = 16,
        flagUser25Property = 32,
    };

    /// Copies at most 127 characters of the value's text into `buffer`, always terminated.
    virtual void getValueText(char16_t* buffer) = 0;
    /// Sets the value from a text as a user would type it, and performs the update.
    virtual void setValueText(const char16_t* text) = 0;
    virtual int32_t getValue() = 0;
    virtual void setValueAndPerform(int32_t value) = 0;
    virtual int32_t getMin() = 0;
    virtual int32_t getMax() = 0;
    /// Makes a component of another module the target; null takes it away. Not counted: the component clears
    /// itself.
    virtual void setTargetInterface(FInterface* target, int32_t tag) = 0;
    virtual int32_t getExtra() = 0;
    virtual int32_t getTag() = 0;
    virtual void enableNotify(bool enable) = 0;
    virtual void setEnabled(bool enabled) = 0;
    virtual bool isEnabled() = 0;
    /// True opens an edit gesture, false ends it.
    virtual void setEditBracket(bool begin) = 0;
    virtual bool isEditing() = 0;
    /// With a null `buffer`, `size` receives the text's length + 1. Else at most `size` - 1 characters are
    /// copied.
    virtual void getValueTextSized(char16_t* buffer, int32_t& size) = 0;
    /// As `setValueText`; without `notifyTarget` the target hears nothing. A null text is ignored.
    virtual void setValueTextQuiet(const char16_t* text, bool notifyTarget) = 0;
    virtual void setValueMaybePerform(int32_t value, bool perform) = 0;
    virtual void setMin(int32_t min) = 0;
    virtual void setMax(int32_t max) = 0;
    virtual float getValueFloat() = 0;
    virtual void setValueFloat(float value) = 0;
    virtual float getMinFloat() = 0;
    virtual float getMaxFloat() = 0;
    virtual void setMinFloat(float min) = 0;
    virtual void setMaxFloat(float max) = 0;
    /// The place in the range, 0 to 1; 0 for an empty range.
    virtual float getNormalized() = 0;
    virtual void setNormalizedMaybePerform(float normalized, bool perform) = 0;
    /// The target object; no reference is handed over.
    virtual CmObject* getTarget() = 0;
    /// False if the value has no default.
    virtual bool resetToDefault() = 0;
    virtual void setDefaultFloat(float value) = 0;
    virtual bool getDefaultFloat(float& value) = 0;
    /// One of `Property`; any other id answers 0.
    virtual int32_t getProperty(int32_t id) = 0;
    /// Only `performOnEditProperty`, `property2` and `wrapAroundProperty` can be set.
    virtual void setProperty(int32_t id, bool on) = 0;
};

/// Turns a value into text and back, in place of the value's own rule.
///
/// `text` is a string object that answers the wide string exchange interface. Both give `Result::ok` on
/// success; any other result makes the value fall back to its own rule.
class IValueFormatter : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{6E0D3A51-0B7A-4C0F-9A3C-41E27D5F1B94}");

    virtual Result toText(IBoundValue* value, FInterface* text) = 0;
    virtual Result fromText(IBoundValue* value, const char16_t* text) = 0;
};

/// The side of a value that takes a formatter. The value keeps a reference on it.
class IValueFormatHost : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{12DEC1ED-2E63-4D77-976D-D55B472A38FF}");

    virtual void setFormatter(IValueFormatter* formatter) = 0;
    virtual IValueFormatter* getFormatter() = 0;
};

/// What a component of another module implements to hear of the edits of a value.
class IValueTarget : public FInterface {
public:
    /// Kept for the order of the table; values don't call it.
    virtual void reserved() = 0;
    /// The user changed `value`, which carries the component's `tag`.
    virtual void valueEdited(IBoundValue* value, int32_t tag) = 0;
};

/// What such a component implements beside it to hear of the edit brackets.
class IValueEditTarget : public FInterface {
public:
    static constexpr InterfaceId iid = InterfaceId::fromText("{FD4E5827-C898-4306-B49D-F0B78A80AF22}");

    virtual void beginEdit(IBoundValue* value) = 0;
    virtual void endEdit(IBoundValue* value) = 0;
};

} // namespace Binding
} // namespace qorl
