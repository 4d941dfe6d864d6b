#include "graphics/cairo/PangoShaper.h"

#include "foundation/text/ConstString.h"
#include "graphics/UFont.h"
#include "platform/DynamicLibrary.h"

#include <cmath>
#include <pango/pangocairo.h>
#include <pango/pangofc-fontmap.h>

namespace qorl {

namespace {

struct GObjectUnref {
    void operator()(void* object) const { g_object_unref(object); }
};
using LayoutHandle = std::unique_ptr<PangoLayout, GObjectUnref>;

/// GLib never forgets a type, so the libraries that registered theirs must not be unloaded together with ours
/// and come back at another address.
void keepPangoLoaded() {
    static const bool kept = [] {
        std::string error;
        for (const char* name : {"libpango-1.0.so.0", "libpangoft2-1.0.so.0", "libpangocairo-1.0.so.0"})
            platform::loadLibrary(name, error);
        return true;
    }();
    static_cast<void>(kept);
}

PangoFontDescription* describe(const std::string& family, double size, uint32_t style) {
    PangoFontDescription* description = pango_font_description_new();
    pango_font_description_set_family(description, family.c_str());
    pango_font_description_set_absolute_size(description, size * PANGO_SCALE);
    pango_font_description_set_weight(description,
                                      style & UFont::bold ? PANGO_WEIGHT_BOLD : PANGO_WEIGHT_NORMAL);
    pango_font_description_set_style(description,
                                     style & UFont::italic ? PANGO_STYLE_ITALIC : PANGO_STYLE_NORMAL);
    return description;
}

} // namespace

PangoShaper::~PangoShaper() {
    forgetFaces();
    if (context_)
        g_object_unref(context_);
    if (fontMap_)
        g_object_unref(fontMap_);
    FcConfigDestroy(configuration_);
}

/// Runs that were shaped before keep the faces that they are drawn with.
void PangoShaper::forgetFaces() {
    for (const auto& [font, face] : faces_)
        g_object_unref(font);
    faces_.clear();
}

bool PangoShaper::start() {
    if (context_)
        return true;
    keepPangoLoaded();
    fontMap_ = pango_cairo_font_map_new_for_font_type(CAIRO_FONT_TYPE_FT);
    if (!fontMap_)
        return false;
    pango_fc_font_map_set_config(PANGO_FC_FONT_MAP(fontMap_), configuration_);
    context_ = pango_font_map_create_context(fontMap_);
    pango_cairo_context_set_font_options(context_, CairoFontFace::options());
    pango_context_set_round_glyph_positions(context_, FALSE);
    return true;
}

void PangoShaper::configurationChanged() {
    if (fontMap_)
        pango_fc_font_map_config_changed(PANGO_FC_FONT_MAP(fontMap_));
}

std::shared_ptr<CairoFontFace> PangoShaper::faceOf(PangoFont* font) {
    const auto found = faces_.find(font);
    if (found != faces_.end())
        return found->second;
    cairo_scaled_font_t* scaled = pango_cairo_font_get_scaled_font(PANGO_CAIRO_FONT(font));
    if (!scaled)
        return nullptr;
    cairo_matrix_t matrix;
    cairo_scaled_font_get_font_matrix(scaled, &matrix);
    CairoHandle<cairo_font_face_t> face(cairo_font_face_reference(cairo_scaled_font_get_font_face(scaled)));
    auto made = std::make_shared<CairoFontFace>(std::move(face), matrix);
    // A document may ask for any number of sizes.
    if (faces_.size() >= mostFaces)
        forgetFaces();
    g_object_ref(font);
    faces_.emplace(font, made);
    return made;
}

ShapedRun PangoShaper::shape(std::u16string_view line, const std::string& family, double size,
                             uint32_t style) {
    ShapedRun run;
    if (!start())
        return run;
    const std::string text = ConstString(line).toUtf8();
    const LayoutHandle layout(pango_layout_new(context_));
    PangoFontDescription* description = describe(family, size, style);
    pango_layout_set_font_description(layout.get(), description);
    pango_font_description_free(description);
    PangoAttrList* attributes = pango_attr_list_new();
    pango_attr_list_insert(attributes, pango_attr_font_features_new("kern=0, liga=0, clig=0"));
    pango_layout_set_attributes(layout.get(), attributes);
    pango_attr_list_unref(attributes);
    pango_layout_set_single_paragraph_mode(layout.get(), TRUE);
    pango_layout_set_text(layout.get(), text.data(), static_cast<int>(text.size()));

    PangoLayoutLine* shaped = pango_layout_get_line_readonly(layout.get(), 0);
    int64_t place = 0;
    for (GSList* item = shaped ? shaped->runs : nullptr; item; item = item->next) {
        const auto* glyphItem = static_cast<PangoGlyphItem*>(item->data);
        const PangoGlyphString* glyphs = glyphItem->glyphs;
        ShapedRun::Segment segment{faceOf(glyphItem->item->analysis.font),
                                   static_cast<uint32_t>(run.glyphs.size()), 0};
        for (int i = 0; i < glyphs->num_glyphs; ++i) {
            const PangoGlyphInfo& info = glyphs->glyphs[i];
            const bool isUnknown = (info.glyph & PANGO_GLYPH_UNKNOWN_FLAG) != 0;
            if (segment.face && info.glyph != PANGO_GLYPH_EMPTY) {
                const auto index = isUnknown ? 0u : static_cast<uint32_t>(info.glyph);
                run.glyphs.push_back({index, static_cast<float>(place + info.geometry.x_offset) / PANGO_SCALE,
                                      static_cast<float>(info.geometry.y_offset) / PANGO_SCALE});
            }
            place += info.geometry.width;
        }
        segment.count = static_cast<uint32_t>(run.glyphs.size()) - segment.first;
        if (segment.count > 0)
            run.segments.push_back(std::move(segment));
    }
    run.width = static_cast<double>(place) / PANGO_SCALE;
    return run;
}

} // namespace qorl
