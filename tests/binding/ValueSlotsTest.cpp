#include "binding/StringValue.h"
#include "support/Slots.h"

#include <qorl/IPlugMessageTarget.h>

namespace qorl::Binding {
namespace {

TEST(ValueSlots, GoOnBehindThoseOfObjects) {
    testing::expectSlotsFrom(
        25, &Value::setTarget, &Value::setTag, &Value::setValue, &Value::getValue, &Value::getMin,
        &Value::setMin, &Value::getMax, &Value::setMax, &Value::limitValue, &Value::setNormalized,
        &Value::enableNotify, &Value::setImmediateUpdates, &Value::decrement, &Value::increment,
        &Value::assign, &Value::toggle, &Value::getDefault, &Value::setDefault, &Value::performUpdate,
        &Value::beginEdit, &Value::endEdit, &Value::isPerformOnEdit, &Value::setPerformOnEdit,
        &Value::isFlagUser25, &Value::setFlagUser25, &Value::isWheelStepped, &Value::setWheelStepped,
        &Value::isFlagUser18, &Value::setFlagUser18, &Value::isFlagUser24, &Value::setFlagUser24,
        &Value::isEditing, &Value::setEditing, &Value::isWrapAround, &Value::setWrapAround,
        &Value::formatValueFloat, &Value::formatValue, &Value::toString, &Value::toStringTruncated,
        &Value::setKind, &Value::getKind, &Value::getFloat, &StringValue::getText);
}

TEST(ValueSlots, OfInterfacesFollowTheRoot) {
    testing::expectBehindTheRoot(
        &IBoundValue::getValueText, &IBoundValue::setValueText, &IBoundValue::getValue,
        &IBoundValue::setValueAndPerform, &IBoundValue::getMin, &IBoundValue::getMax,
        &IBoundValue::setTargetInterface, &IBoundValue::getExtra, &IBoundValue::getTag,
        &IBoundValue::enableNotify, &IBoundValue::setEnabled, &IBoundValue::isEnabled,
        &IBoundValue::setEditBracket, &IBoundValue::isEditing, &IBoundValue::getValueTextSized,
        &IBoundValue::setValueTextQuiet, &IBoundValue::setValueMaybePerform, &IBoundValue::setMin,
        &IBoundValue::setMax, &IBoundValue::getValueFloat, &IBoundValue::setValueFloat,
        &IBoundValue::getMinFloat, &IBoundValue::getMaxFloat, &IBoundValue::setMinFloat,
        &IBoundValue::setMaxFloat, &IBoundValue::getNormalized, &IBoundValue::setNormalizedMaybePerform,
        &IBoundValue::getTarget, &IBoundValue::resetToDefault, &IBoundValue::setDefaultFloat,
        &IBoundValue::getDefaultFloat, &IBoundValue::getProperty, &IBoundValue::setProperty);
    testing::expectBehindTheRoot(&IValueFormatHost::setFormatter, &IValueFormatHost::getFormatter);
    testing::expectBehindTheRoot(&IValueFormatter::toText, &IValueFormatter::fromText);
    testing::expectBehindTheRoot(&IValueTarget::reserved, &IValueTarget::valueEdited);
    testing::expectBehindTheRoot(&IValueEditTarget::beginEdit, &IValueEditTarget::endEdit);
    testing::expectBehindTheRoot(&IPlugMessageTarget::receiveMessage);
}

} // namespace
} // namespace qorl::Binding
