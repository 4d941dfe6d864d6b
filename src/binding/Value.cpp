#include "binding/Value.h"

#include "binding/IntValue.h"
#include "binding/UPlugTarget.h"
#include "binding/ValueActivity.h"
#include "foundation/Cast.h"
#include "foundation/ClassRecord.h"
#include "foundation/messages/FMessage.h"
#include "foundation/messages/UpdateHandler.h"
#include "foundation/text/StringObject.h"
#include "foundation/text/TranslationTable.h"
#include "persistence/archive/FObjectArchive.h"
#include "persistence/attributes/FAttributes.h"
#include "persistence/streams/FStream.h"

#include <cmath>
#include <new>
#include <utility>

namespace qorl::Binding {

QORL_REGISTER(Value, "UValue", CmObject, 0)

namespace {

constinit ValueActivityListener* activityListener = nullptr;

FInterface* createBoundValue() {
    auto* value = new (std::nothrow) Value;
    return value ? value->bound() : nullptr;
}

/// Another module has no other way to say how its parameter steps, so its values step by one.
FInterface* createSteppedBoundValue() {
    auto* value = new (std::nothrow) IntDefValue;
    if (!value)
        return nullptr;
    value->setWheelStepped(true);
    return value->bound();
}

/// A stored number, which may be of any size, cut to 32 bits.
int32_t integerIn(const FAttributes& attributes, std::string_view key) {
    return truncateToInt(static_cast<double>(attributes.getInteger(key)));
}

/// While it lives, a value may hold another number and nobody hears of that.
class OtherNumber {
public:
    explicit OtherNumber(Value& value)
        : value_(value), wasQuiet_(value.has(Value::notifyOff)), whole_(value.getValue()),
          number_(value.getValueFloat()) {
        if (!wasQuiet_)
            value_.enableNotify(false);
    }
    OtherNumber(const OtherNumber&) = delete;
    OtherNumber& operator=(const OtherNumber&) = delete;
    ~OtherNumber() {
        value_.setValueFloat(number_);
        // A large whole number does not come back from a float.
        if (value_.getValue() != whole_)
            value_.setValue(whole_);
        if (!wasQuiet_)
            value_.enableNotify(true);
    }

private:
    Value& value_;
    bool wasQuiet_;
    int32_t whole_;
    float number_;
};

ClassRecord boundValueRecord{InterfaceId::fromText("{D2D767F5-A3B7-4B44-8A8A-83FD04C1B489}"),
                             &createBoundValue};
ClassRecord steppedBoundValueRecord{InterfaceId::fromText("{037B1E33-F364-4539-92F2-09B82602C80B}"),
                                    &createSteppedBoundValue};

} // namespace

ValueActivityListener* getValueActivityListener() {
    return activityListener;
}
void setValueActivityListener(ValueActivityListener* listener) {
    activityListener = listener;
}

Value::Value() = default;

Value::Value(const Value& other)
    : CmObject(other), BoundValueFace(other), FormatHostFace(other), flags_(other.flags_), tag_(other.tag_),
      target_(other.target_) {
    if (target_ && has(ownsTarget))
        target_->addRef();
}

Value::~Value() {
    formatter_.reset();
    releaseTarget();
    CmObject::changed(valueDestroyed);
    if (UpdateHandler* handler = UpdateHandler::current())
        handler->cancelUpdates(object());
}

Result Value::queryInterface(const InterfaceId& id, void** out) {
    if (id == IBoundValue::iid || id == IBoundValue::secondIid || id == IBoundValue::thirdIid)
        *out = bound();
    else if (id == IValueFormatHost::iid)
        *out = static_cast<IValueFormatHost*>(this);
    else
        return CmObject::queryInterface(id, out);
    addRef();
    return Result::ok;
}

void Value::addDependent(FDependent* dependent) {
    setFlag(signalsHeld, false);
    CmObject::addDependent(dependent);
}

void Value::changed(int32_t message) {
    if (flags_ & (signalsHeld | notifyOff))
        return;
    if (has(immediateUpdates))
        return CmObject::changed(message);
    UpdateHandler::instance(); // values may be the first to need it
    CmObject::deferUpdate(message);
}

bool Value::readFrom(FObjectArchive* archive) {
    int32_t value = 0;
    if (!archive->stream().readInt32(value))
        return false;
    setValue(value);
    return true;
}

bool Value::writeTo(FObjectArchive* archive) {
    return archive->stream().writeInt32(getValue());
}

bool Value::storeAttributes(FAttributes* attributes) {
    attributes->setInteger("Value", getValue());
    attributes->setInteger("Min", getMin());
    attributes->setInteger("Max", getMax());
    return true;
}

bool Value::restoreAttributes(FAttributes* attributes) {
    if (attributes->contains("Min"))
        setMin(integerIn(*attributes, "Min"));
    if (attributes->contains("Max"))
        setMax(integerIn(*attributes, "Max"));
    if (attributes->contains("Value"))
        setValue(integerIn(*attributes, "Value"));
    return true;
}

void Value::releaseTarget() {
    CmObject* const target = std::exchange(target_, nullptr);
    if (target && has(ownsTarget))
        target->release();
}

void Value::setTarget(CmObject* object, int32_t tag, bool owned) {
    if (object && owned)
        object->addRef();
    releaseTarget();
    target_ = object;
    setFlag(ownsTarget, owned && object);
    tag_ = tag;
}

void Value::setTag(int32_t tag) {
    tag_ = tag;
}

void Value::setValue(int32_t value) {
    const uint32_t before = flags_;
    setFlag(booleanState, value != 0);
    if (flags_ != before)
        changed(valueChanged);
}

int32_t Value::getValue() {
    return has(booleanState) ? 1 : 0;
}
int32_t Value::getMin() {
    return 0;
}
void Value::setMin(int32_t) {}
int32_t Value::getMax() {
    return 1;
}
void Value::setMax(int32_t) {}

int32_t Value::limitValue(int32_t value) {
    const int64_t min = getMin();
    const int64_t max = getMax();
    if (has(wrapAround) && min < max) {
        if (value >= min && value <= max)
            return value;
        // The remainder that divides lies in 1 to max - min, not in 0 to one less: a whole number of rounds
        // must not end outside of the range.
        const int64_t round = max - min;
        if (value > max)
            return static_cast<int32_t>(min + (value - min - 1) % round);
        return static_cast<int32_t>(max - (min - value - 1) % round);
    }
    if (value > max)
        value = static_cast<int32_t>(max);
    return value < min ? static_cast<int32_t>(min) : value;
}

void Value::setNormalized(float normalized) {
    const double min = getMin();
    const double range = getMax() - min;
    setValue(truncateToInt(min + std::round(range * double{normalized})));
}

void Value::enableNotify(bool enable) {
    setFlag(notifyOff, !enable);
}
void Value::setImmediateUpdates(bool immediate) {
    setFlag(immediateUpdates, immediate);
}

void Value::decrement() {
    if (getValue() > getMin())
        setValueAndPerform(getValue() - 1);
}

void Value::increment() {
    if (getValue() < getMax())
        setValueAndPerform(getValue() + 1);
}

void Value::assign(Value* other) {
    if (other)
        setValueAndPerform(other->getValue());
}

void Value::toggle() {
    const auto keptAlive = retain(this);
    const bool bracket = isPerformOnEdit();
    if (bracket)
        beginEdit();
    setValueAndPerform(getValue() ? 0 : 1);
    if (bracket)
        endEdit(true);
}

bool Value::getDefault(int32_t&) {
    return false;
}
void Value::setDefault(int32_t) {}

void Value::performUpdate() {
    const auto keptAlive = retain(this);
    if (activityListener && !has(silentForListener))
        activityListener->valueChanged(bound());
    if (target_)
        target_->update(object(), valueChanged);
}

bool Value::targetIsPlug() const {
    return has(targetTakesEdits) && cast<UPlugTarget>(target_);
}

void Value::sendToTarget(const char* message) {
    const auto edit = make<FMessage>(message);
    edit->setObject("Value", this);
    target_->handleMessage(edit.get());
}

void Value::beginEdit() {
    const auto keptAlive = retain(this);
    setEditing(true);
    if (has(targetTakesEdits) && target_)
        sendToTarget("BeginEdit");
    if (has(performOnEdit) && !targetIsPlug())
        performUpdate();
}

void Value::endEdit(bool major) {
    // The end of the edit may be what its last user waited for.
    const auto keptAlive = retain(this);
    setEditing(false);
    if (has(targetTakesEdits) && target_) {
        sendToTarget("EndEdit");
        if (targetIsPlug())
            return;
    }
    if (flags_ & (performOnEndEdit | performOnEdit))
        performFinalUpdate(major);
}

void Value::performFinalUpdate(bool major) {
    struct MinorEdit {
        Value& value;
        const bool before = value.has(minorEdit);
        ~MinorEdit() { value.setFlag(minorEdit, before); }
    };
    const MinorEdit restored{*this};
    setFlag(minorEdit, !major);
    performUpdate();
}

bool Value::isPerformOnEdit() {
    return has(performOnEdit);
}
void Value::setPerformOnEdit(bool on) {
    setFlag(performOnEdit, on);
}
bool Value::isFlagUser25() {
    return has(flagUser25);
}

void Value::setFlagUser25(bool on) {
    if (has(flagUser25) == on)
        return;
    setFlag(flagUser25, on);
    changed(flagUser25Changed);
}

bool Value::isWheelStepped() {
    return has(wheelStepped);
}
void Value::setWheelStepped(bool on) {
    setFlag(wheelStepped, on);
}
bool Value::isFlagUser18() {
    return has(flagUser18);
}
void Value::setFlagUser18(bool on) {
    setFlag(flagUser18, on);
}
bool Value::isFlagUser24() {
    return has(flagUser24);
}
void Value::setFlagUser24(bool on) {
    setFlag(flagUser24, on);
}
bool Value::isEditing() {
    return has(editing);
}

void Value::setEditing(bool on) {
    if (has(editing) == on)
        return;
    const auto keptAlive = retain(this);
    setFlag(editing, on);
    changed(editStateChanged);
    if (activityListener && !has(silentForListener))
        activityListener->editStateChanged(bound());
}

bool Value::isWrapAround() {
    return has(wrapAround);
}
void Value::setWrapAround(bool) {}

void Value::formatValueFloat(double value, String& text) {
    const OtherNumber kept(*this);
    setValueFloat(static_cast<float>(value));
    toString(text);
}

void Value::formatValue(int32_t value, String& text) {
    const OtherNumber kept(*this);
    setValue(value);
    toString(text);
}

bool Value::formatByFormatter(String& text) {
    if (!formatter_)
        return false;
    const auto result = make<StringObject>();
    if (formatter_->toText(bound(), static_cast<FObject*>(result.get())) != Result::ok)
        return false;
    text = result->string();
    return true;
}

bool Value::parseByFormatter(const char16_t* text) {
    return formatter_ && formatter_->fromText(bound(), text) == Result::ok;
}

void Value::toString(String& text) {
    if (!formatByFormatter(text))
        text = translate(has(booleanState) ? "On" : "Off");
}

void Value::toStringTruncated(String& text, int32_t length) {
    toString(text);
    // Bytes are no characters.
    text.toWide();
    text.remove(length, -1);
}

void Value::setKind(ValueKind kind) {
    flags_ = (flags_ & ~uint32_t{kindMask}) | (uint32_t(kind) & kindMask);
}
ValueKind Value::getKind() {
    return ValueKind(flags_ & kindMask);
}
float Value::getFloat() {
    return static_cast<float>(getValue());
}

} // namespace qorl::Binding
