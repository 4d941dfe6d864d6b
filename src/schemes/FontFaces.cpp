#include "schemes/FontFaces.h"

#include "graphics/GraphicsFactory.h"
#include "graphics/GraphicsFont.h"

namespace qorl {

namespace {

std::string_view trimmed(std::string_view text) {
    const auto isBlank = [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); };
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

} // namespace

bool findFontFace(std::string_view names, std::string_view& face) {
    face = {};
    if (trimmed(names).empty())
        return true;
    GraphicsFactory* factory = getGraphicsFactory();
    FontCollection* fonts = factory ? factory->getFontCollection() : nullptr;
    if (!fonts)
        return false;
    for (;;) {
        const size_t end = names.find(',');
        face = trimmed(names.substr(0, end));
        if (!face.empty() && fonts->hasFace(face))
            return true;
        if (end == std::string_view::npos)
            return false;
        names.remove_prefix(end + 1);
    }
}

} // namespace qorl
