#include "graphics/GraphicsFactory.h"
#include "graphics/UDrawDevice.h"
#include "graphics/UFont.h"
#include "support/Ratio.h"

#include <cairo.h>
#include <string>
#include <unordered_map>
#include <vector>

namespace qorl::bench {
namespace {

constexpr CmSize screen{1280, 800};
constexpr CmSize cell{64, 20};

void selectGraphics() {
    reopenGraphics();
    selectGraphicsBackend("default");
}

/// A control like any other: a face, a frame, a line along its top, a label.
struct Control {
    CmRect frame;
    std::string label;
};

std::vector<Control> controls(int64_t count) {
    std::vector<Control> all;
    for (int64_t i = 0; i < count; ++i) {
        const CmPoint place{static_cast<int32_t>(i % 20) * cell.width,
                            static_cast<int32_t>(i / 20 % 40) * cell.height};
        all.push_back(
            {CmRect::ofSize(place, {cell.width - 2, cell.height - 2}), "Label " + std::to_string(i)});
    }
    return all;
}

void paintControls(benchmark::State& state) {
    selectGraphics();
    const auto all = controls(state.range(0));
    SurfaceTarget target(screen);
    UFont font(9);
    font.setColor(StandardColor::darkblue);
    const UPen pen(StandardColor::gray60);
    const UBrush brush(StandardColor::gray20);
    for (auto _ : state) {
        UDrawDevice window(&target);
        for (const Control& control : all) {
            struct View : UDrawDevice {
                View(UDrawDevice& outer, const CmRect& frame) : UDrawDevice(outer, frame.origin()) {
                    limitClip(CmRect::ofSize({}, frame.size()));
                }
            };
            View view(window, control.frame);
            const CmRect bounds = CmRect::ofSize({}, control.frame.size());
            view.setBrush(brush);
            view.fillRect(bounds);
            view.setPen(pen);
            view.drawFrame(bounds);
            view.setPenColor(StandardColor::white);
            view.moveTo({1, 1});
            view.lineTo({bounds.right - 2, 1});
            view.setFont(font);
            view.drawString(ConstString(std::string_view(control.label)), bounds,
                            Justify::center | Justify::verticalCenter);
        }
    }
}

/// The same primitives and glyphs as Cairo calls that were written down before.
void paintControlsFloor(benchmark::State& state) {
    selectGraphics();
    const auto all = controls(state.range(0));
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, screen.width, screen.height);
    cairo_font_face_t* face =
        cairo_toy_font_face_create("sans", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    cairo_font_options_t* options = cairo_font_options_create();
    cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
    cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
    cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
    cairo_matrix_t size;
    cairo_matrix_t identity;
    cairo_matrix_init_scale(&size, 12, 12);
    cairo_matrix_init_identity(&identity);
    cairo_scaled_font_t* font = cairo_scaled_font_create(face, &size, &identity, options);
    std::vector<std::vector<cairo_glyph_t>> runs;
    for (const Control& control : all) {
        cairo_glyph_t* glyphs = nullptr;
        int count = 0;
        cairo_scaled_font_text_to_glyphs(font, control.frame.left + 8, control.frame.top + 13,
                                         control.label.c_str(), static_cast<int>(control.label.size()),
                                         &glyphs, &count, nullptr, nullptr, nullptr);
        runs.emplace_back(glyphs, glyphs + count);
        const auto blank = runs.back()[5].index;
        std::erase_if(runs.back(), [blank](const cairo_glyph_t& glyph) { return glyph.index == blank; });
        cairo_glyph_free(glyphs);
    }
    for (auto _ : state) {
        cairo_t* cr = cairo_create(surface);
        for (size_t i = 0; i < all.size(); ++i) {
            const CmRect& r = all[i].frame;
            cairo_set_source_rgba(cr, 0.87, 0.87, 0.87, 1);
            cairo_rectangle(cr, r.left, r.top, r.width(), r.height());
            cairo_fill(cr);
            cairo_set_source_rgba(cr, 0.55, 0.55, 0.55, 1);
            cairo_rectangle(cr, r.left, r.top, r.width(), 1);
            cairo_rectangle(cr, r.left, r.bottom - 1, r.width(), 1);
            cairo_rectangle(cr, r.left, r.top + 1, 1, r.height() - 2);
            cairo_rectangle(cr, r.right - 1, r.top + 1, 1, r.height() - 2);
            cairo_fill(cr);
            cairo_set_source_rgba(cr, 1, 1, 1, 1);
            cairo_rectangle(cr, r.left + 1, r.top + 1, r.width() - 2, 1);
            cairo_fill(cr);
            cairo_set_source_rgba(cr, 0, 0, 0.35, 1);
            cairo_set_scaled_font(cr, font);
            cairo_show_glyphs(cr, runs[i].data(), static_cast<int>(runs[i].size()));
        }
        cairo_destroy(cr);
    }
    cairo_scaled_font_destroy(font);
    cairo_font_options_destroy(options);
    cairo_font_face_destroy(face);
    cairo_surface_destroy(surface);
}
QORL_RATIO(paintControls, paintControlsFloor, 1.1, 100, 800);

void measureLabels(benchmark::State& state) {
    selectGraphics();
    const auto all = controls(state.range(0));
    const UFont font(9);
    for (auto _ : state)
        for (const Control& control : all)
            benchmark::DoNotOptimize(font.getStringWidth(ConstString(std::string_view(control.label))));
}
/// What any kept width costs at least: a look-up by text.
void measureLabelsFloor(benchmark::State& state) {
    const auto all = controls(state.range(0));
    std::unordered_map<std::string_view, int32_t> widths;
    for (const Control& control : all)
        widths.emplace(control.label, static_cast<int32_t>(control.label.size()));
    for (auto _ : state)
        for (const Control& control : all)
            benchmark::DoNotOptimize(widths.find(control.label)->second);
}
QORL_RATIO(measureLabels, measureLabelsFloor, 2.0, 1000, 10000);

void openDevice(benchmark::State& state) {
    selectGraphics();
    SurfaceTarget target(screen);
    for (auto _ : state) {
        UDrawDevice device(&target);
        device.fillRect({0, 0, 1, 1});
    }
}
void openDeviceFloor(benchmark::State& state) {
    cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, screen.width, screen.height);
    for (auto _ : state) {
        cairo_t* cr = cairo_create(surface);
        cairo_rectangle(cr, 0, 0, 1, 1);
        cairo_fill(cr);
        cairo_destroy(cr);
    }
    cairo_surface_destroy(surface);
}
QORL_RATIO(openDevice, openDeviceFloor, 2.0);

} // namespace
} // namespace qorl::bench
