#include "binding/UColorValue.h"

#include "binding/IntValue.h"
#include "foundation/ClassRecord.h"
#include "graphics/UColor.h"

#include <algorithm>
#include <limits>
#include <new>

namespace qorl {

// The class has nothing of a whole number, but the record stands there, as stored files expect it.
QORL_REGISTER(UColorValue, "UColorValue", Binding::IntValue, 0)

namespace {

constexpr uint32_t numberAtBirth =
    static_cast<uint32_t>(Binding::ValueKind::number) | Binding::Value::enabled;

double luminanceOf(const UColor& color) {
    return (0.299 * color.red() + 0.587 * color.green() + 0.114 * color.blue()) * 100 / 255;
}

} // namespace

UColorValue::UColorValue(uint32_t packed) : Value(numberAtBirth), color_(packed) {}

int32_t UColorValue::getMin() {
    return std::numeric_limits<int32_t>::min();
}

int32_t UColorValue::getMax() {
    return std::numeric_limits<int32_t>::max();
}

uint32_t UColorValue::adjusted(uint32_t packed) const {
    if (packed == 0 || adjust_ == noAdjustment)
        return packed;
    const double lowest = adjust_ & 0xFF;
    const double highest = adjust_ >> 8 & 0xFF;
    UColor color = UColor::fromPacked(packed | 0xFF000000u);
    UColor::Hsl hsl = color.toHsl();
    while (luminanceOf(color) > highest && (hsl.lightness > 0 || hsl.saturation < 100)) {
        if (hsl.lightness > 0)
            hsl.lightness = std::max(0.0, hsl.lightness - 1);
        else
            hsl.saturation = std::min(100.0, hsl.saturation + 1);
        color = UColor::fromHsl(hsl);
    }
    while (luminanceOf(color) < lowest && (hsl.lightness < 100 || hsl.saturation > 0)) {
        if (hsl.lightness < 100)
            hsl.lightness = std::min(100.0, hsl.lightness + 1);
        else
            hsl.saturation = std::max(0.0, hsl.saturation - 1);
        color = UColor::fromHsl(hsl);
    }
    return color.packed();
}

void UColorValue::setValue(int32_t packed) {
    const uint32_t color = adjusted(static_cast<uint32_t>(packed));
    if (color == color_)
        return;
    color_ = color;
    changed();
}

void UColorValue::toString(String& text) {
    if (!formatByFormatter(text))
        text = ConstString(UColor::fromPacked(color_).toText());
}

void UColorValue::setValueText(const char16_t* text) try {
    UColor color;
    if (!parseByFormatter(text) && color.parse(ConstString(text).toUtf8()))
        setValueAndPerform(static_cast<int32_t>(color.packed()));
} catch (const std::bad_alloc&) {
    // The value stays as it is.
}

} // namespace qorl
