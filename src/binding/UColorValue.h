#pragma once

#include "binding/Value.h"

namespace qorl {

/// A colour that a control shows or edits, as the number 0xAARRGGBB. 0 is no colour.
///
/// Colours that are set can be held to a range of brightness, so that text on them stays readable. Threading:
/// as `Binding::Value`.
class UColorValue : public Binding::Value {
    QORL_CLASS(UColorValue, Binding::Value)
    QORL_CLONE(UColorValue)
    QORL_RECORD(UColorValue)

public:
    /// In the low byte the least luminance of a colour, in the next one the greatest, in per cent.
    static constexpr uint32_t noAdjustment = 0x6400;

    /// Opaque black.
    UColorValue() : UColorValue(0xFF000000u) {}
    /// As it stands, without adjustment.
    explicit UColorValue(uint32_t packed);

    /// Where there are bounds, any colour but 0 is brought between them first and made opaque.
    void setValue(int32_t packed) override;
    int32_t getValue() override { return static_cast<int32_t>(color_); }
    int32_t getMin() override;
    int32_t getMax() override;
    /// The range is that of all colours.
    void setMin(int32_t) override {}
    void setMax(int32_t) override {}
    /// The name of a standard colour, else "#RRGGBB" with two further digits unless opaque.
    void toString(String& text) override;
    /// A colour as `UColor` reads it; any other text changes nothing.
    void setValueText(const char16_t* text) override;

    uint32_t packed() const { return color_; }
    uint32_t getAdjustment() const { return adjust_; }
    /// For colours that are set from now on.
    void setAdjustment(uint32_t adjust) { adjust_ = adjust; }

private:
    uint32_t adjusted(uint32_t packed) const;

    uint32_t color_;
    uint32_t adjust_ = noAdjustment;
};

} // namespace qorl
