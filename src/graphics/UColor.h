#pragma once

#include "foundation/CmObject.h"

#include <string>
#include <string_view>

namespace qorl {

class UColor;

/// The colours of the standard table, in its order.
enum class StandardColor : int32_t {
    black,
    white,
    gray5,
    gray10,
    gray20,
    gray30,
    gray40,
    gray50,
    gray60,
    gray70,
    gray80,
    gray90,
    red,
    lightred,
    darkred,
    green,
    lightgreen,
    darkgreen,
    blue,
    lightblue,
    darkblue,
    magenta,
    lightmagenta,
    darkmagenta,
    yellow,
    lightyellow,
    darkyellow,
    orange,
    lightorange,
    darkorange,
    gold,
    black50,
    black70,
};

constexpr int32_t standardColorCount = 33;

/// Resolves the names that the standard table doesn't hold. The scheme in force fills it in.
using NamedColorLookup = bool (*)(std::string_view name, UColor& color);

/// A colour of four 16-bit channels; an 8-bit value v is held as v shifted left by 8. Not premultiplied.
///
/// Colours are equal when the upper 8 bits of each channel are. Threading: as a plain value; the named
/// look-up is set and asked on the GUI thread.
class UColor : public CmObject {
    QORL_CLASS(UColor, CmObject)
    QORL_RECORD(UColor)
    QORL_CLONE(UColor)

public:
    /// Hue 0 to 359 degrees, saturation and lightness 0 to 100 per cent.
    struct Hsl {
        double hue = 0;
        double saturation = 0;
        double lightness = 0;
    };

    /// All zero: no colour, fully transparent.
    UColor() noexcept = default;
    UColor(StandardColor color) noexcept : UColor(fromIndex(static_cast<int32_t>(color))) {}

    static UColor fromBytes(uint8_t red, uint8_t green, uint8_t blue, uint8_t alpha = 255) noexcept;
    /// 0xAARRGGBB.
    static UColor fromPacked(uint32_t argb) noexcept;
    /// An entry of the standard table; black for any other index.
    static UColor fromIndex(int32_t index) noexcept;
    /// Values out of range are brought into it; hue turns round the circle.
    static UColor fromHsl(const Hsl& hsl, uint8_t alpha = 255) noexcept;

    uint16_t red16() const { return red_; }
    uint16_t green16() const { return green_; }
    uint16_t blue16() const { return blue_; }
    uint16_t alpha16() const { return alpha_; }
    uint8_t red() const { return static_cast<uint8_t>(red_ >> 8); }
    uint8_t green() const { return static_cast<uint8_t>(green_ >> 8); }
    uint8_t blue() const { return static_cast<uint8_t>(blue_ >> 8); }
    uint8_t alpha() const { return static_cast<uint8_t>(alpha_ >> 8); }

    /// 0xAARRGGBB.
    uint32_t packed() const noexcept {
        return static_cast<uint32_t>(alpha()) << 24 | static_cast<uint32_t>(red()) << 16 |
               static_cast<uint32_t>(green()) << 8 | blue();
    }
    Hsl toHsl() const noexcept;

    /// Reads "#RRGGBB", "#RRGGBBAA", "$hue saturation lightness alpha", "undefined", a standard name, then
    /// what the named look-up knows. False, and this is unchanged, when none of them fits.
    bool parse(std::string_view text);
    /// The same without named colours of a scheme.
    bool parseStandard(std::string_view text);

    /// The standard name of an equal colour, else "#RRGGBB", with two further digits unless opaque.
    std::string toText() const;
    /// "#RRGGBB" or "#RRGGBBAA", never a name: the form of skin documents.
    std::string toHexText() const;
    /// "rgba(red,green,blue,alpha)", alpha from 0 to 1.
    std::string toCssText() const;

    bool isEqual(const CmObject* other) const override;
    int32_t compare(const CmObject* other) const override;
    uint32_t hashCode(uint32_t size) const override;

    friend bool operator==(const UColor& a, const UColor& b) noexcept { return a.packed() == b.packed(); }

    /// Index of an exact name of the standard table, or -1.
    static int32_t standardIndex(std::string_view name);
    /// Null when out of range.
    static const char* standardName(int32_t index);

    /// Replaces the look-up of names beyond the standard table; null for none. Gives the one before.
    static NamedColorLookup setNamedColorLookup(NamedColorLookup lookup);

private:
    uint16_t red_ = 0;
    uint16_t green_ = 0;
    uint16_t blue_ = 0;
    uint16_t alpha_ = 0;
};

inline UColor UColor::fromBytes(uint8_t red, uint8_t green, uint8_t blue, uint8_t alpha) noexcept {
    UColor color;
    color.red_ = static_cast<uint16_t>(red << 8);
    color.green_ = static_cast<uint16_t>(green << 8);
    color.blue_ = static_cast<uint16_t>(blue << 8);
    color.alpha_ = static_cast<uint16_t>(alpha << 8);
    return color;
}

inline UColor UColor::fromPacked(uint32_t argb) noexcept {
    return fromBytes(static_cast<uint8_t>(argb >> 16), static_cast<uint8_t>(argb >> 8),
                     static_cast<uint8_t>(argb), static_cast<uint8_t>(argb >> 24));
}

} // namespace qorl
