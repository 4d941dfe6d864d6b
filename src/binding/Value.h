#pragma once

#include "binding/BoundValueFace.h"
#include "foundation/ClassMacros.h"
#include "foundation/CmObject.h"
#include "foundation/text/String.h"

#include <qorl/IBoundValue.h>

namespace qorl::Binding {

/// What a value tells its dependents by `notify`.
enum ValueChange : int32_t {
    valueChanged = 1,
    valueDestroyed = 2,
    editStateChanged = 4,
    flagUser25Changed = 5,
};

/// How a value is operated, the low four bits of its state word.
enum class ValueKind : uint32_t { twoStates = 1, number = 2, list = 3, reversedNumber = 4 };

/// The object between a piece of application state and everything that shows or edits it; by itself a
/// boolean.
///
/// The application attaches one target, which hears of user edits through `performUpdate`; views depend on
/// the value and hear of changes through `changed`, queued unless `setImmediateUpdates`. A gesture is
/// bracketed by `beginEdit` and `endEdit`; brackets do not nest. Threading: the user-interface thread only.
class Value : public CmObject, public BoundValueFace, public FormatHostFace {
    QORL_CLASS_NAMED(Value, CmObject, "Binding::Value")
    QORL_CLONE(Value)
    QORL_RECORD(Value)

public:
    enum StateBit : uint32_t {
        kindMask = 0x0000000F,
        signalsHeld = 0x00000010,
        ownsTarget = 0x00000020,
        booleanState = 0x00000100,
        enabled = 0x00000200,
        editing = 0x00000400,
        notifyOff = 0x00000800,
        immediateUpdates = 0x00001000,
        performOnEdit = 0x00002000,
        plainProperty2 = 0x00004000,
        wheelStepped = 0x00008000,
        targetTakesEdits = 0x00010000,
        plainProperty4 = 0x00020000,
        flagUser18 = 0x00040000,
        performOnEndEdit = 0x00080000,
        plainProperty8 = 0x00100000,
        silentForListener = 0x00200000,
        wrapAround = 0x00400000,
        minorEdit = 0x00800000,
        flagUser24 = 0x01000000,
        flagUser25 = 0x02000000,
    };

    Value();
    /// Copies state, tag, target and formatter; not the dependents.
    Value(const Value& other);
    Value& operator=(const Value&) = delete;
    ~Value() override;

    Result queryInterface(const InterfaceId& id, void** out) override;
    uint32_t addRef() override { return CmObject::addRef(); }
    uint32_t release() override { return CmObject::release(); }

    void addDependent(FDependent* dependent) override;
    void changed(int32_t message = valueChanged) override;
    /// In a stream: the number, 32 bits. Reading sets it and performs nothing.
    bool readFrom(FObjectArchive* archive) override;
    bool writeTo(FObjectArchive* archive) override;
    bool storeAttributes(FAttributes* attributes) override;
    bool restoreAttributes(FAttributes* attributes) override;

    /// `object` hears of edits; a reference is kept only if `owned`.
    virtual void setTarget(CmObject* object, int32_t tag, bool owned);
    virtual void setTag(int32_t tag);
    /// Stores a number inside the range and signals the change. The target is not told.
    virtual void setValue(int32_t value);
    int32_t getValue() override;
    int32_t getMin() override;
    void setMin(int32_t min) override;
    int32_t getMax() override;
    void setMax(int32_t max) override;
    /// `value` bounded by the range: clamped, or with `wrapAround` counted on from the other end, so that a
    /// step past an end arrives there. A whole number of rounds past an end comes to lie inside of the range
    /// too.
    virtual int32_t limitValue(int32_t value);
    /// Sets the nearest number to that place in the range, 0 to 1.
    virtual void setNormalized(float normalized);
    void enableNotify(bool enable) override;
    virtual void setImmediateUpdates(bool immediate);
    virtual void decrement();
    virtual void increment();
    virtual void assign(Value* other);
    virtual void toggle();
    virtual bool getDefault(int32_t& value);
    virtual void setDefault(int32_t value);
    /// Tells the activity listener and the target that the user changed the value.
    virtual void performUpdate();
    virtual void beginEdit();
    /// `major` false marks a step inside a longer gesture for the length of the final update.
    virtual void endEdit(bool major);
    virtual bool isPerformOnEdit();
    virtual void setPerformOnEdit(bool on);
    virtual bool isFlagUser25();
    virtual void setFlagUser25(bool on);
    virtual bool isWheelStepped();
    virtual void setWheelStepped(bool on);
    virtual bool isFlagUser18();
    virtual void setFlagUser18(bool on);
    virtual bool isFlagUser24();
    virtual void setFlagUser24(bool on);
    bool isEditing() override;
    virtual void setEditing(bool on);
    virtual bool isWrapAround();
    virtual void setWrapAround(bool on);
    /// Text for a number other than the current one. The value really is that number for the length of the
    /// call.
    virtual void formatValueFloat(double value, String& text);
    virtual void formatValue(int32_t value, String& text);
    virtual void toString(String& text);
    /// `toString`, cut at `length` characters.
    virtual void toStringTruncated(String& text, int32_t length);
    virtual void setKind(ValueKind kind);
    virtual ValueKind getKind();
    virtual float getFloat();

    uint32_t flags() const { return flags_; }
    bool has(StateBit bit) const { return (flags_ & bit) != 0; }
    int32_t tag() const { return tag_; }
    CmObject* target() const { return target_; }
    /// Sets or clears a plain bit; nobody is told.
    void setFlag(StateBit bit, bool on) { flags_ = on ? flags_ | bit : flags_ & ~uint32_t{bit}; }

    /// The handle for other modules and controls; no reference is handed over.
    IBoundValue* bound() { return static_cast<BoundValueFace*>(this); }

protected:
    explicit Value(uint32_t flags) : flags_(flags) {}

    /// The formatter's text, if there is a formatter and it succeeds.
    bool formatByFormatter(String& text);
    bool parseByFormatter(const char16_t* text);
    bool targetIsPlug() const;

private:
    friend class BoundValueFace;

    class TargetAside;

    /// The face by which dependents know the value; the other faces lead to `FInterface` too.
    FInterface* object() { return static_cast<FDependent*>(this); }

    void sendToTarget(const char* message);
    void releaseTarget();
    void performFinalUpdate(bool major);

    uint32_t flags_ = twoStatesAtBirth;
    int32_t tag_ = 0;
    CmObject* target_ = nullptr;

    static constexpr uint32_t twoStatesAtBirth = uint32_t(ValueKind::twoStates) | enabled;
};

} // namespace qorl::Binding
