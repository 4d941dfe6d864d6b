#include "graphics/cairo/CairoFontCollection.h"

#include "graphics/UFont.h"
#include "graphics/cairo/CairoFont.h"

#include <algorithm>
#include <array>
#include <cairo-ft.h>
#include <cmath>

namespace qorl {

namespace {

struct PatternDestroy {
    void operator()(FcPattern* pattern) const { FcPatternDestroy(pattern); }
};
using PatternHandle = std::unique_ptr<FcPattern, PatternDestroy>;

/// Style flags that choose another face; the others are drawn on top.
constexpr uint32_t faceStyles =
    UFont::bold | UFont::italic | UFont::underline | UFont::strikeout | UFont::monoSpacing;

constexpr std::array<const char*, 3> genericFaces{"sans", "serif", "monospace"};

std::string familyOf(std::string_view face, uint32_t style) {
    if (!face.empty())
        return std::string(face);
    return style & UFont::monoSpacing ? "monospace" : "sans";
}

PatternHandle patternFor(const std::string& family, double size, uint32_t style) {
    PatternHandle pattern(FcPatternCreate());
    FcPatternAddString(pattern.get(), FC_FAMILY, reinterpret_cast<const FcChar8*>(family.c_str()));
    FcPatternAddDouble(pattern.get(), FC_PIXEL_SIZE, size);
    FcPatternAddInteger(pattern.get(), FC_WEIGHT, style & UFont::bold ? FC_WEIGHT_BOLD : FC_WEIGHT_NORMAL);
    FcPatternAddInteger(pattern.get(), FC_SLANT, style & UFont::italic ? FC_SLANT_ITALIC : FC_SLANT_ROMAN);
    if (style & UFont::monoSpacing)
        FcPatternAddInteger(pattern.get(), FC_SPACING, FC_MONO);
    return pattern;
}

/// Rendering is ours to choose, whatever the desktop prefers.
void setRendering(FcPattern* pattern) {
    for (const char* name : {FC_HINTING, FC_AUTOHINT, FC_HINT_STYLE, FC_ANTIALIAS, FC_RGBA, FC_LCD_FILTER})
        FcPatternDel(pattern, name);
    FcPatternAddBool(pattern, FC_HINTING, FcFalse);
    FcPatternAddBool(pattern, FC_ANTIALIAS, FcTrue);
    FcPatternAddInteger(pattern, FC_RGBA, FC_RGBA_NONE);
}

/// The em square in logical pixels, slanted where the face itself is not.
cairo_matrix_t fontMatrixOf(FcPattern* pattern, double size) {
    cairo_matrix_t matrix;
    cairo_matrix_init_scale(&matrix, size, size);
    FcMatrix* slant = nullptr;
    if (FcPatternGetMatrix(pattern, FC_MATRIX, 0, &slant) == FcResultMatch && slant) {
        cairo_matrix_t extra;
        cairo_matrix_init(&extra, slant->xx, -slant->yx, -slant->xy, slant->yy, 0, 0);
        cairo_matrix_multiply(&matrix, &extra, &matrix);
    }
    return matrix;
}

} // namespace

CairoFontCollection::~CairoFontCollection() {
    fonts_.clear();
    shaper_.reset();
    if (configuration_)
        FcConfigDestroy(configuration_);
}

bool CairoFontCollection::load() {
    if (configuration_)
        return true;
    configuration_ = FcInitLoadConfigAndFonts();
    if (!configuration_)
        return false;
    shaper_ = std::make_shared<PangoShaper>(configuration_);
    return true;
}

std::shared_ptr<CairoFontFace> CairoFontCollection::createFace(const std::string& family, double size,
                                                               uint32_t style) {
    const PatternHandle wanted = patternFor(family, size, style);
    FcConfigSubstitute(configuration_, wanted.get(), FcMatchPattern);
    cairo_ft_font_options_substitute(CairoFontFace::options(), wanted.get());
    FcDefaultSubstitute(wanted.get());
    FcResult result = FcResultNoMatch;
    const PatternHandle found(FcFontMatch(configuration_, wanted.get(), &result));
    if (!found)
        return nullptr;
    setRendering(found.get());
    CairoHandle<cairo_font_face_t> face(cairo_ft_font_face_create_for_pattern(found.get()));
    if (cairo_font_face_status(face.get()) != CAIRO_STATUS_SUCCESS)
        return nullptr;
    auto made = std::make_shared<CairoFontFace>(std::move(face), fontMatrixOf(found.get(), size));
    const bool usable = cairo_scaled_font_status(made->at(1, 1).get()) == CAIRO_STATUS_SUCCESS;
    return usable ? made : nullptr;
}

Ref<GraphicsFont> CairoFontCollection::findFont(const FontRequest& request) {
    const double wanted = std::isfinite(request.size) ? request.size : smallestSize;
    // Pango counts sizes in 1/1024 pixel; both ways of measuring must start from the same one.
    const double size = std::floor(std::clamp(wanted, smallestSize, largestSize) * 1024) / 1024;
    const uint32_t style = request.style & faceStyles;
    Key key(request.face, size, style);
    const auto kept = fonts_.find(key);
    if (kept != fonts_.end())
        return kept->second;
    if (!load())
        return nullptr;
    const std::string family = familyOf(request.face, style);
    auto face = createFace(family, size, style);
    if (!face)
        return nullptr;
    // A document may ask for any number of sizes. Whoever holds a font keeps it.
    if (fonts_.size() >= mostFonts)
        fonts_.clear();
    auto font = make<CairoFont>(family, size, style, std::move(face), shaper_);
    fonts_.emplace(std::move(key), font);
    return font;
}

bool CairoFontCollection::hasFace(std::string_view face) {
    if (face.empty() || !load())
        return false;
    const std::string family(face);
    const auto* name = reinterpret_cast<const FcChar8*>(family.c_str());
    if (std::any_of(genericFaces.begin(), genericFaces.end(), [name](const char* generic) {
            return FcStrCmpIgnoreCase(name, reinterpret_cast<const FcChar8*>(generic)) == 0;
        }))
        return true;
    const PatternHandle pattern(FcPatternCreate());
    FcPatternAddString(pattern.get(), FC_FAMILY, name);
    FcObjectSet* fields = FcObjectSetBuild(FC_FAMILY, nullptr);
    FcFontSet* found = FcFontList(configuration_, pattern.get(), fields);
    const bool has = found && found->nfont > 0;
    if (found)
        FcFontSetDestroy(found);
    FcObjectSetDestroy(fields);
    return has;
}

bool CairoFontCollection::installFontFile(const std::string& path) {
    if (!load() || !FcConfigAppFontAddFile(configuration_, reinterpret_cast<const FcChar8*>(path.c_str())))
        return false;
    // What was found in place of a missing face may be found better now.
    fonts_.clear();
    shaper_->configurationChanged();
    return true;
}

} // namespace qorl
