#pragma once

#include "skin/SkinType.h"

#include <cstdint>
#include <string_view>

namespace qorl {

// clang-format off
#define QORL_SKIN_ATTRIBUTES(X) \
    X(align, "align") X(alpha, "alpha") X(alternative, "alternative") X(animationMode, "animation-mode") \
    X(attach, "attach") X(autosave, "autosave") X(backcolor, "backcolor") X(background, "background") \
    X(backgroundStyle, "background-style") X(base, "base") X(bgcolor, "bgcolor") X(bitmap, "bitmap") \
    X(bitmapfont, "bitmapfont") X(bitmaps, "bitmaps") X(blink, "blink") X(buttons, "buttons") \
    X(category, "category") X(center, "center") X(chars, "chars") X(charwidth, "charwidth") \
    X(child, "child") X(class_, "class") X(clip, "clip") X(collection, "collection") X(color, "color") \
    X(colorValue, "color-value") X(colorize, "colorize") X(columns, "columns") X(colwidth, "colwidth") \
    X(command, "command") X(comment, "comment") X(condition, "condition") X(controller, "controller") \
    X(controllerId, "controller-id") X(cursor, "cursor") X(data, "data") X(default_, "default") \
    X(defaultSize, "default-size") X(defaultframe, "defaultframe") \
    X(disable, "disable") X(displaywidth, "displaywidth") X(distance, "distance") \
    X(expandtemplate, "expandtemplate") X(extension, "extension") X(extra, "extra") X(face, "face") \
    X(fallback, "fallback") X(family, "family") X(fgcolor, "fgcolor") X(file, "file") X(flags, "flags") \
    X(focus, "focus") X(focusId, "focus-id") X(focusPathId, "focus-path-id") X(fontNames, "fontNames") \
    X(framealign, "framealign") X(framecount, "framecount") X(gestalt, "gestalt") \
    X(givenwidth, "givenwidth") X(group, "group") X(handle, "handle") X(handle2, "handle2") \
    X(handlecolor, "handlecolor") X(handlesize, "handlesize") X(height, "height") X(help, "help") \
    X(hideDelay, "hide-delay") X(horizontalValue, "horizontal-value") X(hotspot, "hotspot") X(href, "href") \
    X(icon, "icon") X(icon2, "icon2") X(id, "id") X(impose, "impose") X(innersize, "innersize") \
    X(interval, "interval") X(itemheight, "itemheight") X(just, "just") X(layout, "layout") \
    X(locator, "locator") X(lookup, "lookup") X(margin, "margin") X(margins, "margins") X(mask, "mask") \
    X(maskcolor, "maskcolor") X(max, "max") X(maxSize, "max-size") X(maximum, "maximum") \
    X(maxwidth, "maxwidth") X(min, "min") X(minBottomright, "min-bottomright") X(minSize, "min-size") \
    X(minTopleft, "min-topleft") X(minwidth, "minwidth") X(mode, "mode") X(modeval, "modeval") \
    X(name, "name") X(name2, "name2") X(namealt, "namealt") X(nameleft, "nameleft") \
    X(nameright, "nameright") X(offset, "offset") X(onMousedown, "onMousedown") X(onMouseout, "onMouseout") \
    X(onMouseover, "onMouseover") X(onMouseup, "onMouseup") X(onSwitchoff, "onSwitchoff") \
    X(onSwitchon, "onSwitchon") X(opacity, "opacity") X(overlay, "overlay") X(pad, "pad") \
    X(painter, "painter") X(path, "path") X(penWidth, "pen-width") X(persistence, "persistence") \
    X(placeholder, "placeholder") X(popupSize, "popup-size") X(priority, "priority") X(radius, "radius") \
    X(range, "range") X(rate, "rate") X(rect, "rect") X(reversecolor, "reversecolor") \
    X(ringcolor, "ringcolor") X(rotaryMultiplier, "rotary-multiplier") X(rowheight, "rowheight") \
    X(scale, "scale") X(scheme, "scheme") X(scope, "scope") X(script, "script") \
    X(segmentsize, "segmentsize") X(separatorSize, "separator-size") X(separatorValue, "separator-value") \
    X(setting, "setting") X(settings, "settings") X(shortcut, "shortcut") X(showDelay, "show-delay") \
    X(size, "size") X(sizelimit, "sizelimit") X(source, "source") X(spacing, "spacing") X(step, "step") \
    X(stripcolor, "stripcolor") X(style, "style") X(symbol, "symbol") X(tabwidth, "tabwidth") \
    X(target, "target") X(template_, "template") X(templatelist, "templatelist") X(tip, "tip") \
    X(tipexID, "tipexID") X(title, "title") X(titlecolor, "titlecolor") X(titleNT, "titleNT") \
    X(type, "type") X(units, "units") X(value, "value") X(variable, "variable") \
    X(verticalValue, "vertical-value") X(viewStyle, "view-style") X(wallpaper, "wallpaper") \
    X(weave, "weave") X(width, "width")
// clang-format on

/// The attributes that some element of the table reads. `foreign` stands for all others.
enum class SkinAttribute : uint8_t {
    foreign,
#define QORL_SKIN_ATTRIBUTE(id, text) id,
    QORL_SKIN_ATTRIBUTES(QORL_SKIN_ATTRIBUTE)
#undef QORL_SKIN_ATTRIBUTE
        count
};

std::string_view nameOf(SkinAttribute attribute);

/// `foreign` if no element of the table reads such an attribute.
SkinAttribute findSkinAttribute(std::string_view name);

/// How an attribute's text is understood.
enum class AttributeForm : uint8_t {
    illegal, ///< The element does not read it.
    text,
    integer,  ///< Decimal.
    point,    ///< "%d,%d".
    keywords, ///< Words of a `KeywordSet`.
    opacity,  ///< "#" and hexadecimal digits, or a decimal number.
};

struct KeywordSet;

struct AttributeRule {
    AttributeForm form = AttributeForm::illegal;
    const KeywordSet* keywords = nullptr;
    /// Legal, but nothing reads it.
    bool isIdle = false;
};

/// How elements of `type` read `attribute`, those that they share with their base counted in.
const AttributeRule& ruleOf(SkinType type, SkinAttribute attribute);

} // namespace qorl
