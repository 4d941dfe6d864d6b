#include "skin/SkinType.h"

#include "skin/NameTable.h"

namespace qorl {

namespace {

constexpr std::array<std::string_view, skinTypeCount> tags{
#define QORL_SKIN_TYPE(id, text) text,
    QORL_SKIN_TYPES(QORL_SKIN_TYPE)
#undef QORL_SKIN_TYPE
};

constexpr NameTable<skinTypeCount> tagTable(tags);

using T = SkinType;

enum Trait : uint8_t { plain = 0, noFactory = 1, view = 2, nameless = 4, open = 8 };

struct Row {
    SkinType base;
    int traits;
};

// clang-format off
constexpr Row rows[] = {
    /* unknown */ {T::unknown, plain}, /* comment */ {T::unknown, plain}, /* skin */ {T::unknown, plain},
    /* header */ {T::unknown, plain}, /* info */ {T::unknown, plain}, /* include */ {T::unknown, nameless},
    /* resources */ {T::unknown, plain}, /* res */ {T::unknown, plain}, /* bitmap */ {T::res, plain},
    /* filmstrip */ {T::bitmap, plain}, /* dbitmap */ {T::bitmap, plain},
    /* bitmapcollection */ {T::unknown, plain}, /* propertycollection */ {T::unknown, plain},
    /* section */ {T::bitmap, plain}, /* cursor */ {T::res, plain}, /* animation */ {T::unknown, open},
    /* fontres */ {T::unknown, noFactory}, /* bitmapfont */ {T::unknown, plain},
    /* shape */ {T::unknown, noFactory}, /* area */ {T::unknown, noFactory}, /* preset */ {T::res, plain},
    /* scheme */ {T::unknown, plain}, /* color */ {T::unknown, plain}, /* size */ {T::unknown, plain},
    /* brush */ {T::unknown, noFactory}, /* pen */ {T::unknown, noFactory}, /* surface */ {T::item, plain},
    /* translations */ {T::unknown, nameless}, /* scripts */ {T::unknown, plain},
    /* script */ {T::unknown, plain}, /* definitions */ {T::unknown, plain},
    /* define */ {T::unknown, plain}, /* customsettings */ {T::unknown, plain},
    /* customitem */ {T::unknown, plain}, /* customgroup */ {T::unknown, plain},
    /* templates */ {T::unknown, plain}, /* frame */ {T::unknown, plain}, /* row */ {T::unknown, plain},
    /* col */ {T::unknown, plain}, /* font */ {T::unknown, plain}, /* variant */ {T::unknown, nameless},
    /* controller */ {T::unknown, plain}, /* separated */ {T::unknown, view},
    /* property */ {T::unknown, nameless}, /* for */ {T::unknown, nameless}, /* set */ {T::unknown, nameless},
    /* mutable */ {T::unknown, nameless}, /* view */ {T::unknown, view}, /* template */ {T::unknown, view},
    /* control */ {T::unknown, view | open}, /* align */ {T::unknown, view},
    /* relativeattach */ {T::unknown, view}, /* alternative */ {T::unknown, view},
    /* button */ {T::unknown, view}, /* helpbutton */ {T::unknown, view}, /* switch */ {T::unknown, view},
    /* checkbox */ {T::unknown, view}, /* radiobutton */ {T::unknown, view},
    /* radiogroup */ {T::rowcol, view}, /* scrollbar */ {T::unknown, view}, /* slider */ {T::unknown, view},
    /* rangeslider */ {T::slider, view}, /* knob */ {T::unknown, view}, /* ringknob */ {T::knob, view},
    /* text */ {T::unknown, view}, /* edit */ {T::text, view}, /* valuebox */ {T::text, view},
    /* rationalbox */ {T::unknown, view}, /* updownbox */ {T::unknown, view}, /* optmenu */ {T::text, view},
    /* opttoggle */ {T::text, view}, /* bitmaptext */ {T::text, view}, /* image */ {T::unknown, view},
    /* label */ {T::unknown, view}, /* textview */ {T::unknown, view}, /* expandable */ {T::unknown, view},
    /* rowcol */ {T::unknown, view}, /* rack */ {T::unknown, view}, /* bitmapscale */ {T::unknown, view},
    /* bitmapdisplay */ {T::unknown, view}, /* decor */ {T::unknown, view},
    /* multipane */ {T::unknown, view}, /* listbox */ {T::unknown, view},
    /* progressbar */ {T::unknown, view}, /* bitmapradiobutton */ {T::unknown, view},
    /* graphics */ {T::unknown, view}, /* a */ {T::unknown, view}, /* customview */ {T::unknown, view},
    /* scrolldisplay */ {T::unknown, view}, /* texteditor */ {T::unknown, view},
    /* pathselector */ {T::unknown, view}, /* scrollview */ {T::unknown, view},
    /* matrix */ {T::unknown, view}, /* columns */ {T::unknown, plain}, /* column */ {T::unknown, plain},
    /* extensible */ {T::unknown, view}, /* sizehandle */ {T::unknown, view},
    /* hoverpad */ {T::unknown, view}, /* dependentcontentview */ {T::unknown, view},
    /* popupoverlaygadget */ {T::switch_, view}, /* keycommandmemo */ {T::unknown, view | open},
    /* texture */ {T::unknown, view}, /* painted */ {T::unknown, view}, /* render */ {T::unknown, view},
    /* dragpad */ {T::unknown, view}, /* bitmaptextswitch */ {T::switch_, view},
    /* windowcomposer */ {T::unknown, plain}, /* windowcomposerview */ {T::unknown, view},
    /* exchangeable */ {T::unknown, view}, /* taglist */ {T::unknown, plain},
    /* item */ {T::unknown, plain}, /* valuedefine */ {T::unknown, plain},
    /* universal */ {T::unknown, view | open}, /* viewlist */ {T::unknown, view | open},
    /* tabcluster */ {T::unknown, view | open}, /* plainzoneview */ {T::unknown, view | open},
    /* tabzoneview */ {T::unknown, view | open}, /* container */ {T::unknown, view},
    /* layout */ {T::unknown, open}, /* border-layout */ {T::unknown, open},
    /* card-layout */ {T::unknown, open}, /* list-layout */ {T::unknown, open},
    /* grid-layout */ {T::unknown, open}, /* layout-item */ {T::unknown, open},
    /* grid-item */ {T::unknown, open}, /* border-item */ {T::unknown, open},
    /* center */ {T::unknown, open}, /* north */ {T::unknown, open}, /* east */ {T::unknown, open},
    /* south */ {T::unknown, open}, /* west */ {T::unknown, open}, /* locale */ {T::unknown, plain},
};
// clang-format on
static_assert(std::size(rows) == skinTypeCount);

constexpr auto traits = [] {
    std::array<SkinTypeTraits, skinTypeCount> result{};
    for (size_t i = 0; i < result.size(); ++i)
        result[i] = {rows[i].base, !(rows[i].traits & noFactory), (rows[i].traits & view) != 0,
                     !(rows[i].traits & nameless), (rows[i].traits & open) != 0};
    return result;
}();

} // namespace

std::string_view nameOf(SkinType type) {
    return tags[static_cast<size_t>(type)];
}

bool findSkinType(std::string_view tag, SkinType& type) {
    const size_t row = tagTable.find(tag);
    if (row == tagTable.notFound)
        return false;
    type = static_cast<SkinType>(row);
    return true;
}

const SkinTypeTraits& traitsOf(SkinType type) {
    return traits[static_cast<size_t>(type)];
}

bool isOfType(SkinType type, SkinType base) {
    while (type != base) {
        if (type == SkinType::unknown)
            return false;
        type = traitsOf(type).base;
    }
    return true;
}

} // namespace qorl
