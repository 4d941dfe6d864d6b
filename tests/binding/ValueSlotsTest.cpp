#include "binding/StringValue.h"
#include "support/Slots.h"

#include <qorl/IPlugMessageTarget.h>

namespace qorl::Binding {
namespace {

TEST(ValueSlots, GoOnBehindThoseOfObjects) {
    testing::expectConsecutive(
        {SLOT(Value, setTarget),       SLOT(Value, setTag),           SLOT(Value, setValue),
         SLOT(Value, getValue),        SLOT(Value, getMin),           SLOT(Value, setMin),
         SLOT(Value, getMax),          SLOT(Value, setMax),           SLOT(Value, limitValue),
         SLOT(Value, setNormalized),   SLOT(Value, enableNotify),     SLOT(Value, setImmediateUpdates),
         SLOT(Value, decrement),       SLOT(Value, increment),        SLOT(Value, assign),
         SLOT(Value, toggle),          SLOT(Value, getDefault),       SLOT(Value, setDefault),
         SLOT(Value, performUpdate),   SLOT(Value, beginEdit),        SLOT(Value, endEdit),
         SLOT(Value, isPerformOnEdit), SLOT(Value, setPerformOnEdit), SLOT(Value, isFlagUser25),
         SLOT(Value, setFlagUser25),   SLOT(Value, isWheelStepped),   SLOT(Value, setWheelStepped),
         SLOT(Value, isFlagUser18),    SLOT(Value, setFlagUser18),    SLOT(Value, isFlagUser24),
         SLOT(Value, setFlagUser24),   SLOT(Value, isEditing),        SLOT(Value, setEditing),
         SLOT(Value, isWrapAround),    SLOT(Value, setWrapAround),    SLOT(Value, formatValueFloat),
         SLOT(Value, formatValue),     SLOT(Value, toString),         SLOT(Value, toStringTruncated),
         SLOT(Value, setKind),         SLOT(Value, getKind),          SLOT(Value, getFloat),
         SLOT(StringValue, getText)},
        25);
}

TEST(ValueSlots, OfInterfacesFollowTheRoot) {
    testing::expectEntries({ENTRY(IBoundValue, getValueText),
                            ENTRY(IBoundValue, setValueText),
                            ENTRY(IBoundValue, getValue),
                            ENTRY(IBoundValue, setValueAndPerform),
                            ENTRY(IBoundValue, getMin),
                            ENTRY(IBoundValue, getMax),
                            ENTRY(IBoundValue, setTargetInterface),
                            ENTRY(IBoundValue, getExtra),
                            ENTRY(IBoundValue, getTag),
                            ENTRY(IBoundValue, enableNotify),
                            ENTRY(IBoundValue, setEnabled),
                            ENTRY(IBoundValue, isEnabled),
                            ENTRY(IBoundValue, setEditBracket),
                            ENTRY(IBoundValue, isEditing),
                            ENTRY(IBoundValue, getValueTextSized),
                            ENTRY(IBoundValue, setValueTextQuiet),
                            ENTRY(IBoundValue, setValueMaybePerform),
                            ENTRY(IBoundValue, setMin),
                            ENTRY(IBoundValue, setMax),
                            ENTRY(IBoundValue, getValueFloat),
                            ENTRY(IBoundValue, setValueFloat),
                            ENTRY(IBoundValue, getMinFloat),
                            ENTRY(IBoundValue, getMaxFloat),
                            ENTRY(IBoundValue, setMinFloat),
                            ENTRY(IBoundValue, setMaxFloat),
                            ENTRY(IBoundValue, getNormalized),
                            ENTRY(IBoundValue, setNormalizedMaybePerform),
                            ENTRY(IBoundValue, getTarget),
                            ENTRY(IBoundValue, resetToDefault),
                            ENTRY(IBoundValue, setDefaultFloat),
                            ENTRY(IBoundValue, getDefaultFloat),
                            ENTRY(IBoundValue, getProperty),
                            ENTRY(IBoundValue, setProperty)},
                           testing::behindInterface);
    testing::expectEntries({ENTRY(IValueFormatHost, setFormatter), ENTRY(IValueFormatHost, getFormatter)},
                           testing::behindInterface);
    testing::expectEntries({ENTRY(IValueFormatter, toText), ENTRY(IValueFormatter, fromText)},
                           testing::behindInterface);
    testing::expectEntries({ENTRY(IValueTarget, reserved), ENTRY(IValueTarget, valueEdited)},
                           testing::behindInterface);
    testing::expectEntries({ENTRY(IValueEditTarget, beginEdit), ENTRY(IValueEditTarget, endEdit)},
                           testing::behindInterface);
    testing::expectEntries({ENTRY(IPlugMessageTarget, receiveMessage)}, testing::behindInterface);
}

} // namespace
} // namespace qorl::Binding
