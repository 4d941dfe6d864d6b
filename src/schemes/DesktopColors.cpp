#include "platform/DesktopServices.h"
#include "platform/Platform.h"
#include "schemes/SchemeTables.h"

#include <optional>

namespace qorl {

namespace {

using platform::SystemColor;

/// How a colour follows from one that desktops tell.
struct DesktopColorRow {
    uint32_t plain; ///< 0xAARRGGBB where the desktop tells nothing.
    std::optional<SystemColor> told;
    double lightness; ///< Percent added to the lightness of what is told.
};

constexpr DesktopColorRow rows[] = {
    /* menu */ {0xFFF0F0F0, SystemColor::button, 0},
    /* window */ {0xFFFFFFFF, SystemColor::window, 0},
    /* windowFrame */ {0xFF646464, SystemColor::button, -45},
    /* windowText */ {0xFF000000, SystemColor::windowText, 0},
    /* highlight */ {0xFF0078D7, SystemColor::highlight, 0},
    /* highlightText */ {0xFFFFFFFF, SystemColor::highlightText, 0},
    /* buttonFace */ {0xFFF0F0F0, SystemColor::button, 0},
    /* buttonShadow */ {0xFFA0A0A0, SystemColor::button, -31},
    /* grayText */ {0xFF6D6D6D, SystemColor::disabledText, 0},
    /* buttonText */ {0xFF000000, SystemColor::buttonText, 0},
    /* buttonHighlight */ {0xFFFFFFFF, SystemColor::button, 6},
    /* buttonDarkShadow */ {0xFF696969, SystemColor::button, -53},
    /* buttonLight */ {0xFFE3E3E3, SystemColor::button, -5},
    /* infoText */ {0xFF000000, std::nullopt, 0},
    /* infoBack */ {0xFFFFFFE1, std::nullopt, 0},
};
static_assert(std::size(rows) == static_cast<size_t>(DesktopColor::standard));

} // namespace

UColor desktopColor(DesktopColor color) {
    const DesktopColorRow& row = rows[static_cast<size_t>(color)];
    platform::DesktopServices* desktop = row.told ? platform::desktop() : nullptr;
    uint32_t argb = 0;
    if (!desktop || !desktop->getSystemColor(*row.told, argb))
        return UColor::fromPacked(row.plain);
    if (row.lightness == 0)
        return UColor::fromPacked(argb);
    UColor::Hsl hsl = UColor::fromPacked(argb).toHsl();
    hsl.lightness += row.lightness;
    return UColor::fromHsl(hsl);
}

} // namespace qorl
