#pragma once

#include <cstdint>
#include <string_view>

namespace qorl {

// clang-format off
/// The element table of skin documents in its order: an element's type is its row.
#define QORL_SKIN_TYPES(X) \
    X(unknown, "unknown") X(comment, "comment") X(skin, "skin") X(header, "header") X(info, "info") \
    X(include, "include") X(resources, "resources") X(res, "res") X(bitmap, "bitmap") \
    X(filmstrip, "filmstrip") X(dbitmap, "dbitmap") X(bitmapcollection, "bitmapcollection") \
    X(propertycollection, "propertycollection") X(section, "section") X(cursor, "cursor") \
    X(animation, "animation") X(fontres, "fontres") X(bitmapfont, "bitmapfont") X(shape, "shape") \
    X(area, "area") X(preset, "preset") X(scheme, "scheme") X(color, "color") X(size, "size") \
    X(brush, "brush") X(pen, "pen") X(surface, "surface") X(translations, "translations") \
    X(scripts, "scripts") X(script, "script") X(definitions, "definitions") X(define, "define") \
    X(customsettings, "customsettings") X(customitem, "customitem") X(customgroup, "customgroup") \
    X(templates, "templates") X(frame, "frame") X(row, "row") X(col, "col") X(font, "font") \
    X(variant, "variant") X(controller, "controller") X(separated, "separated") X(property, "property") \
    X(for_, "for") X(set, "set") X(mutable_, "mutable") X(view, "view") X(template_, "template") \
    X(control, "control") X(align, "align") X(relativeattach, "relativeattach") \
    X(alternative, "alternative") X(button, "button") X(helpbutton, "helpbutton") X(switch_, "switch") \
    X(checkbox, "checkbox") X(radiobutton, "radiobutton") X(radiogroup, "radiogroup") \
    X(scrollbar, "scrollbar") X(slider, "slider") X(rangeslider, "rangeslider") X(knob, "knob") \
    X(ringknob, "ringknob") X(text, "text") X(edit, "edit") X(valuebox, "valuebox") \
    X(rationalbox, "rationalbox") X(updownbox, "updownbox") X(optmenu, "optmenu") X(opttoggle, "opttoggle") \
    X(bitmaptext, "bitmaptext") X(image, "image") X(label, "label") X(textview, "textview") \
    X(expandable, "expandable") X(rowcol, "rowcol") X(rack, "rack") X(bitmapscale, "bitmapscale") \
    X(bitmapdisplay, "bitmapdisplay") X(decor, "decor") X(multipane, "multipane") X(listbox, "listbox") \
    X(progressbar, "progressbar") X(bitmapradiobutton, "bitmapradiobutton") X(graphics, "graphics") \
    X(a, "a") X(customview, "customview") X(scrolldisplay, "scrolldisplay") X(texteditor, "texteditor") \
    X(pathselector, "pathselector") X(scrollview, "scrollview") X(matrix, "matrix") X(columns, "columns") \
    X(column, "column") X(extensible, "extensible") X(sizehandle, "sizehandle") X(hoverpad, "hoverpad") \
    X(dependentcontentview, "dependentcontentview") X(popupoverlaygadget, "popupoverlaygadget") \
    X(keycommandmemo, "keycommandmemo") X(texture, "texture") X(painted, "painted") X(render, "render") \
    X(dragpad, "dragpad") X(bitmaptextswitch, "bitmaptextswitch") X(windowcomposer, "windowcomposer") \
    X(windowcomposerview, "windowcomposerview") X(exchangeable, "exchangeable") X(taglist, "taglist") \
    X(item, "item") X(valuedefine, "valuedefine") X(universal, "universal") X(viewlist, "viewlist") \
    X(tabcluster, "tabcluster") X(plainzoneview, "plainzoneview") X(tabzoneview, "tabzoneview") \
    X(container, "container") X(layout, "layout") X(borderLayout, "border-layout") \
    X(cardLayout, "card-layout") X(listLayout, "list-layout") X(gridLayout, "grid-layout") \
    X(layoutItem, "layout-item") X(gridItem, "grid-item") X(borderItem, "border-item") X(center, "center") \
    X(north, "north") X(east, "east") X(south, "south") X(west, "west") X(locale, "locale")
// clang-format on

enum class SkinType : uint8_t {
#define QORL_SKIN_TYPE(id, text) id,
    QORL_SKIN_TYPES(QORL_SKIN_TYPE)
#undef QORL_SKIN_TYPE
};

inline constexpr int32_t skinTypeCount = 132;

/// The element's tag.
std::string_view nameOf(SkinType type);

/// Exact and case-sensitive. False for a tag that is not in the table.
bool findSkinType(std::string_view tag, SkinType& type);

/// What the table knows of a type beside its name.
struct SkinTypeTraits {
    SkinType base;     ///< The type whose attributes it also reads; `unknown` for those without one.
    bool hasFactory;   ///< Without one the element is skipped with its contents.
    bool isView;       ///< Carries the attributes common to all view elements.
    bool readsName;    ///< Reads `name` and `data`, as most do.
    bool keepsUnknown; ///< Any attribute is legal, since a class outside of this table reads it.
};

const SkinTypeTraits& traitsOf(SkinType type);

/// Whether `type` is `base` or reads its attributes on top of those of `base`.
bool isOfType(SkinType type, SkinType base);

/// The row that `frame` stands in begins the elements that may stand in a template.
constexpr bool isTemplateContent(SkinType type) {
    return type >= SkinType::frame;
}

} // namespace qorl
