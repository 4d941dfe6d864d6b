#pragma once

#include "graphics/LineStyle.h"
#include "graphics/UColor.h"

#include <memory>

namespace qorl {

/// What lines and outlines are drawn with. A value: copy it freely.
class UPen : public CmObject {
    QORL_CLASS(UPen, CmObject)
    QORL_RECORD(UPen)
    QORL_CLONE(UPen)

public:
    enum class Kind : uint8_t {
        solid = 0,
        dotted = 1,
        styled = 2, ///< Drawn with the pen's own line style.
    };

    /// Black, one pixel wide.
    UPen() noexcept : UPen(StandardColor::black) {}
    explicit UPen(const UColor& color, int32_t width = 1, Kind kind = Kind::solid) noexcept
        : color_(color), width_(width), kind_(kind) {}

    const UColor& getColor() const { return color_; }
    void setColor(const UColor& color) { color_ = color; }
    /// In logical pixels.
    int32_t getWidth() const { return width_; }
    void setWidth(int32_t width) { width_ = width; }
    bool isAntialiased() const { return antialiased_; }
    void setAntialiased(bool antialiased) { antialiased_ = antialiased; }

    Kind getKind() const { return kind_; }
    /// Null but for a styled pen.
    const std::shared_ptr<const LineStyle>& getLineStyle() const { return lineStyle_; }
    /// Makes this a styled pen, or with null a solid one.
    void setLineStyle(std::shared_ptr<const LineStyle> style);
    /// The style that lines of this pen are drawn with, whatever its kind.
    const LineStyle& effectiveLineStyle() const;

    bool isEqual(const CmObject* other) const override;
    uint32_t hashCode(uint32_t size) const override;
    friend bool operator==(const UPen& a, const UPen& b) noexcept {
        return a.color_ == b.color_ && a.width_ == b.width_ && a.antialiased_ == b.antialiased_ &&
               a.kind_ == b.kind_ && sameStyle(a.lineStyle_.get(), b.lineStyle_.get());
    }

private:
    static bool sameStyle(const LineStyle* a, const LineStyle* b) { return a == b || (a && b && *a == *b); }

    UColor color_;
    int32_t width_ = 1;
    bool antialiased_ = true;
    Kind kind_ = Kind::solid;
    std::shared_ptr<const LineStyle> lineStyle_;
};

} // namespace qorl
