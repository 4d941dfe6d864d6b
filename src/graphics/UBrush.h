#pragma once

#include "graphics/UColor.h"

namespace qorl {

/// What shapes are filled with. Text takes the font's colour, not the brush. A value: copy it freely.
class UBrush : public CmObject {
    QORL_CLASS(UBrush, CmObject)
    QORL_RECORD(UBrush)
    QORL_CLONE(UBrush)

public:
    /// White.
    UBrush() noexcept : UBrush(StandardColor::white) {}
    explicit UBrush(const UColor& color) noexcept : color_(color) {}

    const UColor& getColor() const { return color_; }
    void setColor(const UColor& color) { color_ = color; }
    bool isAntialiased() const { return antialiased_; }
    void setAntialiased(bool antialiased) { antialiased_ = antialiased; }

    bool isEqual(const CmObject* other) const override;
    uint32_t hashCode(uint32_t size) const override;
    friend bool operator==(const UBrush& a, const UBrush& b) noexcept {
        return a.color_ == b.color_ && a.antialiased_ == b.antialiased_;
    }

private:
    UColor color_;
    bool antialiased_ = true;
};

} // namespace qorl
