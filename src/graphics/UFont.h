#pragma once

#include "graphics/GraphicsFont.h"
#include "graphics/UColor.h"

#include <qorl/Geometry.h>
#include <qorl/Ref.h>

#include <string_view>

namespace qorl {

class CmString;

/// What text is drawn and measured with: face, size, style and colour. A value; copies are cheap, since they
/// share the face name and the resolved font.
///
/// Sizes are in points; a point is 96/72 logical pixels. The font of the back end is found at first use.
class UFont : public CmObject {
    QORL_CLASS(UFont, CmObject)
    QORL_RECORD(UFont)
    QORL_CLONE(UFont)

public:
    /// Style flags.
    static constexpr uint32_t bold = 1;
    static constexpr uint32_t italic = 2;
    static constexpr uint32_t underline = 4;
    static constexpr uint32_t strikeout = 8;
    static constexpr uint32_t monoSpacing = 0x200;

    static constexpr int32_t defaultSize = 12;
    static constexpr double pixelsPerPoint = 96.0 / 72.0;

    /// The default face in 12 points, black.
    UFont() : UFont(defaultSize) {}
    explicit UFont(int32_t size, uint32_t style = 0, std::string_view face = {},
                   const UColor& color = StandardColor::black);
    UFont(const UFont&);
    UFont& operator=(const UFont&);
    ~UFont() override;

    int32_t getSize() const { return size_; }
    void setSize(int32_t points);
    uint32_t getStyle() const { return style_; }
    void setStyle(uint32_t flags);
    uint32_t getFamily() const { return family_; }
    void setFamily(uint32_t family) { family_ = family; }
    const UColor& getColor() const { return color_; }
    void setColor(const UColor& color) { color_ = color; }
    /// UTF-8, empty for the default face. Valid until the face is set again.
    std::string_view getFaceName() const;
    void setFaceName(std::string_view face);

    /// The back end's font, found at first use; null when there is none. Not counted for the caller.
    GraphicsFont* getFace() const;

    /// In whole logical pixels, rounded up; without a back end font, characters times size.
    int32_t getStringWidth(const ConstString& text) const;
    /// Ascent 7, descent 3, line height 10 without a back end font.
    TextMetrics getMetrics() const;
    /// The extent of a text that may have several lines, rounded up.
    CmSize getStringExtent(const ConstString& text) const;

    /// Equal in everything, colour included.
    bool isEqual(const CmObject* other) const override;
    uint32_t hashCode(uint32_t size) const override;
    friend bool operator==(const UFont& a, const UFont& b) noexcept { return a.isSame(b); }

private:
    bool isSame(const UFont& other) const noexcept;
    void forgetFace();

    int32_t size_;
    uint32_t style_;
    uint32_t family_ = 0;
    UColor color_;
    Ref<CmString> faceName_; ///< Shared by copies, never changed; null for the default face.
    mutable Ref<GraphicsFont> backEndFont_;
    mutable uint32_t factoryGeneration_ = 0; ///< Of the factory that gave `backEndFont_`.
};

} // namespace qorl
