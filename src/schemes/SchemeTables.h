#pragma once

#include "graphics/UColor.h"
#include "graphics/UFont.h"
#include "schemes/SchemeKeys.h"

#include <cstdint>
#include <iterator>
#include <string_view>

namespace qorl {

/// Colours of the desktop that defaults come from.
enum class DesktopColor : uint8_t {
    menu,
    window,
    windowFrame,
    windowText,
    highlight,
    highlightText,
    buttonFace,
    buttonShadow,
    grayText,
    buttonText,
    buttonHighlight,
    buttonDarkShadow,
    buttonLight,
    infoText,
    infoBack,
    standard, ///< None of them: a colour of the standard table.
};

struct SchemeColorRow {
    std::string_view name;
    DesktopColor source;
    StandardColor standard = StandardColor::black;
};

inline constexpr SchemeColorRow schemeColorTable[] = {
    {"buttonface", DesktopColor::buttonFace},
    {"buttonhilight", DesktopColor::buttonHighlight},
    {"buttontop", DesktopColor::buttonLight},
    {"buttonbottom", DesktopColor::buttonShadow},
    {"buttontop2", DesktopColor::buttonHighlight},
    {"buttonbottom2", DesktopColor::buttonDarkShadow},
    {"frame", DesktopColor::windowFrame},
    {"frametop", DesktopColor::buttonHighlight},
    {"framebottom", DesktopColor::buttonShadow},
    {"frame2", DesktopColor::windowFrame},
    {"frametop2", DesktopColor::buttonHighlight},
    {"framebottom2", DesktopColor::buttonShadow},
    {"datafieldback", DesktopColor::window},
    {"datafieldfore", DesktopColor::windowText},
    {"datafieldforeinactive", DesktopColor::grayText},
    {"datafieldtop", DesktopColor::buttonShadow},
    {"datafieldbottom", DesktopColor::buttonHighlight},
    {"windowback", DesktopColor::buttonFace},
    {"dialogback", DesktopColor::buttonFace},
    {"panelback", DesktopColor::buttonFace},
    {"labelcolor", DesktopColor::windowText},
    {"labelcolorinactive", DesktopColor::grayText},
    {"workarea", DesktopColor::window},
    {"multipane", DesktopColor::window},
    {"focus", DesktopColor::highlight},
    {"select", DesktopColor::highlight},
    {"text", DesktopColor::windowText},
    {"textselect", DesktopColor::highlightText},
    {"listback", DesktopColor::window},
    {"listfore", DesktopColor::windowText},
    {"listselect", DesktopColor::highlight},
    {"listselecttext", DesktopColor::highlightText},
    {"tooltipback", DesktopColor::infoBack},
    {"tooltipfore", DesktopColor::infoText},
    {"menuback", DesktopColor::menu},
    {"hyperlink", DesktopColor::standard, StandardColor::blue},
    {"preferenceheader", DesktopColor::standard, StandardColor::gray70},
    {"sortmarker", DesktopColor::buttonFace},
    {"datafieldledback", DesktopColor::standard, StandardColor::black},
    {"progressbar", DesktopColor::buttonText},
};
static_assert(std::size(schemeColorTable) == SchemeColor::count);

struct SchemeMetricRow {
    std::string_view name;
    int32_t value;
};

inline constexpr SchemeMetricRow schemeMetricTable[] = {
    {"margin", 8},
    {"buttonheight", 22},
    {"buttonwidth", 80},
    {"datafieldheight", 20},
    {"datafieldwidth", 80},
    {"datafieldborder", 2},
    {"scrollbarwidth", 18},
    {"listrowheight", 16},
    {"radiobuttonheight", 20},
    {"checkboxheight", 20},
    {"texteditframe", 2},
    {"listboxframe", 2},
    {"tabheight", 20},
    {"tabwidth", 50},
    {"taboverlap", 2},
    {"columnheaderheight", 16},
    {"columnheaderspacing", 0},
    {"expansionboxwidth", 9},
    {"expansionboxheight", 9},
    {"dlg.inset", 8},
    {"dlg.btn.inset.h", 8},
    {"dlg.btn.inset.v", 8},
    {"dlg.btn.spacing", 8},
    {"dlg.btn.sizer.inset", 18},
};
static_assert(std::size(schemeMetricTable) == SchemeMetric::count);

struct SchemeFontRow {
    std::string_view name;
    int32_t size; ///< In points.
    uint32_t style;
};

inline constexpr SchemeFontRow schemeFontTable[] = {
    {"message", 12, 0},
    {"label", 11, 0},
    {"smalllabel", 10, 0},
    {"tinylabel", 9, 0},
    {"largelabel", 12, 0},
    {"data", 11, UFont::bold},
    {"smalldata", 10, UFont::bold},
    {"largedata", 13, UFont::bold},
    {"dataXL", 16, UFont::bold},
    {"monospaced", 12, UFont::monoSpacing},
    {"smallmonospaced", 10, UFont::monoSpacing},
    {"list", 11, 0},
    {"tab", 12, 0},
    {"column", 11, 0},
};
static_assert(std::size(schemeFontTable) == SchemeFont::count);

/// -1 for a name that is none.
int32_t findSchemeColor(std::string_view name);
int32_t findSchemeMetric(std::string_view name);
int32_t findSchemeFont(std::string_view name);

/// What the desktop of this process says, or what plain desktops look like where it says nothing.
UColor desktopColor(DesktopColor color);

} // namespace qorl
